// Executes one SVE instruction at places of their own, with a fork between them, and ends while
// another thread executes more: each process has a profile of its own.
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

enum { BEFORE = 7, CHILD = 5, PARENT = 3 };

static __attribute__((noinline)) void before_fork(void) { __asm__ volatile("ptrue p0.b"); }
static __attribute__((noinline)) void in_child(void) { __asm__ volatile("ptrue p0.h"); }
static __attribute__((noinline)) void in_parent(void) { __asm__ volatile("ptrue p0.s"); }

static volatile int running;

static void* endless(void* unused) {
  for (;; running = 1)
    __asm__ volatile("ptrue p1.d");
  return unused;
}

int main(void) {
  for (int i = 0; i < BEFORE; i++)
    before_fork();
  const pid_t child = fork();
  if (child == 0) {
    for (int i = 0; i < CHILD; i++)
      in_child();
    return 0;
  }
  int status = 1;
  waitpid(child, &status, 0);
  for (int i = 0; i < PARENT; i++)
    in_parent();
  pthread_t thread;
  if (pthread_create(&thread, NULL, endless, NULL) != 0)
    return 1;
  while (!running) {
  }
  return status;
}
