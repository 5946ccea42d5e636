// Code that comes and goes: written, rewritten, unmapped, and run by several threads.
#define _GNU_SOURCE
#include <pthread.h>
#include <setjmp.h>
#include <signal.h>
#include <stdatomic.h>
#include <stdint.h>
#include <stdio.h>
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
  printf("tagged: %ld\n", sum);
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

int main(void) {
  rewritten();
  toggled();
  mapped_again();
  tagged();
  forbidden();
  shared_code();
  return 0;
}
