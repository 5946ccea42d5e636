// Preloaded into other programs: what a profiler is to them. A signal a thousand times each second
// of the process's time finds a handler that uses vectors, predicates and the first-fault register
// for itself, and counts in the first word of the file TAVOK_TEST_SAMPLES.
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/time.h>
#include <unistd.h>

enum { COUNT = 37 };
static unsigned char from[COUNT];
static unsigned long* samples;

static void sample(int signal) {
  const int saved_errno = errno;
  unsigned sum = 0;
  for (int i = 0; i < COUNT; i++)
    sum += from[i] * 3u;
  __asm__ volatile("setffr\n ptrue p3.b\n pfalse p0.b\n movi v8.16b, #85\n dup z31.b, #7\n"
                   "wrffr p0.b" ::
                       : "p0", "p3", "v8", "v31", "memory");
  if (sum != 3 * COUNT * (COUNT - 1) / 2 || signal != SIGPROF)
    abort();
  __atomic_fetch_add(samples, 1, __ATOMIC_RELAXED);
  errno = saved_errno;
}

__attribute__((constructor)) static void begin(void) {
  struct sigaction action = {.sa_handler = sample, .sa_flags = SA_RESTART};
  const struct itimerval often = {{0, 1000}, {0, 1000}};
  const int file = open(getenv("TAVOK_TEST_SAMPLES"), O_RDWR);
  samples = mmap(NULL, sizeof *samples, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  close(file);
  if (samples == MAP_FAILED)
    abort();
  for (int i = 0; i < COUNT; i++)
    from[i] = (unsigned char)i;
  sigaction(SIGPROF, &action, NULL);
  setitimer(ITIMER_PROF, &often, NULL);
}
