// Every form in which an instruction can name X28, against what the same instruction does with
// another register. The register is saved around each piece, so that the compiler may use it.
#include <stdint.h>
#include <stdio.h>

static uint64_t memory[8] __attribute__((aligned(64)));
static int failures;

static void check(const char* name, uint64_t got, uint64_t expected) {
  if (got != expected) {
    printf("%s: got %#lx, expected %#lx\n", name, (unsigned long)got, (unsigned long)expected);
    ++failures;
  }
}

static void reset(void) {
  for (unsigned i = 0; i < 8; ++i) {
    memory[i] = 0x1111111111111111u * (i + 1);
  }
}

// Runs `text` with X28 and then with X9 in the place of %R (W: %W), both beginning as `a`; X10 is
// `b`, X11 the memory. Compares the register, X12 and the memory afterwards.
#define RUN(reg, text, a, b, out, out12)                                                           \
  do {                                                                                             \
    register uint64_t in_a __asm__("x13") = (a);                                                   \
    register uint64_t in_b __asm__("x10") = (b);                                                   \
    register uint64_t* base __asm__("x11") = memory;                                               \
    register uint64_t result12 __asm__("x12") = 0x1212;                                            \
    __asm__ volatile("str x28, [sp, #-16]!\n mov x" reg ", x13\n" text "\n mov x13, x" reg         \
                     "\n ldr x28, [sp], #16"                                                       \
                     : "+r"(in_a), "+r"(in_b), "+r"(base), "+r"(result12)                          \
                     :                                                                             \
                     : "x0", "x1", "x2", "x3", "x8", "x9", "x14", "x15", "v0", "v1", "cc",         \
                       "memory");                                                                  \
    (out) = in_a;                                                                                  \
    (out12) = result12;                                                                            \
  } while (0)

#define FORM2(name, a, b, with28, with9)                                                           \
  do {                                                                                             \
    uint64_t x, x12, y, y12, kept[8];                                                              \
    reset();                                                                                       \
    RUN("9", with9, a, b, y, y12);                                                                 \
    for (unsigned i = 0; i < 8; ++i) {                                                             \
      kept[i] = memory[i];                                                                         \
    }                                                                                              \
    reset();                                                                                       \
    RUN("28", with28, a, b, x, x12);                                                               \
    check(name, x, y);                                                                             \
    check(name " (x12)", x12, y12);                                                                \
    for (unsigned i = 0; i < 8; ++i) {                                                             \
      check(name " (memory)", memory[i], kept[i]);                                                 \
    }                                                                                              \
  } while (0)

// `T(r)` is the text for the register number r.
#define FORM(T, a, b) FORM2(T("R"), a, b, T("28"), T("9"))

#define ADD_IMM(r) "add x" r ", x" r ", #5"
#define ADD_REG(r) "add x12, x" r ", x10, lsl #3"
#define ADD_SELF(r) "add x" r ", x" r ", x" r
#define ADD_EXT(r)                                                                                 \
  "add x" r ", sp, x10, uxtw\n sub x" r ", x" r ", x10, uxtw\n mov x8, sp\n sub x" r ", x" r ", "  \
  "x8"
#define W_FORM(r) "add w" r ", w" r ", w10"
#define LOGIC(r) "eor x" r ", x" r ", #0xff00ff00ff00ff\n bic x12, x10, x" r
#define MOVES(r) "movz x" r ", #0x1234\n movk x" r ", #0x5678, lsl #32\n mov x12, x" r
#define SHIFTS(r) "lsl x" r ", x" r ", x10\n ror x" r ", x" r ", #7\n extr x12, x" r ", x10, #9"
#define BITS(r) "bfi x" r ", x10, #8, #16\n rev x12, x" r "\n clz x" r ", x" r
#define MULTIPLY(r) "madd x" r ", x" r ", x10, x" r "\n umulh x12, x" r ", x10"
#define DIVIDE(r) "udiv x" r ", x" r ", x10\n sdiv w12, w" r ", w10"
#define CONDITIONAL(r)                                                                             \
  "cmp x" r ", x10\n csel x12, x" r ", x10, lt\n cset x" r ", eq\n ccmp x" r                       \
  ", x10, #4, ne\n csinc x" r ", x" r ", x10, eq"
#define CARRY(r) "adds x" r ", x" r ", x10\n adc x12, x" r ", xzr\n sbcs x" r ", x" r ", x10"
#define LOADS(r) "ldr x" r ", [x11, #8]\n ldrsh x12, [x11, #2]\n ldrb w" r ", [x11, #1]"
#define STORES(r) "str x" r ", [x11]\n strb w" r ", [x11, #9]\n stur x" r ", [x11, #17]"
#define BASE(r)                                                                                    \
  "mov x" r ", x11\n ldr x12, [x" r ", #8]!\n str x12, [x" r "], #16\n sub x" r ", x" r ", x11"
#define INDEX(r)                                                                                   \
  "mov x" r ", #2\n ldr x12, [x11, x" r ", lsl #3]\n ldr x" r ", [x11, x" r ", lsl #3]"
#define PAIRS(r)                                                                                   \
  "ldp x" r ", x12, [x11, #16]\n stp x12, x" r ", [x11]\n mov x" r ", x11\n ldp x14, x15, [x" r    \
  "], #16\n stp x14, x15, [x" r ", #16]!\n sub x" r ", x" r ", x11"
#define PAIR_SELF(r) "mov x" r ", x11\n ldp x" r ", x12, [x" r "]"
#define VECTORS(r)                                                                                 \
  "fmov d0, x" r "\n dup v1.2d, x" r "\n ins v1.d[1], x10\n umov x" r ", v1.d[1]\n scvtf d0, x" r  \
  "\n fcvtzs x12, d0"
#define VECTOR_MEMORY(r)                                                                           \
  "mov x" r ", x11\n ld1 {v0.2d, v1.2d}, [x" r "], #32\n str q0, [x" r                             \
  "]\n mov x12, #8\n st1 {v1.d}[1], [x" r "], x12\n sub x" r ", x" r ", x11"
#define EXCLUSIVE(r)                                                                               \
  "mov x" r ", x11\n 1: ldxr x12, [x" r "]\n add x12, x12, #1\n stxr w14, x12, [x" r               \
  "]\n cbnz w14, 1b\n mov x14, x11\n 2: ldaxr x" r ", [x14]\n add x" r ", x" r                     \
  ", #1\n stlxr w15, x" r ", [x14]\n cbnz w15, 2b"
#define EXCLUSIVE_STATUS(r)                                                                        \
  "1: ldxp x14, x15, [x11]\n add x14, x14, x15\n stxp w" r ", x14, x15, [x11]\n cbnz w" r ", 1b"
#define BRANCHES(r)                                                                                \
  "mov x12, #0\n cbz x" r ", 1f\n add x12, x12, #1\n 1: cbnz w" r                                  \
  ", 2f\n add x12, x12, #2\n 2: tbz x" r ", #3, 3f\n add x12, x12, #4\n 3: tbnz w" r               \
  ", #0, 4f\n add x12, x12, #8\n 4:"
#define REGISTER_BRANCH(r)                                                                         \
  "adr x" r ", 1f\n br x" r "\n mov x12, #1\n 1: mov x14, x30\n adr x" r ", 2f\n blr x" r          \
  "\n 2: mov x30, x14\n adr x14, 2b\n sub x" r ", x" r ", x14"
#define RETURN(r) "adr x" r ", 1f\n ret x" r "\n mov x12, #1\n 1: mov x" r ", #0"
#define ADDRESSES(r)                                                                               \
  "adrp x" r ", memory\n add x" r ", x" r ", :lo12:memory\n sub x" r ", x" r                       \
  ", x11\n adr x12, 1f\n 1: adr x" r ", 1b\n sub x12, x12, x" r "\n mov x" r ", #3"
#define LITERALS(r)                                                                                \
  "ldr x" r ", 1f\n ldrsw x12, 1f\n ldr d0, 1f\n fmov x14, d0\n eor x" r ", x" r ", x14\n ldr w" r \
  ", 1f\n prfm pldl1keep, 1f\n b 2f\n .balign 8\n 1: .quad 0x89abcdef01234567\n 2:"
#define SYSTEM(r)                                                                                  \
  "cmp x10, x10\n mrs x" r ", nzcv\n eor x" r ", x" r ", #0x80000000\n msr nzcv, x" r              \
  "\n cset x12, mi"
#define THREAD_POINTER(r)                                                                          \
  "mrs x14, tpidr_el0\n mrs x" r ", tpidr_el0\n sub x12, x" r                                      \
  ", x14\n msr tpidr_el0, x10\n mrs x" r ", tpidr_el0\n eor x12, x12, x" r "\n mov x" r            \
  ", x14\n msr tpidr_el0, x" r "\n mov x" r ", x12"
#define PREFETCH(r)                                                                                \
  "mov x" r ", x11\n prfm pldl1keep, [x" r "]\n prfm pldl1keep, [x11, xzr]\n sub x" r ", x" r      \
  ", x11"
#define MANY(r)                                                                                    \
  "mov x0, x" r "\n mov x1, x" r "\n mov x2, x" r "\n add x3, x0, x" r "\n madd x" r               \
  ", x1, x2, x" r "\n mov x12, x3"
#define ZERO_CACHE(r) "mov x" r ", x11\n dc cvau, x" r "\n sub x" r ", x" r ", x11"

static void run_all(uint64_t a, uint64_t b) {
  FORM(ADD_IMM, a, b);
  FORM(ADD_REG, a, b);
  FORM(ADD_SELF, a, b);
  FORM(ADD_EXT, a, b);
  FORM(W_FORM, a, b);
  FORM(LOGIC, a, b);
  FORM(MOVES, a, b);
  FORM(SHIFTS, a, b);
  FORM(BITS, a, b);
  FORM(MULTIPLY, a, b);
  FORM(DIVIDE, a, b);
  FORM(CONDITIONAL, a, b);
  FORM(CARRY, a, b);
  FORM(LOADS, a, b);
  FORM(STORES, a, b);
  FORM(BASE, a, b);
  FORM(INDEX, a, b);
  FORM(PAIRS, a, b);
  FORM(PAIR_SELF, a, b);
  FORM(VECTORS, a, b);
  FORM(VECTOR_MEMORY, a, b);
  FORM(EXCLUSIVE, a, b);
  FORM(EXCLUSIVE_STATUS, a, b);
  FORM(BRANCHES, a, b);
  FORM(REGISTER_BRANCH, a, b);
  FORM(RETURN, a, b);
  FORM(ADDRESSES, a, b);
  FORM(LITERALS, a, b);
  FORM(SYSTEM, a, b);
  FORM(THREAD_POINTER, a, b);
  FORM(PREFETCH, a, b);
  FORM(MANY, a, b);
  FORM(ZERO_CACHE, a, b);
}

int main(void) {
  const uint64_t values[] = {0, 1, 8, 9, 0x123456789abcdef0, ~(uint64_t)0, 0x8000000000000000};
  for (unsigned i = 0; i < sizeof values / sizeof *values; ++i) {
    run_all(values[i], values[(i + 3) % 7]);
  }
  printf("%d failures\n", failures);
  return failures != 0;
}
