// Threads that map code, run it and unmap it, each for itself, where the kernel gives one the
// addresses that another has just left; and more code than a cache holds.
#define _GNU_SOURCE
#include <pthread.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>

enum { THREADS = 4, BYTES = 65536 };

typedef uint64_t (*function)(uint64_t);

static void* code_pages(size_t size) {
  return mmap(NULL, size, PROT_READ | PROT_WRITE | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
}

static void* come_and_go(void* rounds) {
  long wrong = 0;
  for (long i = 0; i < (long)rounds; ++i) {
    uint32_t* const at = code_pages(BYTES);
    at[0] = 0x91000000 | (uint32_t)(i % 4096) << 10;  // ADD X0, X0, #i
    at[1] = 0xd65f03c0;
    __builtin___clear_cache((char*)at, (char*)(at + 2));
    wrong += ((function)(void*)at)(5) != 5 + (uint64_t)(i % 4096);
    munmap(at, BYTES);
  }
  return (void*)wrong;
}

static void come_and_go_together(long rounds) {
  pthread_t threads[THREADS];
  long wrong = 0;
  for (int i = 0; i < THREADS; ++i) {
    pthread_create(&threads[i], NULL, come_and_go, (void*)rounds);
  }
  for (int i = 0; i < THREADS; ++i) {
    void* result;
    pthread_join(threads[i], &result);
    wrong += (long)result;
  }
  printf("come and go: %ld wrong\n", wrong);
}

// Each function adds its number to X0 by way of X28, in a block that is as long as the cache's own
// code for it is much longer.
enum { WORDS = 512 };

static uint32_t* program;
static long functions;

static void* run_program(void* unused) {
  uint64_t sum = 0;
  (void)unused;
  for (int pass = 0; pass < 2; ++pass) {
    for (long i = 0; i < functions; ++i) {
      sum = ((function)(void*)(program + i * WORDS))(sum);
    }
  }
  return (void*)sum;
}

static void large_program(void) {
  program = code_pages((size_t)functions * WORDS * 4);
  for (long i = 0; i < functions; ++i) {
    uint32_t* const at = program + i * WORDS;
    at[0] = 0xaa1c03e1;  // MOV X1, X28
    for (int k = 1; k < WORDS - 4; ++k) {
      at[k] = 0x9100079c;  // ADD X28, X28, #1
    }
    at[WORDS - 4] = 0xcb010382;  // SUB X2, X28, X1
    at[WORDS - 3] = 0xaa0103fc;  // MOV X28, X1
    at[WORDS - 2] = 0x8b020000;  // ADD X0, X0, X2
    at[WORDS - 1] = 0xd65f03c0;  // RET
  }
  __builtin___clear_cache((char*)program, (char*)(program + functions * WORDS));
}

// 8000 functions fill a cache.
int main(void) {
  const char* const wanted = getenv("TAVOK_TEST_FUNCTIONS");
  functions = wanted != NULL ? atol(wanted) : 60;
  come_and_go_together(100);
  large_program();
  pthread_t thread;
  void* result;
  pthread_create(&thread, NULL, run_program, NULL);
  const uint64_t sum = (uint64_t)run_program(NULL);
  pthread_join(thread, &result);
  const uint64_t expected = UINT64_C(2) * (uint64_t)functions * (WORDS - 5);
  printf("large program: %d %d\n", sum == expected, (uint64_t)result == expected);
  return 0;
}
