// Indirect branches that go where they went before, or not: few targets and many, returns that are
// edited, small functions called from everywhere, and signals in the midst of it all.
#define _GNU_SOURCE
#include <setjmp.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <sys/mman.h>
#include <sys/time.h>
#include <ucontext.h>

typedef uint64_t (*function)(uint64_t);

// ---- targets of calls ---------------------------------------------------------------------------

// small_0 to small_7 add a number of their own; the last one is far away and has a frame.
__asm__(
    ".text\n.balign 16\n"
    ".global small_0, small_1, small_2, small_3, small_4, small_5, small_6, small_7\n"
    ".macro small n\n small_\\n: add x0, x0, #(1 << \\n)\n eor x0, x0, x0, lsl #7\n ret\n.endm\n"
    "small 0\nsmall 1\nsmall 2\nsmall 3\nsmall 4\nsmall 5\n"
    "small_6: ret\n"
    ".space 20000, 0\n"
    "small_7: stp x29, x30, [sp, #-16]!\n bl small_1\n bl small_2\n ldp x29, x30, [sp], #16\n "
    "ret\n");
extern char small_0[], small_1[], small_2[], small_3[], small_4[], small_5[], small_6[], small_7[];
static char* const smalls[] = {small_0, small_1, small_2, small_3,
                               small_4, small_5, small_6, small_7};

// One call site for each register that may hold the target, and a jump by X16 and by X9.
#define CALLER(name, reg)                                                                          \
  __attribute__((noinline)) static uint64_t name(uint64_t value, char* target) {                   \
    register uint64_t x0 __asm__("x0") = value;                                                    \
    __asm__ volatile("stp x28, x30, [sp, #-16]!\n mov " reg ", %1\n blr " reg                      \
                     "\n ldp x28, x30, [sp], #16"                                                  \
                     : "+r"(x0)                                                                    \
                     : "r"(target)                                                                 \
                     : "x1", "x2", "x9", "x16", "x17", "x30", "memory");                           \
    return x0;                                                                                     \
  }
CALLER(by_x1, "x1")
CALLER(by_x2, "x2")
CALLER(by_x17, "x17")
CALLER(by_x28, "x28")
CALLER(by_x30, "x30")
uint64_t jump_x16(uint64_t value, char*target), jump_x9(uint64_t value, char*target);
__asm__(".global jump_x16, jump_x9\njump_x16: mov x16, x1\n br x16\njump_x9: mov x9, x1\n br x9\n");

static uint64_t (*const callers[])(uint64_t, char*) = {by_x1,  by_x2,    by_x17, by_x28,
                                                       by_x30, jump_x16, jump_x9};

// Each site meets its targets one after the other, so every number of them is the right one once.
static void targets(void) {
  for (unsigned site = 0; site < sizeof callers / sizeof *callers; ++site) {
    uint64_t value = 1;
    for (unsigned count = 1; count <= 8; ++count) {
      for (unsigned i = 0; i < 40; ++i) {
        value = callers[site](value, smalls[i % count]);
      }
    }
    printf("site %u: %#llx\n", site, (unsigned long long)value);
  }
}

// ---- returns ------------------------------------------------------------------------------------

// Skips one instruction behind the call if X1 is not 0; so does the second by the stack, and the
// third by another register.
__asm__(".global call_edited\n"
        "edited: cbz x1, 1f\n add x30, x30, #4\n1: add x0, x0, #1\n ret\n"
        "edited_frame: stp x29, x30, [sp, #-16]!\n cbz x1, 1f\n ldr x9, [sp, #8]\n add x9, x9, #4\n"
        " str x9, [sp, #8]\n1: ldp x29, x30, [sp], #16\n add x0, x0, #1\n ret\n"
        "edited_other: mov x5, x30\n cbz x1, 1f\n add x5, x5, #4\n1: add x0, x0, #1\n ret x5\n"
        // Small functions that read X30, or change it for good.
        "where: mov x0, x30\n ret\n"
        "back_door: adr x30, 1f\n ret\n1: add x0, x0, #500\n br x2\n"
        "call_edited: stp x29, x30, [sp, #-16]!\n"
        " bl edited\n add x0, x0, #100\n bl edited_frame\n add x0, x0, #1000\n"
        " bl edited_other\n add x0, x0, #0x3000\n"
        " mov x3, x0\n bl where\n1: adr x4, 1b\n sub x0, x0, x4\n add x0, x0, x3\n"
        " adr x2, 2f\n bl back_door\n2: ldp x29, x30, [sp], #16\n ret\n");
uint64_t call_edited(uint64_t value, uint64_t edit);

static void returns(void) {
  uint64_t value = 0;
  for (unsigned i = 0; i < 60; ++i) {
    value = call_edited(value, i % 3 == 1);
  }
  printf("edited returns: %llu\n", (unsigned long long)value);
}

static jmp_buf out;
__attribute__((noinline)) static uint64_t descend(unsigned depth, unsigned way) {
  volatile char pad[64];
  pad[0] = (char)depth;
  if (depth == 0) {
    if (way == 3) {
      longjmp(out, 1);
    }
    return way;
  }
  switch (way) {
  case 0:
    return descend(depth - 1, way) + pad[0];
  case 1:
    return descend(depth - 1, way) * 3 + 1;
  default:
    return descend(depth - 1, way) ^ depth;
  }
}

static void depths(void) {
  for (volatile unsigned way = 0; way < 12; ++way) {
    if (setjmp(out) == 0) {
      printf("down and up: %#llx\n", (unsigned long long)descend(5000 + way, way % 4));
    } else {
      printf("out of the depth\n");
    }
  }
}

// ---- faults -------------------------------------------------------------------------------------

// A small function that loads, called from two places.
__asm__(".global peek_load, peek_first, peek_second, peek_twice\n"
        "peek: add x0, x0, #8\n peek_load: ldr x0, [x0, #-8]\n add x0, x0, #1\n ret\n"
        "peek_twice: stp x29, x30, [sp, #-32]!\n stp x0, x1, [sp, #16]\n bl peek\n"
        "peek_first: str x0, [sp, #16]\n ldr x0, [sp, #24]\n bl peek\n"
        "peek_second: ldr x1, [sp, #16]\n add x0, x0, x1\n ldp x29, x30, [sp], #32\n ret\n");
uint64_t peek_twice(const uint64_t* first, const uint64_t* second);
extern char peek_load[], peek_first[], peek_second[];

static void missing_word(int signal, siginfo_t* info, void* context) {
  mcontext_t* at = &((ucontext_t*)context)->uc_mcontext;
  (void)signal;
  printf("fault at %s, returns to %s, x0 %s;", (char*)at->pc == peek_load ? "the load" : "?",
         (char*)at->regs[30] == peek_first    ? "the first"
         : (char*)at->regs[30] == peek_second ? "the second"
                                              : "?",
         at->regs[0] == (uint64_t)info->si_addr + 8 ? "right" : "wrong");
  at->regs[0] = 40;
  at->pc += 4;
}

// Where nothing is, from a site that knows other targets.
static void nowhere(int signal, siginfo_t* info, void* context) {
  mcontext_t* at = &((ucontext_t*)context)->uc_mcontext;
  (void)signal;
  (void)info;
  printf(" nowhere: %#llx", (unsigned long long)at->pc);
  at->pc = at->regs[30];
}

static void handle(int signal, void (*handler)(int, siginfo_t*, void*)) {
  struct sigaction action = {0};
  action.sa_sigaction = handler;
  action.sa_flags = SA_SIGINFO;
  sigaction(signal, &action, NULL);
}

static void faults(void) {
  static const uint64_t word = 7;
  const uint64_t* const none = (const uint64_t*)0x10;
  handle(SIGSEGV, missing_word);
  for (unsigned i = 0; i < 12; ++i) {
    const uint64_t* first = i % 4 == 2 ? none : &word;
    const uint64_t* second = i % 4 == 3 ? none : &word;
    printf(" %llu\n", (unsigned long long)peek_twice(first, second));
  }
  handle(SIGSEGV, nowhere);
  uint64_t value = 1;
  for (unsigned i = 0; i < 12; ++i) {
    value = by_x2(value, i % 4 == 3 ? (char*)(uintptr_t)(i * 4 / 16 * 16) : smalls[i % 4]);
  }
  printf("; %#llx\n", (unsigned long long)value);
}

// ---- signals ------------------------------------------------------------------------------------

// Three targets, then more of them, then a return with a frame: X30 and X9 tell at each place
// whether the state is exact. The others hold the same value all the time.
__asm__(
    ".global rain, rain_begin, rain_after, rain_framed, rain_end, rain_small, rain_small_end\n"
    "rain: stp x29, x30, [sp, #-64]!\n stp x19, x20, [sp, #16]\n stp x21, x22, [sp, #32]\n"
    " stp x27, x28, [sp, #48]\n mov x19, x0\n mov x20, x1\n mov x28, #0x2828\n mov x27, #0x2727\n"
    " mov x16, #0x1616\n mov x0, #0\n"
    "rain_begin: and x21, x19, #7\n sub x22, x21, x20\n tbnz x22, #63, 1f\n"
    " udiv x22, x21, x20\n msub x21, x22, x20, x21\n"
    "1: adrp x9, rain_table\n add x9, x9, :lo12:rain_table\n ldr x9, [x9, x21, lsl #3]\n blr x9\n"
    "rain_after: bl rain_frame\nrain_framed: sub x19, x19, #1\n cbnz x19, rain_begin\n"
    "rain_end: ldp x27, x28, [sp, #48]\n ldp x21, x22, [sp, #32]\n ldp x19, x20, [sp, #16]\n"
    " ldp x29, x30, [sp], #64\n ret\n"
    "rain_small: .irp n, 0, 1, 2, 3, 4, 5, 6, 7\n .balign 16\n add x0, x0, #\\n\n ret\n .endr\n"
    "rain_small_end: .balign 16\n"
    "rain_frame: stp x29, x30, [sp, #-16]!\n add x0, x0, #1\n ldp x29, x30, [sp], #16\n ret\n"
    ".data\n.balign 8\nrain_table: .irp n, 0, 1, 2, 3, 4, 5, 6, 7\n"
    " .quad rain_small + 16 * \\n\n .endr\n.text\n");
uint64_t rain(uint64_t rounds, uint64_t targets);
extern char rain_begin[], rain_after[], rain_framed[], rain_end[], rain_small[], rain_small_end[];

static volatile unsigned drops, inexact;

static int is_between(uint64_t pc, const char* begin, const char* end) {
  return pc >= (uint64_t)begin && pc < (uint64_t)end;
}

static void drop(int signal, siginfo_t* info, void* context) {
  const mcontext_t* at = &((ucontext_t*)context)->uc_mcontext;
  (void)signal;
  (void)info;
  if (!is_between(at->pc, rain_begin, rain_small_end)) {
    return;
  }
  ++drops;
  int exact = at->regs[28] == 0x2828 && at->regs[27] == 0x2727 && at->regs[16] == 0x1616;
  if (is_between(at->pc, rain_small, rain_small_end)) {
    exact = exact && at->regs[30] == (uint64_t)rain_after && at->regs[9] <= at->pc &&
            at->regs[9] + 8 > at->pc;
  } else if (at->pc == (uint64_t)rain_after || at->pc == (uint64_t)rain_framed) {
    exact = exact && at->regs[30] == at->pc;
  }
  inexact += !exact;
}

static void signals(void) {
  const struct itimerval often = {{0, 300}, {0, 300}}, never = {{0, 0}, {0, 0}};
  handle(SIGALRM, drop);
  for (unsigned count = 1; count <= 8; count += count < 4 ? 1 : 2) {
    uint64_t expected = 0;
    for (unsigned i = 1; i <= 20000; ++i) {
      const unsigned index = i & 7;
      expected += (index < count ? index : index % count) + 1;
    }
    drops = 0;
    unsigned wrong = 0;
    setitimer(ITIMER_REAL, &often, NULL);
    while (drops < 30) {
      wrong += rain(20000, count) != expected;
    }
    setitimer(ITIMER_REAL, &never, NULL);
    printf("%u targets in the rain: %u wrong, %u inexact\n", count, wrong, inexact);
  }
}

int main(void) {
  setvbuf(stdout, NULL, _IONBF, 0);
  targets();
  returns();
  depths();
  faults();
  signals();
  return 0;
}
