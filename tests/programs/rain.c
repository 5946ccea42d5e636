// Signals rain on four threads, and their handler leaves nothing as it was: rain of
// TAVOK_TEST_SIGNALS. Each is a real-time signal with a value, so none may be lost either.
#define _GNU_SOURCE
#include <errno.h>
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <stdatomic.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>

uint64_t rain_kernel(uint64_t seed);
void rain_clobber(void);

enum { THREADS = 4, SEEDS = 16, MOST_WAITING = 4 };

static uint64_t expected[SEEDS];
static atomic_long handled[THREADS], values, wrong, rounds;
static atomic_int started, stop;
static __thread int own;

static void handle(int number, siginfo_t* info, void* context) {
  (void)number;
  (void)context;
  rain_clobber();
  atomic_fetch_add(&values, info->si_value.sival_int);
  atomic_fetch_add(&handled[own], 1);
  // Now and then the same work as outside.
  if (info->si_value.sival_int % 64 == 0) {
    wrong += rain_kernel(15) != expected[5];
  }
}

static void* work(void* number) {
  own = (int)(intptr_t)number;
  started++;
  while (!stop) {
    for (unsigned i = 0; i < SEEDS; i++) {
      wrong += rain_kernel(i * 3) != expected[i];
    }
    rounds++;
  }
  return NULL;
}

int main(void) {
  const char* const wanted = getenv("TAVOK_TEST_SIGNALS");
  const int signals = wanted != NULL ? atoi(wanted) : 3000;
  struct sigaction action = {.sa_flags = SA_SIGINFO | SA_RESTART};
  action.sa_sigaction = handle;
  sigaction(SIGRTMIN, &action, NULL);
  for (unsigned i = 0; i < SEEDS; i++) {
    expected[i] = rain_kernel(i * 3);
  }
  pthread_t threads[THREADS];
  for (int i = 0; i < THREADS; i++) {
    pthread_create(&threads[i], NULL, work, (void*)(intptr_t)i);
  }
  while (started < THREADS)
    sched_yield();
  long sum = 0;
  for (int sent = 0; sent < signals; sent++) {
    const int to = sent % THREADS;
    // The queue is short.
    while (sent / THREADS - handled[to] > MOST_WAITING) {
      sched_yield();
    }
    const union sigval value = {.sival_int = sent};
    while (pthread_sigqueue(threads[to], SIGRTMIN, value) == EAGAIN) {
      sched_yield();
    }
    sum += sent;
  }
  stop = 1;
  long total = 0;
  for (int i = 0; i < THREADS; i++) {
    pthread_join(threads[i], NULL);
    total += handled[i];
  }
  printf("%d sent, %ld not handled, values %s, %ld wrong\n", signals, signals - total,
         values == sum ? "right" : "wrong", (long)wrong);
  return rounds == 0;
}
