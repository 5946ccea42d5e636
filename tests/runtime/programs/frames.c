// Handlers that return by a frame which they have changed: frames <seed> [all]. What Linux takes
// and what it refuses with SIGSEGV is told here by its rules, and the registers of a frame that it
// takes are those of the next one. Only with `all` there are frames that the simulator takes
// otherwise. Where there is SVE with vectors of 128 bits, frames have its record, too.
#define _GNU_SOURCE
#include <asm/hwcap.h>
#include <asm/sigcontext.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/auxv.h>
#include <ucontext.h>

enum { STACK = 65536, AREA = sizeof((mcontext_t*)0)->__reserved };
enum { NZCV_SHIFT = 28 };
static const uint32_t fpsr_bits = 0x0800009f, fpcr_bits = 0x07c00000;

static uint64_t seed;
static int all, has_sve;
static uint64_t any(void) {
  seed = seed * 6364136223846793005u + 1442695040888963407u;
  const uint64_t mixed = (seed ^ seed >> 29) * UINT64_C(0xbf58476d1ce4e5b9);
  return mixed ^ mixed >> 32;
}

// The two places: a case begins at the first and is back at the second.
extern const char first_place[], second_place[];
__asm__(".text\n.balign 4\n.global first_place, second_place\n"
        "first_place: brk #1\n ret\n"
        "second_place: brk #2\n ret\n");

static enum { AT_HOME, SENT, BACK } stage;
static ucontext_t home, sent, found;
static int found_by, astray;
static const void* found_stack;
static char stacks[2][STACK] __attribute__((aligned(16)));

static uint64_t bit_of(int number) { return UINT64_C(1) << (number - 1); }

struct head {
  uint32_t magic, size;
};

// ---- what Linux makes of it ---------------------------------------------------------------------

// The record of SVE: of the one length, not of streaming mode, and its head alone or whole.
static int is_valid_sve(const unsigned char* record, size_t size) {
  struct sve_context sve;
  memcpy(&sve, record, sizeof sve);
  return has_sve && sve.vl == 16 && (sve.flags & SVE_SIG_FLAG_SM) == 0 &&
         (size == SVE_SIG_REGS_OFFSET || size >= SVE_SIG_CONTEXT_SIZE(1));
}

// The records behind the registers: one of the vectors, and nothing unknown.
static int is_valid_area(const unsigned char* area) {
  int vectors = 0, sve = 0;
  for (size_t at = 0; AREA - at >= sizeof(struct head);) {
    struct head head;
    memcpy(&head, area + at, sizeof head);
    if (at % 16 != 0 || head.size > AREA - at) {
      return 0;
    }
    if (head.magic == 0) {
      return head.size == 0 && vectors == 1;
    }
    if (head.magic == FPSIMD_MAGIC) {
      vectors += head.size == sizeof(struct fpsimd_context) ? 1 : 2;
    } else if (head.magic == SVE_MAGIC) {
      sve += is_valid_sve(area + at, head.size) ? 1 : 2;
    } else if (head.magic != ESR_MAGIC) {
      return 0;
    }
    if (head.size < sizeof head || vectors > 1 || sve > 1) {
      return 0;
    }
    at += head.size;
  }
  return 0;
}

static int is_valid_state(uint64_t pstate) { return (pstate & 0x3df) == 0; }

// ---- cases --------------------------------------------------------------------------------------

static void* add(unsigned char* area, size_t* at, uint32_t magic, size_t size) {
  const struct head head = {magic, (uint32_t)size};
  unsigned char* const record = area + *at;
  if (*at + sizeof head > AREA) {
    return NULL;
  }
  memcpy(record, &head, sizeof head);
  *at += size < sizeof head ? sizeof head : size < AREA ? size : AREA;
  return *at <= AREA ? record : NULL;
}

static void add_vectors(unsigned char* area, size_t* at, size_t size) {
  struct fpsimd_context vectors;
  unsigned char* const record = add(area, at, FPSIMD_MAGIC, size);
  vectors.fpsr = (uint32_t)any() & fpsr_bits;
  vectors.fpcr = any() % 2 ? (uint32_t)any() & fpcr_bits : 0;
  for (int i = 0; i < 32; i++) {
    vectors.vregs[i] = (__uint128_t)any() << 64 | any();
  }
  if (record != NULL && size >= sizeof vectors) {
    memcpy(record + sizeof(struct head), (char*)&vectors + sizeof(struct head),
           sizeof vectors - sizeof(struct head));
  }
}

static void add_sve(unsigned char* area, size_t* at, size_t size) {
  struct sve_context sve = {.vl = any() % 8 ? 16 : (uint16_t)any(), .flags = any() % 8 == 0};
  unsigned char* const record = add(area, at, SVE_MAGIC, size);
  if (record != NULL && size >= sizeof sve) {
    memcpy(record + sizeof(struct head), &sve.vl, sizeof sve - sizeof(struct head));
  }
}

static void add_anything(unsigned char* area, size_t* at) {
  static const uint32_t magics[] = {0, EXTRA_MAGIC, SVE_MAGIC, 0x54564b4d, 0x5a4d5401, ESR_MAGIC};
  static const uint32_t sizes[] = {0, 4, 8, 12, 24, 32, 512, 528, 4096, 0x80000000, 0xfffffff0};
  const uint32_t magic = any() % 8 ? magics[any() % (all ? 6 : 5)] : (uint32_t)any();
  const size_t size = any() % 2 ? 16 : sizes[any() % (all ? 11 : 8)];
  if (magic == SVE_MAGIC) {
    add_sve(area, at, size);
  } else {
    add(area, at, magic, size);
  }
}

static void change_area(unsigned char* area) {
  const size_t whole = sizeof(struct fpsimd_context);
  size_t at = 0;
  for (int i = 0; i < AREA; i++) {
    area[i] = (unsigned char)any();
  }
  if (any() % 2) {  // valid
    if (all && any() % 4 == 0) {
      add(area, &at, ESR_MAGIC, 16);
    }
    add_vectors(area, &at, whole);
    if (has_sve && any() % 2) {
      add_sve(area, &at, any() % 4 ? 576 : 16 * (any() % 40));
    }
  } else {
    for (uint64_t i = any() % 4; i > 0; i--) {
      add_anything(area, &at);
    }
    if (any() % 4) {
      add_vectors(area, &at, any() % 4 ? whole : any() % 1024);
    }
    if (any() % 4 == 0) {
      add_anything(area, &at);
    }
  }
  if (any() % 8) {
    add(area, &at, 0, 0);
  }
}

// The stack of the next handler: as it is, another one, or one that Linux does not take.
static const void* change_stack(stack_t* stack) {
  switch (any() % 4) {
  case 0:
    *stack = (stack_t){.ss_sp = stacks[1], .ss_size = STACK};
    return stacks[1];
  case 1:
    *stack = (stack_t){.ss_sp = (void*)any(), .ss_flags = 1 << any() % 31 | 8, .ss_size = any()};
    return stacks[0];
  case 2:
    *stack = (stack_t){.ss_sp = (void*)any(), .ss_size = any() % 2048};
    return stacks[0];
  default:
    *stack = (stack_t){.ss_sp = stacks[0], .ss_size = STACK};
    return stacks[0];
  }
}

static const void* expected_stack;

static void change(ucontext_t* context) {
  mcontext_t* const machine = &context->uc_mcontext;
  for (int i = 0; i < 31; i++) {
    machine->regs[i] = any();
  }
  machine->sp = any();
  machine->pc = (uintptr_t)second_place;
  machine->pstate &= UINT64_C(0x0fffffff);
  machine->pstate |= any() % 16 << NZCV_SHIFT;
  if (all && any() % 8 == 0) {
    machine->pstate ^= UINT64_C(1) << any() % 10;  // modes and masks
  }
  change_area((unsigned char*)machine->__reserved);
  expected_stack = change_stack(&context->uc_stack);
  uint64_t mask = any();
  mask &= 0x7ffffff & ~(bit_of(SIGTRAP) | bit_of(SIGSEGV) | bit_of(SIGKILL) | bit_of(SIGSTOP));
  memcpy(&context->uc_sigmask, &mask, sizeof mask);
}

static void handle(int number, siginfo_t* info, void* pointer) {
  ucontext_t* const context = pointer;
  if (stage == AT_HOME) {
    home = *context;
    home.uc_mcontext.pc += 4;
    change(context);
    sent = *context;
    stage = SENT;
    astray = all && any() % 16 == 0;
    if (astray) {  // where no frame is, or none that is aligned
      __asm__ volatile(
          "mov sp, %0\n mov x8, #139\n svc #0" ::"r"(any() % 2 ? (char*)info + 8 : (char*)0x1000)
          : "x8", "memory");
    }
    return;
  }
  found = *context;
  found_by = number;
  found_stack = pointer;
  stage = BACK;
  *context = home;
}

// The first one, in an area that is valid.
static const void* record_of(const mcontext_t* machine, uint32_t magic) {
  const unsigned char* at = (const void*)machine->__reserved;
  for (struct head head; memcpy(&head, at, sizeof head), head.magic != magic; at += head.size) {
    if (head.magic == 0) {
      return NULL;
    }
  }
  return at;
}

static int same_vectors(const mcontext_t* a, const mcontext_t* b) {
  struct fpsimd_context sent_ones, found_ones;
  memcpy(&sent_ones, record_of(a, FPSIMD_MAGIC), sizeof sent_ones);
  memcpy(&found_ones, b->__reserved, sizeof found_ones);
  return memcmp(sent_ones.vregs, found_ones.vregs, sizeof found_ones.vregs) == 0 &&
         sent_ones.fpsr == (found_ones.fpsr & fpsr_bits) &&
         sent_ones.fpcr == (found_ones.fpcr & fpcr_bits);
}

// Zero without a record, or with its head alone.
static int same_predicates(const mcontext_t* a, const mcontext_t* b) {
  enum { AT = SVE_SIG_PREGS_OFFSET(1), SIZE = SVE_SIG_CONTEXT_SIZE(1) - AT };
  static const unsigned char zero[SIZE];
  const unsigned char *from = record_of(a, SVE_MAGIC), *to = record_of(b, SVE_MAGIC);
  struct head head = {0, 0};
  if (from != NULL) {
    memcpy(&head, from, sizeof head);
  }
  return to == NULL || memcmp(head.size > AT ? from + AT : zero, to + AT, SIZE) == 0;
}

static const char* what_is_wrong(void) {
  if (astray) {
    return found_by == SIGSEGV ? NULL : "astray";
  }
  const mcontext_t *from = &sent.uc_mcontext, *to = &found.uc_mcontext;
  const int state = is_valid_state(from->pstate);
  const int area = is_valid_area((const unsigned char*)from->__reserved);
  uint64_t mask, found_mask;
  memcpy(&mask, &sent.uc_sigmask, sizeof mask);
  memcpy(&found_mask, &found.uc_sigmask, sizeof found_mask);
  if (found_by != (state && area ? SIGTRAP : SIGSEGV)) {
    return !state ? "state taken" : area ? "refused" : "area taken";
  }
  // A kernel that refuses a frame has the call return 0, the simulator has it not return at all.
  const int returned = found_by == SIGSEGV && to->regs[0] == 0;
  if ((!returned && from->regs[0] != to->regs[0]) ||
      memcmp(from->regs + 1, to->regs + 1, sizeof from->regs - sizeof from->regs[0]) != 0) {
    return "registers";
  }
  if (from->sp != to->sp || from->pc != to->pc || (from->pstate ^ to->pstate) >> NZCV_SHIFT != 0) {
    return "SP, PC or flags";
  }
  if (mask != found_mask) {
    return "mask";
  }
  if (found_by != SIGTRAP) {
    return NULL;
  }
  if (!same_vectors(from, to)) {
    return "vectors";
  }
  if (!same_predicates(from, to)) {
    return "predicates";
  }
  return found_stack < expected_stack || found_stack > expected_stack + STACK ? "stack" : NULL;
}

int main(int argc, char** argv) {
  seed = argc > 1 ? (uint64_t)atoi(argv[1]) : 1;
  all = argc > 2;
  has_sve = (getauxval(AT_HWCAP) & HWCAP_SVE) != 0;
  const char* const wanted = getenv("TAVOK_TEST_FRAMES");
  const int cases = wanted ? atoi(wanted) : 2000;
  struct sigaction action = {.sa_flags = SA_SIGINFO | SA_ONSTACK};
  action.sa_sigaction = handle;
  sigaction(SIGTRAP, &action, NULL);
  sigaction(SIGSEGV, &action, NULL);
  int taken = 0, wrong = 0;
  for (int i = 0; i < cases; i++) {
    const stack_t stack = {.ss_sp = stacks[0], .ss_size = STACK};
    sigaltstack(&stack, NULL);
    stage = AT_HOME;
    ((void (*)(void))first_place)();
    taken += found_by == SIGTRAP;
    const char* const what = what_is_wrong();
    if (what != NULL && ++wrong <= 40) {
      printf("%d: %s\n", i, what);
    }
  }
  printf("%d frames, %d taken, %d wrong\n", cases, taken, wrong);
  return 0;
}
