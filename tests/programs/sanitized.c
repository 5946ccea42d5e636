// Runs with a sanitizer that has nothing to find but what is lost at the end.
#include <errno.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <unistd.h>

enum { COUNT = 1000 };

// Without checks between its iterations a loop takes vectors.
__attribute__((noinline, no_sanitize("address", "thread", "undefined"))) static void
add(unsigned* restrict to, const unsigned* restrict from) {
  for (int i = 0; i < COUNT; i++)
    to[i] += from[i] * 3;
}

static unsigned from[COUNT];
static void* work(void* to) {
  for (int i = 0; i < 20; i++)
    add(to, from);
  return to;
}

// A simulator without ptrace cannot look for what is lost.
int __lsan_is_turned_off(void) { return syscall(SYS_ptrace, -1, 0, 0, 0) == -1 && errno == ENOSYS; }

int main(void) {
  unsigned* const sums = calloc(COUNT, sizeof *sums);
  for (unsigned i = 0; i < COUNT; i++)
    from[i] = i * i;
  pthread_t thread;
  pthread_create(&thread, NULL, work, sums);
  pthread_join(thread, NULL);
  unsigned total = 0;
  for (int i = 0; i < COUNT; i++)
    total = total * 31 + sums[i];
  printf("total %u\n", total);
  free(sums);
  return 0;
}
