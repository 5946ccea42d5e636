// SVE instructions with X26, X27, X28 and SP, which the exchange and the runtime treat in ways of
// their own, against the same instructions with other registers.
#include <stdint.h>
#include <stdio.h>
#include <string.h>

struct result {
  uint64_t value, other, nzcv;
  unsigned char memory[128], vector[16];
};

static unsigned char memory[256] __attribute__((aligned(64)));

// `a` in Xr, `b` in X10, the middle of `memory` in X11; Xr, X12, the flags and Z0 afterwards.
#define RUN(text, r, a, b, result)                                                                 \
  do {                                                                                             \
    register uint64_t in_a __asm__("x13") = (a);                                                   \
    register uint64_t in_b __asm__("x10") = (b);                                                   \
    register unsigned char* base __asm__("x11") = memory + 64;                                     \
    register uint64_t other __asm__("x12") = 77;                                                   \
    register uint64_t flags __asm__("x14") = 0;                                                    \
    __asm__ volatile(".arch armv8-a+sve\n str x" r ", [sp, #-16]!\n ptrue p0.b\n"                  \
                     "whilelo p1.s, xzr, x10\n index z0.s, #3, #5\n mov x" r ", x13\n" text        \
                     "\n mrs x14, nzcv\n mov x13, x" r "\n ldr x" r ", [sp], #16\n str q0, [%5]"   \
                     : "+r"(in_a), "+r"(in_b), "+r"(base), "+r"(other), "+r"(flags)                \
                     : "r"((result).vector)                                                        \
                     : "x15", "x16", "v0", "v1", "v2", "v3", "v4", "cc", "memory");                \
    (result).value = in_a;                                                                         \
    (result).other = other;                                                                        \
    (result).nzcv = flags;                                                                         \
    memcpy((result).memory, memory + 32, sizeof(result).memory);                                   \
  } while (0)

static void reset(void) {
  for (unsigned i = 0; i < sizeof memory; i++)
    memory[i] = (unsigned char)(i * 37 + 11);
}

static int failures, forms;

#define AGAINST(text, r, a, b, expected)                                                           \
  do {                                                                                             \
    struct result found;                                                                           \
    memset(&found, 0, sizeof found);                                                               \
    reset();                                                                                       \
    RUN(text(r), r, a, b, found);                                                                  \
    forms++;                                                                                       \
    if (memcmp(&found, &(expected), sizeof found) != 0) {                                          \
      printf("%s, x%s: %lx %lx %lx instead of %lx %lx %lx\n", text("R"), r, (long)found.value,     \
             (long)found.other, (long)found.nzcv, (long)(expected).value, (long)(expected).other,  \
             (long)(expected).nzcv);                                                               \
      failures++;                                                                                  \
    }                                                                                              \
  } while (0)

#define FORM(text, a, b)                                                                           \
  do {                                                                                             \
    struct result expected;                                                                        \
    memset(&expected, 0, sizeof expected);                                                         \
    reset();                                                                                       \
    RUN(text("9"), "9", a, b, expected);                                                           \
    AGAINST(text, "26", a, b, expected);                                                           \
    AGAINST(text, "27", a, b, expected);                                                           \
    AGAINST(text, "28", a, b, expected);                                                           \
    AGAINST(text, "29", a, b, expected);                                                           \
    AGAINST(text, "30", a, b, expected);                                                           \
  } while (0)

#define COUNTS(r) "cntd x" r ", all, mul #5\n add x12, x" r ", #1\n incw x" r ", pow2\n decb x" r
#define SATURATES(r)                                                                               \
  "sqdech x" r ", w" r ", vl4\n uqincd x" r "\n sqincp x" r ", p1.s\n decp x" r ", p1.d"
#define LENGTHS(r) "addvl x" r ", x" r ", #-3\n addpl x12, x" r ", #7\n rdvl x" r ", #31"
#define STACK(r)                                                                                   \
  "mov x15, sp\n addvl sp, sp, #-4\n addpl x" r ", sp, #8\n sub x" r ", x15, x" r                  \
  "\n str z0, [sp, #2, mul vl]\n ldr z1, [sp, #2, mul vl]\n st1w z1.s, p1, [sp]\n"                 \
  "ld1w z0.s, p1/z, [sp]\n mov x16, #2\n str p1, [sp, #5, mul vl]\n ldr p2, [sp, #5, mul vl]\n"    \
  "st1b z0.b, p2, [sp, x16]\n ld1rd z2.d, p0/z, [sp, #8]\n cntp x12, p0, p2.b\n addvl sp, sp, #4"
#define BASE(r)                                                                                    \
  "mov x" r ", x11\n ld1w z0.s, p1/z, [x" r ", #1, mul vl]\n st1h z0.s, p1, [x" r                  \
  "]\n ld1rqb z1.b, p0/z, [x" r ", #16]\n ld2h {z1.h, z2.h}, p0/z, [x" r                           \
  "]\n st2b {z1.b, z2.b}, p0, [x" r "]\n sub x" r ", x" r ", x11"
#define INDEXED(r)                                                                                 \
  "mov x" r ", #3\n ld1w z0.s, p1/z, [x11, x" r ", lsl #2]\n st1b z0.b, p0, [x11, x" r             \
  "]\n ldnt1d z1.d, p0/z, [x11, x" r ", lsl #3]\n add z0.d, z0.d, z1.d"
#define FAULTING(r)                                                                                \
  "mov x" r ", x11\n setffr\n ldff1b z0.h, p0/z, [x" r "]\n ldnf1w z1.s, p0/z, [x" r               \
  ", #1, mul vl]\n add z0.d, z0.d, z1.d\n sub x" r ", x" r ", x11\n mov x15, #1\n"                 \
  "ldff1w z2.s, p0/z, [x11, x15, lsl #2]\n eor z0.d, z0.d, z2.d"
#define GATHER(r)                                                                                  \
  "index z3.d, #0, #8\n mov x" r ", x11\n ld1w z0.d, p0/z, [x" r ", z3.d]\n st1b z0.d, p0, [x" r   \
  ", z3.d]\n sub x" r ", x" r ", x11"
#define WHILES(r)                                                                                  \
  "whilelt p2.h, x" r ", x10\n cset x12, mi\n whilels p3.b, w10, w" r                              \
  "\n cinc x12, x12, eq\n ctermeq x" r ", x10\n cinc x12, x12, lt\n cntp x" r ", p0, p3.b"
#define ELEMENTS(r)                                                                                \
  "dup z0.d, x" r "\n insr z0.s, w" r "\n cpy z0.h, p1/m, w" r "\n index z1.b, w" r ", w10\n"      \
  "index z2.d, #4, x" r "\n add z0.d, z1.d, z2.d\n lasta w" r ", p1, z0.s\n clastb w" r            \
  ", p0, w" r ", z0.h"
#define SP_ELEMENT(r)                                                                              \
  "mov x15, sp\n dup z0.d, sp\n cpy z0.s, p1/m, wsp\n mov x" r ", x15\n dup z1.d, x" r             \
  "\n cpy z1.s, p1/m, w" r "\n eor z0.d, z0.d, z1.d\n uaddv d1, p0, z0.d\n fmov x" r ", d1"

static void run_all(uint64_t a, uint64_t b) {
  FORM(COUNTS, a, b);
  FORM(SATURATES, a, b);
  FORM(LENGTHS, a, b);
  FORM(STACK, a, b);
  FORM(BASE, a, b);
  FORM(INDEXED, a, b);
  FORM(FAULTING, a, b);
  FORM(GATHER, a, b);
  FORM(WHILES, a, b);
  FORM(ELEMENTS, a, b);
  FORM(SP_ELEMENT, a, b);
}

int main(void) {
  const uint64_t values[] = {0, 1, 3, 0x7fffffff, 0x123456789abcdef0, ~(uint64_t)0, 1ULL << 63};
  for (unsigned i = 0; i < sizeof values / sizeof *values; i++)
    run_all(values[i], values[(i + 2) % 7]);
  printf("%d forms, %d failures\n", forms, failures);
  return failures != 0;
}
