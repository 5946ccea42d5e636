// A robust mutex whose owner ended. The simulator knows no robust lists, so this hangs there
// without a runtime that walks them.
#define _GNU_SOURCE
#include <errno.h>
#include <pthread.h>
#include <stdio.h>

static pthread_mutex_t robust;
static void* die_with_it(void* argument) {
  (void)argument;
  pthread_mutex_lock(&robust);
  return NULL;
}

static void* die_while_wanted(void* argument) {
  pthread_mutex_lock(&robust);
  pthread_barrier_wait(argument);
  return NULL;
}

// The owner ends just when another thread begins to wait.
static int many_ends(void) {
  enum { ROUNDS = 300 };
  pthread_barrier_t barrier;
  pthread_barrier_init(&barrier, NULL, 2);
  int right = 0;
  for (int i = 0; i < ROUNDS; ++i) {
    pthread_t thread;
    pthread_create(&thread, NULL, die_while_wanted, &barrier);
    pthread_barrier_wait(&barrier);
    right += pthread_mutex_lock(&robust) == EOWNERDEAD;
    pthread_mutex_consistent(&robust);
    pthread_mutex_unlock(&robust);
    pthread_join(thread, NULL);
  }
  return right == ROUNDS;
}

int main(void) {
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
  pthread_mutex_init(&robust, &attributes);
  pthread_t thread;
  pthread_create(&thread, NULL, die_with_it, NULL);
  pthread_join(thread, NULL);
  const int dead = pthread_mutex_lock(&robust) == EOWNERDEAD;
  pthread_mutex_consistent(&robust);
  pthread_mutex_unlock(&robust);
  printf("owner dead: %d %d\n", dead, many_ends());
  return 0;
}
