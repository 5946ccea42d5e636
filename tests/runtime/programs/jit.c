// Code that comes and goes: written, rewritten, unmapped, and run by several threads.
#define _GNU_SOURCE
#include <pthread.h>
#include <setjmp.h>
#include <signal.h>
#include <stdatomic.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

typedef int (*function)(void);

static void write_function(void* at, unsigned value) {
  const uint32_t code[] = {0x52800000 | value << 5, 0xd65f03c0};  // MOV W0, #value; RET
  memcpy(at, code, sizeof code);
  __builtin___clear_cache(at, (char*)at + sizeof code);
}

static void* pages(int protection) {
  return mmap(NULL, 65536, protection, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
}

static void rewritten(void) {
  char* at = pages(PROT_READ | PROT_WRITE | PROT_EXEC);
  long sum = 0;
  for (unsigned i = 0; i < 200; ++i) {
    write_function(at, i);
    sum += ((function)(void*)at)() == (int)i;
  }
  printf("rewritten: %ld\n", sum);
}

// Without IC IVAU: the change of the protection has to do.
static void toggled(void) {
  char* at = pages(PROT_READ | PROT_WRITE);
  long sum = 0;
  for (unsigned i = 0; i < 50; ++i) {
    write_function(at + 128, i);
    mprotect(at, 65536, PROT_READ | PROT_EXEC);
    sum += ((function)(void*)(at + 128))() == (int)i;
    mprotect(at, 65536, PROT_READ | PROT_WRITE);
  }
  printf("toggled: %ld\n", sum);
}

static void mapped_again(void) {
  char* at = pages(PROT_NONE);
  long sum = 0;
  for (unsigned i = 0; i < 50; ++i) {
    mmap(at, 65536, PROT_READ | PROT_WRITE | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1,
         0);
    write_function(at, 7000 + i);
    sum += ((function)(void*)at)() == 7000 + (int)i;
    munmap(at, 65536);
  }
  printf("mapped again: %ld\n", sum);
}

// The processor ignores the top byte of an address, also of one that it branches to.
static void tagged(void) {
  char* at = pages(PROT_READ | PROT_WRITE | PROT_EXEC);
  write_function(at, 33);
  long sum = 0;
  for (uintptr_t tag = 0; tag < 200; ++tag) {
    sum += ((function)((uintptr_t)at | tag << 56))();
  }
  for (unsigned i = 0; i < 20; ++i) {
    *(volatile uint32_t*)(void*)at = 0x52800000 | i << 5;
    char* const tag = (char*)((uintptr_t)at | (uintptr_t)5 << 56);
    __builtin___clear_cache(tag, tag + 4);
    sum += ((function)(void*)at)() == (int)i;
  }
  printf("tagged: %ld\n", sum);
}

// ---- what stays beside what changes -------------------------------------------------------------

enum { FUNCTIONS = 8, SPACE = 512 };  // some share a line, some a page

static int place_of(int i) { return i % 4 * 16 + i / 4 * SPACE; }

static void put(char* at, const uint32_t* words, size_t count) {
  memcpy(at, words, count * sizeof *words);
  __builtin___clear_cache(at, at + count * sizeof *words);
}

static uint32_t jump(const char* from, const char* to, uint32_t opcode) {
  return opcode | ((uint32_t)((to - from) / 4) & 0x3ffffff);
}

// A place that calls three functions, in another order every time.
static __attribute__((noinline)) int call_one(const char* at) {
  int result = ((function)(uintptr_t)at)();
  __asm__ volatile("" : "+r"(result));
  return result;
}

// Small functions side by side, each with callers of its own: two calls by BL, a jump by B, calls
// by BLR with one, three and all of them for targets. Any of them may be rewritten, or only
// flushed; where the protection is what tells, it is a page's.
static void beside(const char* name, int protect) {
  char* const at = pages(PROT_READ | PROT_WRITE | PROT_EXEC);
  char* const callers = at + 4096;
  unsigned values[FUNCTIONS] = {0}, random = 1, wrong_results = 0, calls = 0;
  for (int i = 0; i < FUNCTIONS; ++i) {
    write_function(at + place_of(i), 0);
    char* const to = callers + i * 64;
    // STP X29, X30, [SP, #-16]!;  BL;  MOV W9, W0;  BL;  ORR W0, W0, W9;  LDP X29, X30, [SP], #16;
    // RET
    const uint32_t call[] = {0xa9bf7bfd, jump(to + 4, at + place_of(i), 0x94000000),
                             0x2a0003e9, jump(to + 12, at + place_of(i), 0x94000000),
                             0x2a090000, 0xa8c17bfd,
                             0xd65f03c0};
    put(to, call, 7);
    const uint32_t tail[] = {0xd503201f, jump(to + 36, at + place_of(i), 0x14000000)};
    put(to + 32, tail, 2);
  }
  for (unsigned round = 0; round < 600; ++round) {
    random = random * 1103515245 + 12345;
    const unsigned which = random >> 16 & 7, what = random >> 20 & 3;
    char* const function_at = at + place_of((int)which);
    if (what != 0) {
      if (protect != 0) {
        mprotect(at, 4096, PROT_READ | PROT_WRITE);
      }
      values[which] += what == 1;
      write_function(function_at, values[which]);
      if (protect != 0) {
        mprotect(at, 4096, PROT_READ | PROT_EXEC);
      }
    }
    for (int i = 0; i < FUNCTIONS; ++i) {
      const int wanted = (int)values[i];
      wrong_results += ((function)(void*)(callers + i * 64))() != wanted;
      wrong_results += ((function)(void*)(callers + i * 64 + 32))() != wanted;
      wrong_results += ((function)(void*)(at + place_of(i)))() != wanted;
      calls += 3;
    }
    wrong_results += ((function)(void*)(at + place_of(3)))() != (int)values[3];
    for (unsigned i = 0; i < 3; ++i) {
      const unsigned target = (round + i) % 3;
      wrong_results += call_one(at + place_of((int)target)) != (int)values[target];
    }
  }
  printf("beside, %s: %u wrong of %u\n", name, wrong_results, calls);
}

// A block that begins in the line in front of what changes.
static void begun_before(void) {
  char* const at = (char*)pages(PROT_READ | PROT_WRITE | PROT_EXEC) + 64 - 8;
  long sum = 0;
  for (unsigned i = 0; i < 300; ++i) {
    // MOV W0, #7;  ADD W0, W0, #2;  ADD W0, W0, #i;  RET
    const uint32_t code[] = {0x528000e0, 0x11000800, 0x11000000 | i << 10, 0xd65f03c0};
    const size_t first = i == 0 ? 0 : 2;
    put(at + first * 4, code + first, 4 - first);
    sum += ((function)(void*)at)() == 9 + (int)i;
  }
  printf("begun before: %ld\n", sum);
}

static sigjmp_buf out;
static void leave(int signal) { siglongjmp(out, signal); }

static void forbidden(void) {
  char* at = pages(PROT_READ | PROT_WRITE | PROT_EXEC);
  write_function(at, 5);
  printf("allowed: %d\n", ((function)(void*)at)());
  signal(SIGSEGV, leave);
  mprotect(at, 65536, PROT_READ | PROT_WRITE);
  int signal_number = sigsetjmp(out, 1);
  if (signal_number == 0) {
    ((function)(void*)at)();
  }
  printf("forbidden: %d\n", signal_number);
  mprotect(at, 65536, PROT_READ | PROT_EXEC);
  printf("allowed again: %d\n", ((function)(void*)at)());
}

// One thread changes the function, the others call it without ever making a system call.
static _Atomic(char*) shared;
static atomic_int version, stop;
static atomic_long wrong;

static void* caller(void* argument) {
  long calls = 0;
  (void)argument;
  while (!stop) {
    const int before = version;
    __asm__ volatile("isb");  // else the processor may have fetched the old instruction
    const int got = ((function)(void*)shared)();
    const int after = version;
    if (got < before || got > after + 1) {
      ++wrong;
    }
    ++calls;
  }
  return (void*)calls;
}

static void shared_code(void) {
  char* at = pages(PROT_READ | PROT_WRITE | PROT_EXEC);
  write_function(at, 0);
  shared = at;
  pthread_t threads[2];
  for (int i = 0; i < 2; ++i) {
    pthread_create(&threads[i], NULL, caller, NULL);
  }
  for (int i = 1; i <= 40; ++i) {
    // A single store, as a program may change one instruction under another thread.
    *(volatile uint32_t*)(void*)at = 0x52800000 | (unsigned)i << 5;
    __builtin___clear_cache(at, at + 4);
    version = i;
    usleep(1000);
  }
  stop = 1;
  long calls = 0;
  for (int i = 0; i < 2; ++i) {
    void* result;
    pthread_join(threads[i], &result);
    calls += (long)result;
  }
  printf("shared: %ld wrong, called %d\n", (long)wrong, calls > 0);
}

// Another thread may see new code before the flush, and this one not before it.
static void* call_early(void* at) { return (void*)(long)((function)at)(); }

static void seen_early(void) {
  char* at = pages(PROT_READ | PROT_WRITE | PROT_EXEC);
  long sum = 0;
  write_function(at, 0);
  for (unsigned i = 1; i <= 20; ++i) {
    ((function)(void*)at)();
    *(volatile uint32_t*)(void*)at = 0x52800000 | i << 5;
    pthread_t thread;
    pthread_create(&thread, NULL, call_early, at);
    pthread_join(thread, NULL);
    __builtin___clear_cache(at, at + 4);
    sum += ((function)(void*)at)() == (int)i;
  }
  printf("seen early: %ld\n", sum);
}

int main(int argc, char** argv) {
  if (argc > 1 && strcmp(argv[1], "shared") == 0) {
    if (getenv("TAVOK_TEST_SIMULATED_MACHINE") != NULL) {
      printf("a simulated machine may keep the code that another processor changes\n");
      return 77;
    }
    shared_code();
    return 0;
  }
  rewritten();
  toggled();
  mapped_again();
  tagged();
  beside("written", 0);
  beside("protected", 1);
  begun_before();
  forbidden();
  seen_early();
  return 0;
}
