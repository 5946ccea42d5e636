// Words that no compiler writes: words <seed> <cases>. Each case is one word or a few, run with all
// registers set, up to the signal that ends it. What the handler finds is printed, so that a direct
// run tells what is right. With <case> as third argument, that one is printed in full.
#define _GNU_SOURCE
#include <signal.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/time.h>
#include <ucontext.h>

// The code lies in the middle of its mapping, so that literals are readable; around it and around
// the data is nothing.
#define CODE_MAPPING UINT64_C(0x1000000000)
#define CODE (CODE_MAPPING + CODE_BYTES / 2)
#define DATA UINT64_C(0x2000000000)
#define THREAD_POINTER UINT64_C(0x7172737475767778)
enum { CODE_BYTES = 4 << 20, DATA_BYTES = 16384, HANDLER_STACK = 65536 };
enum { SLOT_WORDS = 16, MOST_WORDS = 10, BATCH = 256, STOLEN = 28, BREAKPOINT = 0xd4200000 };

struct state {
  uint64_t x[31], sp, nzcv, fpsr, fpcr, tpidr;
  uint64_t q[32][2];
};
struct state before, after;
uint64_t caller_sp, caller_tpidr;
static siginfo_t ended_by;
static uint64_t ended_at;
static volatile unsigned case_number, alarmed_in;
static int ready;

// Loads everything from `before` and jumps to X30. The way back is leave.
void enter(void);
extern const char leave[];
__asm__(".text\n.balign 4\nenter:\n"
        "stp x29, x30, [sp, #-160]!\n stp x19, x20, [sp, #16]\n stp x21, x22, [sp, #32]\n"
        "stp x23, x24, [sp, #48]\n stp x25, x26, [sp, #64]\n stp x27, x28, [sp, #80]\n"
        "stp d8, d9, [sp, #96]\n stp d10, d11, [sp, #112]\n stp d12, d13, [sp, #128]\n"
        "stp d14, d15, [sp, #144]\n"
        "adrp x0, caller_sp\n mov x1, sp\n str x1, [x0, :lo12:caller_sp]\n"
        "mrs x1, tpidr_el0\n adrp x0, caller_tpidr\n str x1, [x0, :lo12:caller_tpidr]\n"
        "adrp x0, before\n add x0, x0, :lo12:before\n clrex\n"
        "ldp x1, x2, [x0, #248]\n mov sp, x1\n msr nzcv, x2\n"
        "ldp x1, x2, [x0, #264]\n msr fpsr, x1\n msr fpcr, x2\n"
        "add x1, x0, #288\n"
        "ld1 {v0.2d-v3.2d}, [x1], #64\n ld1 {v4.2d-v7.2d}, [x1], #64\n"
        "ld1 {v8.2d-v11.2d}, [x1], #64\n ld1 {v12.2d-v15.2d}, [x1], #64\n"
        "ld1 {v16.2d-v19.2d}, [x1], #64\n ld1 {v20.2d-v23.2d}, [x1], #64\n"
        "ld1 {v24.2d-v27.2d}, [x1], #64\n ld1 {v28.2d-v31.2d}, [x1], #64\n"
        "ldp x2, x3, [x0, #16]\n ldp x4, x5, [x0, #32]\n ldp x6, x7, [x0, #48]\n"
        "ldp x8, x9, [x0, #64]\n ldp x10, x11, [x0, #80]\n ldp x12, x13, [x0, #96]\n"
        "ldp x14, x15, [x0, #112]\n ldp x16, x17, [x0, #128]\n ldp x18, x19, [x0, #144]\n"
        "ldp x20, x21, [x0, #160]\n ldp x22, x23, [x0, #176]\n ldp x24, x25, [x0, #192]\n"
        "ldp x26, x27, [x0, #208]\n ldp x28, x29, [x0, #224]\n ldr x30, [x0, #240]\n"
        "ldr x1, [x0, #280]\n msr tpidr_el0, x1\n ldp x0, x1, [x0]\n br x30\n"
        ".global leave\nleave:\n"
        "ldp x19, x20, [sp, #16]\n ldp x21, x22, [sp, #32]\n"
        "ldp x23, x24, [sp, #48]\n ldp x25, x26, [sp, #64]\n ldp x27, x28, [sp, #80]\n"
        "ldp d8, d9, [sp, #96]\n ldp d10, d11, [sp, #112]\n ldp d12, d13, [sp, #128]\n"
        "ldp d14, d15, [sp, #144]\n ldp x29, x30, [sp], #160\n ret\n");

static void handle(int number, siginfo_t* info, void* pointer) {
  uint64_t tpidr;
  __asm__ volatile("mrs %0, tpidr_el0\n msr tpidr_el0, %1" : "=&r"(tpidr) : "r"(caller_tpidr));
  ucontext_t* const context = pointer;
  mcontext_t* const machine = &context->uc_mcontext;
  struct fpsimd_context* const vectors = (void*)machine->__reserved;
  // A loop is one that two alarms find in the same case.
  if (number == SIGVTALRM && (!ready || alarmed_in != case_number)) {
    alarmed_in = case_number;
    __asm__ volatile("msr tpidr_el0, %0" ::"r"(tpidr));
    return;
  }
  ended_by = *info;
  ended_at = machine->pc;
  memcpy(after.x, machine->regs, sizeof after.x);
  memcpy(after.q, vectors->vregs, sizeof after.q);
  after.sp = machine->sp;
  after.nzcv = machine->pstate & 0xf0000000;
  after.fpsr = vectors->fpsr;
  after.fpcr = vectors->fpcr;
  after.tpidr = tpidr;
  vectors->fpcr = 0;
  machine->sp = caller_sp;
  machine->pc = (uintptr_t)leave;
  ready = 0;
}

// ---- what to run --------------------------------------------------------------------------------

static uint64_t seed;
static uint64_t any(void) {
  seed = seed * 6364136223846793005u + 1442695040888963407u;
  const uint64_t mixed = (seed ^ seed >> 29) * UINT64_C(0xbf58476d1ce4e5b9);
  return mixed ^ mixed >> 32;
}

// A class of instructions and what is free in it.
static const struct {
  uint32_t value, free;
} classes[] = {
    {0x00000000, 0xffffffff},
    {0x00000000, 0x0000ffff},
    {0x10000000, 0xe0ffffff},
    {0x11000000, 0xe0ffffff},
    {0x12000000, 0xe0ffffff},
    {0x13000000, 0xe0ffffff},
    {0x0a000000, 0xe1ffffff},
    {0x1a000000, 0xe0ffffff},
    {0x1b000000, 0xe0ffffff},
    {0x14000000, 0x8000000f},
    {0x17fffff0, 0x8000000f},
    {0x14000000, 0x83ffffff},
    {0x34000000, 0x810000ff},
    {0x36000000, 0x81f800ff},
    {0x34000000, 0x83ffffff},
    {0x54000000, 0x000000ff},
    {0x54ffff00, 0x000000ff},
    {0x54000000, 0x01ffffff},
    {0xd61f0000, 0x006003ff},
    {0xd61f0000, 0x01ffffff},
    {0xd4000000, 0x00ffffff},
    {0xd5000000, 0x003fffff},
    {0xd5030000, 0x003fffff},
    {0xd5130000, 0x0020ffff},
    {0xd51b4200, 0x002027ff},
    {0xd51bd040, 0x0020003f},
    {0xd50b7400, 0x0000ffff},
    {0x08000000, 0xc0ffffff},
    {0x08207c00, 0x41df83ff},
    {0x0c000000, 0x41ffffff},
    {0x18000000, 0xc4ffffff},
    {0x19000000, 0xc4ffffff},
    {0x28000000, 0xc5ffffff},
    {0x28000000, 0xc5ffffff},
    {0x38000000, 0xc5ffffff},
    {0x39000000, 0xc4ffffff},
    {0x38200000, 0xc41fffff},
    {0x38200800, 0xc4dff3ff},
    {0x0e000000, 0xf1ffffff},
    {0x1e200000, 0xe1dfffff},
    {0x0e000c00, 0x61fff3ff},
    {0x04000000, 0xe1ffffff},
    // Mostly instructions that this processor has.
    {0x11000000, 0xe07fffff},
    {0x92000000, 0x601fffff},
    {0x92800000, 0x407fffff},
    {0x93400000, 0x403fffff},
    {0x8a000000, 0x601fffff},
    {0x8b000000, 0x601fffff},
    {0x9a800000, 0x401ff7ff},
    {0x9b000000, 0x001fffff},
    {0x7a400000, 0x801ffbef},
    {0x9ac02000, 0x001f0fff},
    {0xdac00000, 0x00000fff},
    {0xd53b4200, 0x0000001f},
    {0xd51b4200, 0x0000001f},
    {0xd53bd040, 0x0000001f},
    {0xd51bd040, 0x0000001f},
    {0x18000000, 0x44ffffff},
    {0x885f7c00, 0x400083ff},
    {0x88007c00, 0x401f83ff},
    {0x887f0000, 0x4000ffff},
    {0x88200000, 0x401fffff},
    {0x08dffc00, 0xc00003ff},
    {0x089ffc00, 0xc00003ff},
    {0x28000000, 0x81ffffff},
    {0x2c000000, 0xc07fffff},
    {0x39000000, 0xc47fffff},
    {0x38000400, 0xc05fffff},
    {0x38000000, 0xc05fffff},
    {0x38200800, 0xc05ff3ff},
    {0x3c000400, 0xc05ff3ff},
    {0x4c407000, 0x00000fff},
    {0x4c9f7000, 0x001f0fff},
    {0x0e003c00, 0x401f03ff},
    {0x4e001c00, 0x001f03ff},
    {0x9e620000, 0x001f03ff},
    {0x9e660000, 0x000103ff},
    {0x4ea01c00, 0x001f03ff},
    {0x10000000, 0xe0ffffff},
    {0xd61f0000, 0x004003e0},
    {0x34000000, 0x810000e0},
};

// What has no answer that two runs share: the program's own system calls, the simulator's,
// counters, random numbers and tags, signatures; the type of the caches, which the runtime changes
// by intent; and DC ZVA, whose fault the simulator tells with a wrong place.
static int is_left_out(uint32_t word) {
  const int system_call = (word & 0xffe0001f) == 0xd4000001;
  const int host_call = word == 0xd45e0000;
  const int moves = (word & 0xffd00000) == 0xd5100000;
  const unsigned reg = word >> 5 & 0x7fff;
  const unsigned crn = reg >> 7 & 15;
  const int random_tag = (word & 0xffe0fc00) == 0x9ac01000;
  // Keys are random, and a value that nobody signed passes for one key of 128.
  const int signature = (word & 0xffffd000) == 0xdac10000 || (word & 0xffe0fc00) == 0x9ac03000 ||
                        (word & 0xfffffd1f) == 0xd503211f || (word & 0xff200400) == 0xf8200400 ||
                        (word & 0xfe9ff800) == 0xd61f0800;
  const int zeroes = (word & 0xffffffe0) == 0xd50b7420;
  return system_call || host_call || zeroes || random_tag || signature ||
         (moves && (crn == 14 || crn == 9 || crn == 2 || reg == 0x5801));
}

static uint32_t any_word(void) {
  static const uint8_t favourites[] = {28, 28, 28, 31, 31, 30, 29, 27, 26, 0, 1, 2};
  uint32_t word;
  do {
    const size_t which = any() % (sizeof classes / sizeof *classes);
    const uint32_t free = classes[which].free;
    word = classes[which].value | ((uint32_t)any() & free);
    for (unsigned at = 0; which != 0 && at <= 16; at += at == 10 ? 6 : 5) {
      if ((free >> at & 31) == 31 && any() % 3 == 0) {
        word = (word & ~(31u << at)) | (uint32_t)favourites[any() % sizeof favourites] << at;
      }
    }
  } while (is_left_out(word));
  return word;
}

static uint64_t any_value(void) {
  const uint64_t inside = DATA + DATA_BYTES / 4 + any() % (DATA_BYTES / 2);
  switch (any() % 8) {
  case 0:
    return any();
  case 1:
    return any() % 256;
  case 2:
    return CODE + any() % BATCH * SLOT_WORDS * 4;
  case 3:
    return inside;
  default:
    return inside & ~UINT64_C(63);
  }
}

static void prepare(uint64_t code) {
  for (int i = 0; i < 31; i++) {
    before.x[i] = any_value();
  }
  before.x[30] = code;
  before.sp = (DATA + DATA_BYTES / 2) - any() % 64 * 16;
  before.nzcv = any() & 0xf0000000;
  before.fpsr = 0;
  before.fpcr = any() % 4 == 0 ? any() & 0x03c00000 : 0;
  before.tpidr = THREAD_POINTER;
  for (int i = 0; i < 64; i++) {
    before.q[i / 2][i % 2] = any() % 4 == 0 ? any_value() : any();
  }
}

// ---- what came of it ----------------------------------------------------------------------------

static uint64_t hash(const void* from, size_t size) {
  const uint64_t* words = from;
  uint64_t result = 0;
  for (size_t i = 0; i < size / 8; i++) {
    result = (result ^ words[i]) * UINT64_C(0x9e3779b97f4a7c15);
    result ^= result >> 29;
  }
  return result;
}

static char pristine[DATA_BYTES];

static void print_case(const uint32_t* words, int full) {
  printf("%u: %08x", case_number, words[0]);
  // A place that is no multiple of 4 is told by different signals.
  if (ended_by.si_signo == SIGVTALRM || ended_at % 4 != 0) {
    printf(ended_at % 4 != 0 ? " astray\n" : " loops\n");
    return;
  }
  // Behind the program lies the runtime's reservation for the break, which has a code of its own.
  const int code = (uint64_t)ended_by.si_addr < CODE_MAPPING ? 0 : ended_by.si_code;
  printf(" signal %d %d at %lx (%lx), x %lx, q %lx, data %lx\n", ended_by.si_signo, code,
         (long)ended_at, (long)ended_by.si_addr, (long)hash(&after, offsetof(struct state, q)),
         (long)hash(after.q, sizeof after.q),
         memcmp((void*)DATA, pristine, DATA_BYTES) ? (long)hash((void*)DATA, DATA_BYTES) : 0);
  if (full) {
    for (int i = 0; i < SLOT_WORDS; i++) {
      printf(" .inst 0x%08x\n", words[i]);
    }
    uint64_t was[36], is[36];
    memcpy(was, &before, sizeof was);
    memcpy(is, &after, sizeof is);
    for (int i = 0; i < 36; i++) {
      printf(" %2d: %lx -> %lx\n", i, (long)was[i], (long)is[i]);
    }
    for (int i = 0; i < 64; i++) {
      printf(" q%d: %lx -> %lx\n", i / 2, (long)before.q[i / 2][i % 2],
             (long)after.q[i / 2][i % 2]);
    }
  }
}

static void install(void) {
  const stack_t stack = {.ss_sp = malloc(HANDLER_STACK), .ss_size = HANDLER_STACK};
  sigaltstack(&stack, NULL);
  struct sigaction action = {.sa_flags = SA_SIGINFO | SA_ONSTACK};
  action.sa_sigaction = handle;
  static const int signals[] = {SIGSEGV, SIGBUS, SIGILL, SIGTRAP, SIGFPE, SIGSYS, SIGVTALRM};
  for (size_t i = 0; i < sizeof signals / sizeof *signals; i++) {
    sigaction(signals[i], &action, NULL);
  }
  const struct itimerval often = {{0, 100000}, {0, 100000}};
  setitimer(ITIMER_VIRTUAL, &often, NULL);
}

static void* map(uint64_t at, size_t size) {
  return mmap((void*)at, size, PROT_READ | PROT_WRITE,
              MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
}

static void write_batch(uint32_t* code) {
  mprotect((void*)CODE_MAPPING, CODE_BYTES, PROT_READ | PROT_WRITE);
  for (int slot = 0; slot < BATCH; slot++) {
    const unsigned count = any() % 2 ? 1 : 1 + any() % MOST_WORDS;
    for (unsigned i = 0; i < SLOT_WORDS; i++) {
      code[slot * SLOT_WORDS + i] = i < count ? any_word() : BREAKPOINT;
    }
  }
  mprotect((void*)CODE_MAPPING, CODE_BYTES, PROT_READ | PROT_EXEC);
  __builtin___clear_cache((char*)code, (char*)(code + BATCH * SLOT_WORDS));
}

int main(int argc, char** argv) {
  const char* const cases = getenv("TAVOK_TEST_WORDS");
  const unsigned first_seed = argc > 1 ? (unsigned)atoi(argv[1]) : 1;
  const unsigned last = (cases ? (unsigned)atoi(cases) : 2) * BATCH;
  const unsigned wanted = argc > 2 ? (unsigned)atoi(argv[2]) : ~0u;
  seed = first_seed;
  uint32_t* const filler = map(CODE_MAPPING, CODE_BYTES);
  char* const data = map(DATA, DATA_BYTES);
  if (filler != (void*)CODE_MAPPING || data != (void*)DATA) {
    printf("no memory\n");
    return 1;
  }
  for (int i = 0; i < CODE_BYTES / 4; i++) {
    filler[i] = BREAKPOINT;
  }
  for (int i = 0; i < DATA_BYTES / 8; i++) {
    ((uint64_t*)pristine)[i] = any() % 4 == 0 ? any_value() : any();
  }
  install();
  uint32_t* const code = (uint32_t*)CODE;
  for (case_number = 0; case_number < last; case_number++) {
    const unsigned slot = case_number % BATCH;
    if (slot == 0) {
      write_batch(code);
    }
    prepare((uintptr_t)(code + slot * SLOT_WORDS));
    memcpy(data, pristine, DATA_BYTES);
    ready = 1;
    enter();
    print_case(code + slot * SLOT_WORDS, case_number == wanted);
  }
  return 0;
}
