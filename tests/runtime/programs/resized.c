// A thread runs in memory of which the tail comes and goes. The simulator may hang at that when it
// runs the program itself.
#define _GNU_SOURCE
#include <pthread.h>
#include <stdatomic.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/mman.h>

enum { PAGE = 4096, PAGES = 16 };

static atomic_int stop;
static atomic_long calls;

static void* run_on(void* at) {
  while (!stop) {
    calls += ((int (*)(void))at)() == 3;
  }
  return NULL;
}

int main(void) {
  static const uint32_t code[] = {0x52800060, 0xd65f03c0};  // MOV W0, #3; RET
  char* const at = mmap(NULL, PAGES * PAGE, PROT_READ | PROT_WRITE | PROT_EXEC,
                        MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  memcpy(at, code, sizeof code);
  __builtin___clear_cache(at, at + sizeof code);
  pthread_t thread;
  pthread_create(&thread, NULL, run_on, at);
  while (calls == 0) {
  }
  int moved = 0;
  for (int i = 0; i < 100; ++i) {
    moved += mremap(at, PAGES * PAGE, PAGE, 0) != at;
    moved += mremap(at, PAGE, PAGES * PAGE, 0) != at;
  }
  const long before = calls;
  while (calls == before) {
  }
  stop = 1;
  pthread_join(thread, NULL);
  printf("moved %d, called to the end\n", moved);
  return 0;
}
