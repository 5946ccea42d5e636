// A program that embeds libtavok.so, to be looked at with a debugger:
// embedding_host <library> <file with queries> <directory for what the library prints>.
//
// For each of its records it asks the library itself all the queries, then stops in stop_here. The
// last stop comes after some instructions were emulated, with the library's own statistics kept.
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "sve/state/cpu_state.h"

// ptrue p0.s; add z0.s, z1.s, z2.s; add z1.s, z0.s, z0.s
extern "C" unsigned int emulated_words[];
unsigned int emulated_words[] = {0x2598e3e0, 0x04a20020, 0x04a00001};

namespace {

constexpr int kRounds = 3;

constexpr int kRecords = 4;
cpu_state records[kRecords];

struct Library {
  int (*info_all_registers)(cpu_state*, const char*);
  aarch64_decode_rc (*execute_sve_instruction)(cpu_state*);
  void (*dump_sve_stats)();
};

[[noreturn]] void fail(const char* reason) {
  std::fprintf(stdout, "embedding_host: %s\n", reason);
  std::exit(1);
}

template <class Function> void find(void* library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(dlsym(library, name));
  if (function == nullptr)
    fail(name);
}

// Any bytes, then values that print in unusual ways, then nothing at all.
void fill(cpu_state& record, int number) {
  unsigned seed = 12345u + static_cast<unsigned>(number);
  auto* const bytes = reinterpret_cast<unsigned char*>(&record);
  for (size_t i = 0; i < sizeof record; i++) {
    seed = seed * 1103515245u + 12345u;
    bytes[i] = static_cast<unsigned char>(seed >> 16);
  }
  const uint64_t doubles[] = {0x7ff0000000000000, 0xfff0000000000000, 0x7ff8000000000000,
                              0xfff0000000000001, 0x8000000000000000, 0x0000000000000001,
                              0x7fefffffffffffff, 0x3ff8000000000000};
  const uint32_t singles[] = {0x7f800000, 0xff800000, 0x7fa00000, 0xffc00000,
                              0x80000000, 1,          0x7f7fffff, 0xbfc00000};
  const uint16_t halves[] = {0x7c00, 0xfc00, 0x7d00, 0xfe00, 0x8000, 1, 0x7bff, 0xbe00};
  if (number == 1) {
    std::memcpy(record.z[0], doubles, sizeof doubles);
    std::memcpy(record.z[4], singles, sizeof singles);
    std::memcpy(record.z[6], halves, sizeof halves);
  }
  if (number == 2)
    std::memset(bytes, 0, sizeof record);
  if (number == 3)
    record.nzcv = flag_n | flag_z | flag_v;
}

// What the library prints meanwhile goes to the file.
struct Printed {
  explicit Printed(const std::string& path) : before(stderr) { stderr = fopen(path.c_str(), "w"); }
  ~Printed() {
    fclose(stderr);
    stderr = before;
  }
  Printed(const Printed&) = delete;
  FILE* before;
};

}  // namespace

// Here the debugger stops. Its argument is what it shall find by itself.
extern "C" [[gnu::noinline]] void stop_here(cpu_state* state) { asm volatile("" : : "r"(state)); }

int main(int argc, char** argv) {
  if (argc != 4)
    fail("usage");
  void* const handle = dlopen(argv[1], RTLD_LAZY);
  if (handle == nullptr)
    fail(dlerror());
  Library library;
  find(handle, "info_all_registers", library.info_all_registers);
  find(handle, "execute_sve_instruction", library.execute_sve_instruction);
  find(handle, "dump_sve_stats", library.dump_sve_stats);

  std::vector<std::string> queries;
  std::ifstream file(argv[2]);
  for (std::string query; std::getline(file, query);)
    queries.push_back(query);
  const std::string directory = argv[3];
  for (int r = 0; r < kRecords; r++) {
    fill(records[r], r);
    for (size_t q = 0; q < queries.size(); q++) {
      const Printed printed(directory + "/" + std::to_string(r) + "." + std::to_string(q));
      library.info_all_registers(&records[r],
                                 queries[q] == "(null)" ? nullptr : queries[q].c_str());
    }
    stop_here(&records[r]);
  }
  for (int round = 0; round < kRounds; round++) {
    records[0].pc = reinterpret_cast<uint64_t>(emulated_words);
    for (size_t i = 0; i < std::size(emulated_words) - (round == 0); i++)
      if (library.execute_sve_instruction(&records[0]) != aarch64_decode_ok)
        fail("an instruction was not carried out");
  }
  {
    const Printed printed(directory + "/stats");
    library.dump_sve_stats();
  }
  stop_here(&records[0]);
  return 0;
}
