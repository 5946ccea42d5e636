// Loops of emulated instructions that go round without the application's registers being anywhere
// but in the emulation: a signal, or a fault of a later round, must find them all the same, and
// what the handler changes must be what the loop goes on with.
#define _GNU_SOURCE
#include <pthread.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/time.h>
#include <ucontext.h>
#include <unistd.h>

// rounds.S. Each returns 0 if its registers fit together at the end.
uint64_t by_element(const void*), by_comparison(const void*), by_register(const void*),
    with_fault(const void*);
extern const char by_comparison_behind[];
extern const char by_element_start[], by_element_end[], by_comparison_start[], by_comparison_end[],
    by_register_start[], by_register_end[], faulting_load[];

static const struct {
  uint64_t (*run)(const void*);
  const char *start, *end;
} loops[] = {{by_element, by_element_start, by_element_end},
             {by_comparison, by_comparison_start, by_comparison_end},
             {by_register, by_register_start, by_register_end}};

enum { SIGNALS = 40, FAULTS = 5, ROOM = 65536, ELEMENT = 16 };

static volatile int loop, inside, at_start, faults, wrong;
static char* page;

// Whether all says that so many rounds are over.
static int fits(const mcontext_t* machine, uint64_t rounds) {
  const struct fpsimd_context* const vectors = (const void*)machine->__reserved;
  uint64_t z0[2];
  memcpy(z0, &vectors->vregs[0], sizeof z0);
  const unsigned long long* const x = machine->regs;
  return x[3] == rounds && x[26] == 2 * rounds && x[28] == -rounds && z0[0] == rounds &&
         z0[1] == rounds;
}

static void interrupt(int number, siginfo_t* info, void* context) {
  (void)number, (void)info;
  mcontext_t* const machine = &((ucontext_t*)context)->uc_mcontext;
  const uintptr_t pc = machine->pc, start = (uintptr_t)loops[loop].start;
  if (pc < start || pc >= (uintptr_t)loops[loop].end)
    return;
  // Elsewhere in the loop the registers are those of the midst of a round.
  if (pc == start) {
    at_start++;
    wrong += !fits(machine, machine->regs[2] / ELEMENT);
  }
  if (++inside == SIGNALS)
    machine->regs[4] = 0;
}

static void mend(int number, siginfo_t* info, void* context) {
  (void)number;
  mcontext_t* const machine = &((ucontext_t*)context)->uc_mcontext;
  const uint64_t rounds = machine->regs[2] / ELEMENT - 1;
  const char* const edge = page + ROOM;
  wrong += machine->pc != (uintptr_t)faulting_load || !fits(machine, rounds) ||
           info->si_addr != edge || machine->regs[6] != (uintptr_t)edge ||
           rounds != (uint64_t)(faults + 1) * (ROOM / ELEMENT);
  machine->regs[6] = (uintptr_t)page;
  if (++faults == FAULTS)
    machine->regs[4] = 0;
}

static void* run_copy(void* code) {
  return (void*)((uint64_t(*)(const void*))(uintptr_t)code)(NULL);
}

// Another thread takes the branch out of a loop that runs. Returns what the loop does.
static uint64_t change(void) {
  enum { NOP = 0xd503201f };
  const char* const from = (const char*)(uintptr_t)by_comparison;
  const size_t size = by_comparison_behind - from, branch = by_comparison_end - from - 4;
  char* const code =
      mmap(NULL, ROOM, PROT_READ | PROT_WRITE | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  memcpy(code, from, size);
  __builtin___clear_cache(code, code + size);
  pthread_t thread;
  pthread_create(&thread, NULL, run_copy, code);
  usleep(20000);
  *(uint32_t*)(code + branch) = NOP;
  __builtin___clear_cache(code + branch, code + branch + 4);
  void* result;
  pthread_join(thread, &result);
  return (uint64_t)result;
}

int main(void) {
  struct sigaction action = {.sa_flags = SA_SIGINFO};
  action.sa_sigaction = interrupt;
  sigaction(SIGALRM, &action, NULL);
  const struct itimerval often = {{0, 1500}, {0, 1500}}, never = {{0, 0}, {0, 0}};
  uint64_t apart = 0;
  for (loop = 0; loop < 3; loop++) {
    inside = at_start = 0;
    setitimer(ITIMER_REAL, &often, NULL);
    apart |= loops[loop].run(NULL);
    setitimer(ITIMER_REAL, &never, NULL);
    wrong += at_start == 0;
    printf("%d signals in front of a round, %d wrong\n", at_start, wrong);
  }
  action.sa_sigaction = mend;
  sigaction(SIGSEGV, &action, NULL);
  page = mmap(NULL, 2 * ROOM, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  mprotect(page + ROOM, ROOM, PROT_NONE);
  apart |= with_fault(page) | change();
  printf("%d faults, %d wrong, %d apart at the end\n", faults, wrong, apart != 0);
  return wrong != 0 || apart != 0;
}
