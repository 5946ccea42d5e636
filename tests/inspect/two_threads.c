// Two threads whose Z5 differ, and a place to stop when both have set theirs. Each uses a form of
// its own: the gdb port of qemu-user can miss a breakpoint while it steps another thread over it.
#include <pthread.h>
#include <stdatomic.h>

// Names that tavok has, too.
long exe = 1, icounts = 2, sve_threads = 3, __start_sve_rows = 4, sve_thread_counts = 5;

static atomic_int ready;
static atomic_int over;

static void* first(void* unused) {
  __asm__ volatile("mov z5.d, #11" ::: "v5");
  ready++;
  while (!over) {
  }
  return unused;
}

static void* second(void* unused) {
  __asm__ volatile("mov z5.b, #22" ::: "v5");
  ready++;
  while (!over) {
  }
  return unused;
}

static __attribute__((noinline)) void both_ready(void) {
  __asm__ volatile("mov z5.s, #33" ::: "v5");
}

int main(void) {
  pthread_t threads[2];
  if (pthread_create(&threads[0], NULL, first, NULL) != 0)
    return 1;
  if (pthread_create(&threads[1], NULL, second, NULL) != 0)
    return 1;
  while (ready != 2) {
  }
  both_ready();
  both_ready();
  over = 1;
  for (int i = 0; i < 2; i++)
    pthread_join(threads[i], NULL);
  return 0;
}
