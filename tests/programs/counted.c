// Prints how many SVE instructions it executes, which the report must repeat exactly.
#include <pthread.h>
#include <setjmp.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

void counted_block(uint64_t n);
void counted_branches(uint64_t n);
void counted_while(uint64_t n);
void counted_calls(uint64_t n);
void counted_fault(const void* nowhere);
void counted_none(void);

enum { VECTOR_BYTES = 16, THREADS = 8, FAULTS = 50 };

// Of six instructions on each thread.
static uint64_t rounds = 150;

static void* on_a_thread(void* unused) {
  counted_block(rounds);
  counted_calls(rounds);
  return unused;
}

static _Thread_local sigjmp_buf behind_the_fault;
static pthread_barrier_t faults_over;

static void leave_fault(int signal) { siglongjmp(behind_the_fault, signal); }

// Stays alive when the process ends, with blocks behind it that it has not ended.
static void* fault(void* unused) {
  for (volatile int i = 0; i < FAULTS; i++)
    if (sigsetjmp(behind_the_fault, 1) == 0)
      counted_fault(NULL);
  pthread_barrier_wait(&faults_over);
  for (;;)
    pause();
  return unused;
}

int main(void) {
  const char* const wanted = getenv("TAVOK_TEST_ROUNDS");
  if (wanted != NULL)
    rounds = strtoull(wanted, NULL, 10);
  uint64_t expected = 0;
  counted_block(1000);
  expected += 1000 * 3;
  counted_branches(501);
  expected += 251 * 4 + 250 * 2;
  for (uint64_t n = 0; n < 200; n++) {
    counted_while(n);
    expected += 1 + 4 * ((n + VECTOR_BYTES - 1) / VECTOR_BYTES);
  }
  counted_calls(300);
  expected += 300 * 3;
  counted_none();
  pthread_t threads[THREADS];
  for (int i = 0; i < THREADS; i++)
    pthread_create(&threads[i], NULL, on_a_thread, NULL);
  for (int i = 0; i < THREADS; i++)
    pthread_join(threads[i], NULL);
  expected += THREADS * rounds * (3 + 3);
  signal(SIGSEGV, leave_fault);
  pthread_barrier_init(&faults_over, NULL, 3);
  for (int i = 0; i < 2; i++)
    pthread_create(&threads[i], NULL, fault, NULL);
  pthread_barrier_wait(&faults_over);
  expected += 2 * FAULTS;
  printf("%llu\n", (unsigned long long)expected);
  return 0;
}
