// Signals between and inside vector instructions. A handler uses vectors itself, and the loop that
// it interrupts must find its own predicates, vectors and first-fault register again; a load or
// store that faults tells the handler its address, and goes on when the handler has mended it or
// jumped away.
#define _GNU_SOURCE
#include <setjmp.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/time.h>
#include <unistd.h>

enum { ELEMENTS = 61, ENOUGH_SIGNALS = 25, PAGE_ROOM = 65536 };

static volatile sig_atomic_t arrived;
static uint32_t handler_data[ELEMENTS];

static __attribute__((noipa)) void stir(uint32_t* values, int n, uint32_t by) {
  for (int i = 0; i < n; i++)
    if (values[i] % 3 != 1)
      values[i] = values[i] * by + i;
}

#ifdef __ARM_FEATURE_SVE
// By hand: for a compiler, the first-fault register does not live across calls.
static void clear_first_fault(void) { __asm__ volatile("pfalse p0.b\n\twrffr p0.b" : : : "p0"); }

// Whether the first-fault register and a predicate are lost when a signal arrives.
static int lost_predicates(void) {
  const int before = arrived;
  int first_fault, predicate;
  __asm__ volatile("setffr\n\tptrue p7.b" : : : "p7");
  while (arrived == before)
    continue;
  __asm__ volatile("ptrue p0.b\n\trdffrs p1.b, p0/z\n\tcset %w0, cs\n\t"
                   "ptest p0, p7.b\n\tcset %w1, cs"
                   : "=r"(first_fault), "=r"(predicate)
                   :
                   : "p0", "p1", "cc");
  return first_fault + predicate;
}
#else
static void clear_first_fault(void) {}
static int lost_predicates(void) { return 0; }
#endif

static void count(int number) {
  (void)number;
  stir(handler_data, ELEMENTS, 5);
  clear_first_fault();
  arrived++;
}

static uint32_t hash(const uint32_t* values, int n) {
  uint32_t h = 0;
  for (int i = 0; i < n; i++)
    h = h * 31 + values[i];
  return h;
}

static uint32_t stirred(void) {
  uint32_t values[ELEMENTS];
  for (int i = 0; i < ELEMENTS; i++)
    values[i] = i * i;
  for (int round = 0; round < 5; round++)
    stir(values, ELEMENTS, 7);
  return hash(values, ELEMENTS);
}

static void interrupted(void) {
  const uint32_t expected = stirred();
  const struct sigaction action = {.sa_handler = count};
  sigaction(SIGALRM, &action, NULL);
  const struct itimerval often = {{0, 2000}, {0, 2000}}, never = {{0, 0}, {0, 0}};
  setitimer(ITIMER_REAL, &often, NULL);
  int wrong = 0;
  while (arrived < ENOUGH_SIGNALS)
    wrong += (stirred() != expected) + lost_predicates();
  setitimer(ITIMER_REAL, &never, NULL);
  printf("interrupted: %08x, %d wrong\n", expected, wrong);
}

static void raised(void) {
  const struct sigaction action = {.sa_handler = count};
  sigaction(SIGUSR1, &action, NULL);
  uint32_t values[ELEMENTS] = {0};
  for (int i = 0; i < 5; i++) {
    stir(values, ELEMENTS, 3);
    raise(SIGUSR1);
  }
  printf("raised: %08x\n", hash(values, ELEMENTS));
}

static char* page;
static volatile uintptr_t fault;
static sigjmp_buf out;

static void mend(int number, siginfo_t* info, void* context) {
  (void)number;
  (void)context;
  fault = (uintptr_t)info->si_addr;
  mprotect(page + PAGE_ROOM, PAGE_ROOM, PROT_READ | PROT_WRITE);
}

static void leave(int number, siginfo_t* info, void* context) {
  (void)number;
  (void)context;
  fault = (uintptr_t)info->si_addr;
  siglongjmp(out, 1);
}

static void on_fault(void (*handler)(int, siginfo_t*, void*)) {
  struct sigaction action = {.sa_flags = SA_SIGINFO};
  action.sa_sigaction = handler;
  sigaction(SIGSEGV, &action, NULL);
  sigaction(SIGBUS, &action, NULL);
  mprotect(page + PAGE_ROOM, PAGE_ROOM, PROT_NONE);
}

static __attribute__((noipa)) void copy(uint32_t* to, const uint32_t* from, int n) {
  for (int i = 0; i < n; i++)
    to[i] = from[i] + 1;
}

// Writes over the edge of the readable page, and reads over it.
static void faulting(void) {
  page = mmap(NULL, 2 * PAGE_ROOM, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  uint32_t* const edge = (uint32_t*)(page + PAGE_ROOM);
  uint32_t values[ELEMENTS];
  for (int i = 0; i < ELEMENTS; i++)
    values[i] = 100 + i;

  on_fault(mend);
  copy(edge - 6, values, 20);
  printf("mended: fault in the page: %d, %08x\n",
         fault >= (uintptr_t)edge && fault < (uintptr_t)edge + 16, hash(edge - 6, 20));

  for (int reading = 0; reading < 2; reading++) {
    on_fault(leave);
    volatile int left = 0;
    if (sigsetjmp(out, 1) == 0) {
      if (reading)
        copy(values, edge - 5, 20);
      else
        copy(edge - 5, values, 20);
    } else {
      left = 1;
    }
    printf("left: %d, fault in the page: %d, before it %u %u\n", left,
           fault >= (uintptr_t)edge && fault < (uintptr_t)edge + 16, edge[-5], edge[-2]);
  }
  printf("after: %08x\n", stirred());
}

int main(void) {
  interrupted();
  raised();
  faulting();
  return 0;
}
