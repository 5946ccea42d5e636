// A load in the midst of SVE instructions faults: the handler must find all registers as the
// instructions in front of it left them, and behind the handler the rest must go on from there.
#define _GNU_SOURCE
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <ucontext.h>

struct image {
  uint64_t x[31], sp, nzcv, fpsr;
  uint64_t q[32][2];
};

struct image before, after;  // exact_runs.S has the offsets

enum { PLACES = 11, LOADED = 30, ADDRESS = 20 };
enum { LOAD_WORD = 0xa5e0a29e };  // LD1D {Z30.D}, P0/Z, [X20]
enum { FPSR_DIVISION_BY_ZERO = 2, PSTATE_N = 0x80000000u };

void run_0(void), run_1(void), run_2(void), run_3(void), run_4(void), run_5(void), run_6(void),
    run_7(void), run_8(void), run_9(void), run_10(void);
static void (*const runs[PLACES])(void) = {run_0, run_1, run_2, run_3, run_4, run_5,
                                           run_6, run_7, run_8, run_9, run_10};

static struct image in_handler;
static uint64_t good[2] = {0x1122334455667788, 0x99aabbccddeeff00};
static int handled;

static uint64_t bits_of(double value) {
  uint64_t bits;
  memcpy(&bits, &value, sizeof bits);
  return bits;
}

// What the instructions in front of `place` do.
static void execute_until(struct image* to, int place) {
  for (int step = 0; step < place; step++)
    switch (step) {
    case 0:
      for (int e = 0; e < 2; e++)
        to->q[0][e] = to->q[1][e] + to->q[2][e];
      break;
    case 1:
      to->x[26] = 16;
      break;
    case 2:
      to->x[27] = 32;
      break;
    case 3:
      to->x[28] = 48;
      break;
    case 4:
      to->sp -= 16;
      break;
    case 5:
      to->nzcv = PSTATE_N;
      break;  // the first is active, and so is the last
    case 6:
      for (int e = 0; e < 2; e++)
        to->q[3][e] = bits_of(1.0 / 0.0);
      to->fpsr |= FPSR_DIVISION_BY_ZERO;
      break;
    case 7:
      to->x[9] = to->x[10] + 1;
      break;
    case 8:
      to->q[4][0] = to->q[4][1] = to->x[9];
      to->x[27] = to->x[28] + 4 * to->x[26];
      break;
    case 9:
      to->x[28] = to->x[27] + 16;
      break;
    }
}

static void handle(int number, siginfo_t* info, void* pointer) {
  (void)number;
  ucontext_t* const context = pointer;
  mcontext_t* const machine = &context->uc_mcontext;
  const struct fpsimd_context* const vectors = (const void*)machine->__reserved;
  memcpy(in_handler.x, machine->regs, sizeof in_handler.x);
  in_handler.sp = machine->sp;
  in_handler.nzcv = machine->pstate & 0xf0000000;
  in_handler.fpsr = vectors->fpsr;
  memcpy(in_handler.q, vectors->vregs, sizeof in_handler.q);
  const int at_load = *(const uint32_t*)(uintptr_t)machine->pc == LOAD_WORD;
  handled += at_load && info->si_addr == (void*)machine->regs[ADDRESS];
  machine->regs[ADDRESS] = (uintptr_t)good;
}

static void prepare(void) {
  for (unsigned i = 0; i < 31; i++)
    before.x[i] = UINT64_C(0x0101010101010101) * i;
  for (unsigned i = 0; i < 32; i++)
    for (unsigned e = 0; e < 2; e++)
      before.q[i][e] = UINT64_C(0x0807060504030201) * (i + 1) + e;
  for (unsigned e = 0; e < 2; e++)
    before.q[3][e] = bits_of(1.0), before.q[31][e] = 0;
  before.x[ADDRESS] = 8;  // no memory is there
  before.nzcv = 0x60000000;
  before.fpsr = 0;
}

static int compare(const char* when, int place, const struct image* expected,
                   const struct image* found) {
  int wrong = 0;
  for (int i = 0; i < 31; i++)
    if (expected->x[i] != found->x[i]) {
      printf("%s %d: x%d is %lx instead of %lx\n", when, place, i, found->x[i], expected->x[i]);
      wrong++;
    }
  for (int i = 0; i < 32; i++)
    if (memcmp(expected->q[i], found->q[i], sizeof expected->q[i]) != 0) {
      printf("%s %d: q%d is %016lx%016lx\n", when, place, i, found->q[i][1], found->q[i][0]);
      wrong++;
    }
  if (expected->sp != found->sp || expected->nzcv != found->nzcv || expected->fpsr != found->fpsr) {
    printf("%s %d: sp %lx (%lx), nzcv %lx (%lx), fpsr %lx (%lx)\n", when, place, found->sp,
           expected->sp, found->nzcv, expected->nzcv, found->fpsr, expected->fpsr);
    wrong++;
  }
  return wrong;
}

int main(void) {
  struct sigaction action = {.sa_flags = SA_SIGINFO};
  action.sa_sigaction = handle;
  sigaction(SIGSEGV, &action, NULL);
  int wrong = 0;
  // The second round runs code that is there already.
  for (int round = 0; round < 2; round++)
    for (int place = 0; place < PLACES; place++) {
      prepare();
      runs[place]();
      struct image expected = before;
      execute_until(&expected, place);
      wrong += compare("fault", place, &expected, &in_handler);
      expected = before;
      expected.x[ADDRESS] = (uintptr_t)good;
      execute_until(&expected, PLACES);
      memcpy(expected.q[LOADED], good, sizeof good);
      wrong += compare("end", place, &expected, &after);
    }
  printf("%d faults, %d wrong\n", handled, wrong);
  return wrong != 0;
}
