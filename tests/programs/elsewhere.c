// The same SVE function in three places: elsewhere here | memory | library. In the program itself,
// in memory that the program fills with code it runs, and in a shared library. elsewhere fault: in
// the program, and with no memory to load from.
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/mman.h>

extern const char sum_begin[], sum_end[];
uint64_t sum_of_vector(const uint32_t* values);
uint64_t library_sum_of_vector(const uint32_t* values);

typedef uint64_t (*sum_function)(const uint32_t* values);

static sum_function copy_to_memory(void) {
  const size_t size = sum_end - sum_begin;
  void* const code = mmap(NULL, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  memcpy(code, sum_begin, size);
  mprotect(code, size, PROT_READ | PROT_EXEC);
  __builtin___clear_cache(code, (char*)code + size);
  return (sum_function)code;
}

int main(int argc, char** argv) {
  const uint32_t values[4] = {1, 20, 300, 4000};
  const char* const where = argc > 1 ? argv[1] : "";
  sum_function sum = sum_of_vector;
  if (strcmp(where, "memory") == 0)
    sum = copy_to_memory();
  if (strcmp(where, "library") == 0)
    sum = library_sum_of_vector;
  const uint32_t* const nowhere = (const uint32_t*)8;
  printf("%llu\n", (unsigned long long)sum(strcmp(where, "fault") == 0 ? nowhere : values));
  return 0;
}
