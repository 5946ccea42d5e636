// Which code the client takes for its own: the executable's and code in no module, but not a
// library's. The marker adds one to X0 where the client sees it.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/mman.h>

#define MARKER "hint #100\n"

__attribute__((noinline)) static long own(long value) {
  register long x0 __asm__("x0") = value;
  __asm__ volatile(MARKER : "+r"(x0));
  return x0;
}

typedef long (*function)(long);

static long written(void* at, size_t size) {
  const uint32_t code[] = {0xd503201f | 100 << 5, 0xd65f03c0};  // HINT #100; RET
  char* page = mmap(at, size, PROT_READ | PROT_WRITE | PROT_EXEC,
                    MAP_PRIVATE | MAP_ANONYMOUS | (at != NULL ? MAP_FIXED : 0), -1, 0);
  memcpy(page, code, sizeof code);
  __builtin___clear_cache(page, page + sizeof code);
  return ((function)(void*)page)(40);
}

int main(int argc, char** argv) {
  (void)argc;
  printf("executable %ld, written %ld", own(10), written(NULL, 4096));
  void* library = dlopen(argv[1], RTLD_NOW);
  if (library == NULL) {
    printf("\n%s\n", dlerror());
    return 1;
  }
  const function from_library = (function)dlsym(library, "library_marker");
  Dl_info info;
  dladdr((void*)from_library, &info);
  printf(", library %ld", from_library(20));
  dlclose(library);
  // Where the library was, code in no module now.
  printf(", in its place %ld\n", written(info.dli_fbase, 4096));
  return 0;
}
