// sorts <Highway's library>: sorts arrays of every type that the library knows, by the instructions
// that it finds, and compares with the standard library.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <dlfcn.h>
#include <string>
#include <vector>

namespace {

using Pair = unsigned __int128;  // of a key and a value, compared as one number

void* library;
int sorts, wrong;

uint64_t next() {
  static uint64_t state = 1;
  state = state * 6364136223846793005 + 1442695040888963407;
  return state >> 20;
}

// Numbers of all sizes, among them equal ones; no NaN.
template <class T> T any() {
  T value = static_cast<T>(next() % 8 ? next() << next() % (8 * sizeof(T)) : next() % 5);
  return next() % 2 ? value : static_cast<T>(-value);
}
template <> Pair any() { return static_cast<Pair>(any<uint64_t>()) << 64 | any<uint64_t>(); }

// By the names that a C++ compiler gives VQSort(T*, size_t, SortAscending) and its kin.
template <class T> void sort_all(const std::string& type) {
  for (const bool ascending : {true, false}) {
    const std::string order = ascending ? "13SortAscendingE" : "14SortDescendingE";
    void* const function = dlsym(library, ("_ZN3hwy6VQSortEP" + type + "mNS_" + order).c_str());
    if (!function) {
      printf("no function for %s\n", type.c_str());
      wrong++;
      continue;
    }
    for (const size_t size : {1, 2, 7, 16, 33, 100, 257, 700}) {
      std::vector<T> values(size);
      for (T& value : values)
        value = any<T>();
      std::vector<T> sorted = values;
      std::sort(values.begin(), values.end());
      if (!ascending)
        std::reverse(values.begin(), values.end());
      reinterpret_cast<void (*)(T*, size_t, size_t)>(function)(sorted.data(), size, 0);
      sorts++;
      wrong += sorted != values;
    }
  }
}

}  // namespace

int main(int, char** arguments) {
  library = dlopen(arguments[1], RTLD_NOW);
  if (!library) {
    puts(dlerror());
    return 2;
  }
  sort_all<uint16_t>("t");
  sort_all<int16_t>("s");
  sort_all<uint32_t>("j");
  sort_all<int32_t>("i");
  sort_all<uint64_t>("m");
  sort_all<int64_t>("l");
  sort_all<float>("f");
  sort_all<double>("d");
  sort_all<Pair>("NS_9uint128_tE");
  printf("%d sorts, %d wrong\n", sorts, wrong);
  return wrong != 0;
}
