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

int main(void) {
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
  pthread_mutex_init(&robust, &attributes);
  pthread_t thread;
  pthread_create(&thread, NULL, die_with_it, NULL);
  pthread_join(thread, NULL);
  printf("owner dead: %d\n", pthread_mutex_lock(&robust) == EOWNERDEAD);
  return 0;
}
