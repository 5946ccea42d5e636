// Vectors across function calls: the procedure call standard's vector and predicate arguments and
// results, callee-saved Z and P registers spilled to frames of a scalable size (ADDVL, STR, LDR of
// vectors and predicates), recursion, frames with variable arrays, function pointers, exceptions
// through such frames (the unwinder asks for the vector length), and results that land in every
// general register.
#include <cstring>

#include "kernels.h"

#ifdef __ARM_FEATURE_SVE
#include <arm_sve.h>
#endif

namespace {

// What a frame leaves when it is left.
struct Leaving {
  ~Leaving() { log = log * 31 + value; }
  uint32_t& log;
  const uint32_t value;
};

#ifdef __ARM_FEATURE_SVE

[[gnu::noipa]] svuint32_t mix(svbool_t g, svuint32_t a, svuint32_t b) {
  return svadd_m(g, svmul_x(svptrue_b32(), a, 31u), b);
}

// Keeps vectors and predicates alive over the calls, and itself over its own calls.
[[gnu::noipa]] svuint32_t descend(svbool_t g, svuint32_t a, svuint32_t b, int depth) {
  if (depth == 0)
    return sveor_x(svptrue_b32(), a, b);
  volatile char frame[depth * 3 + 1];
  frame[depth] = depth;
  const svbool_t other = svnot_z(svptrue_b32(), g);
  const svuint32_t low = descend(other, b, mix(g, a, b), depth - 1);
  const svuint32_t high = depth & 1 ? descend(g, low, a, depth / 2) : mix(other, low, a);
  return svadd_m(g, svadd_m(other, low, high), svdup_u32(frame[depth]));
}

struct Form {
  svuint32_t (*call)(svbool_t, svuint32_t, svuint32_t);
};

[[gnu::noipa]] svuint32_t least(svbool_t g, svuint32_t a, svuint32_t b) { return svmin_m(g, a, b); }

void work(uint32_t* out, const uint32_t* a, const uint32_t* b, int depth) {
  const Form forms[] = {{mix}, {least}};
  const svbool_t g = svcmplt(svptrue_b32(), svld1(svptrue_b32(), a), svld1(svptrue_b32(), b));
  svuint32_t r = descend(g, svld1(svptrue_b32(), a), svld1(svptrue_b32(), b), depth);
  r = forms[depth & 1].call(g, r, svld1(svptrue_b32(), b));
  svst1(svptrue_b32(), out, r);
}

[[gnu::noipa]] svuint32_t climb(svuint32_t a, svuint32_t b, int depth, uint32_t& log) {
  if (depth == 0)
    throw svlasta(svpfalse(), sveor_x(svptrue_b32(), a, b));
  const Leaving leaving{log, svlastb(svptrue_b32(), b)};
  const svuint32_t r = climb(svadd_x(svptrue_b32(), b, depth), a, depth - 1, log);
  return sveor_x(svptrue_b32(), r, svadd_x(svptrue_b32(), a, b));
}

[[gnu::noipa]] svuint32_t caught(svuint32_t a, svuint32_t b, int depth, uint32_t& log) {
  const svuint32_t product = svmul_x(svptrue_b32(), a, b);
  try {
    return climb(a, b, depth, log);
  } catch (const uint32_t thrown) {
    return svmla_x(svptrue_b32(), b, product, thrown);
  }
}

uint32_t exceptions(uint32_t* out, const uint32_t* a, const uint32_t* b, int depth) {
  const svbool_t all = svptrue_b32();
  uint32_t log = 0;
  const svuint32_t first = svld1(all, a);
  const svuint32_t r = caught(first, svld1(all, b), depth, log);
  svst1(all, out, svadd_x(all, caught(r, first, depth / 2, log), first));
  return log;
}

// Results in general registers, more at a time than a function has free ones.
uint64_t registers(const uint32_t* a) {
  uint64_t r[26];
  const svbool_t all = svptrue_b32();
  const svuint32_t z = svld1(all, a);
#pragma GCC unroll 26
  for (int i = 0; i < 26; i++)
    r[i] = svaddv(svcmpgt(all, z, 1000u * i), z) + svlastb(all, svadd_x(all, z, 1u * i));
  uint64_t sum = 0;
  // All of them are alive here.
  asm volatile(""
               : "+r"(r[0]), "+r"(r[1]), "+r"(r[2]), "+r"(r[3]), "+r"(r[4]), "+r"(r[5]), "+r"(r[6]),
                 "+r"(r[7]), "+r"(r[8]), "+r"(r[9]), "+r"(r[10]), "+r"(r[11]), "+r"(r[12]),
                 "+r"(r[13]));
  asm volatile(""
               : "+r"(r[14]), "+r"(r[15]), "+r"(r[16]), "+r"(r[17]), "+r"(r[18]), "+r"(r[19]),
                 "+r"(r[20]), "+r"(r[21]), "+r"(r[22]), "+r"(r[23]), "+r"(r[24]), "+r"(r[25]));
#pragma GCC unroll 26
  for (int i = 0; i < 26; i++)
    sum = sum * 7 + r[i];
  return sum;
}

// An emulated instruction whose result is the given register, among them the ones that the
// exchange with the emulation treats in its own way.
#define READS_INTO(number)                                                                         \
  do {                                                                                             \
    uint64_t result;                                                                               \
    asm volatile("cntb x" #number ", mul3, mul #2\n\tmov %0, x" #number                            \
                 : "=r"(result)                                                                    \
                 :                                                                                 \
                 : "x" #number);                                                                   \
    sum = sum * 3 + result;                                                                        \
  } while (0)

uint64_t every_register() {
  uint64_t sum = 0;
  READS_INTO(0);
  READS_INTO(1);
  READS_INTO(17);
  READS_INTO(20);
  READS_INTO(21);
  READS_INTO(22);
  READS_INTO(25);
  READS_INTO(26);
  READS_INTO(27);
  READS_INTO(28);
  READS_INTO(30);
  return sum;
}

#else

constexpr int count = 4;

void mix(const bool* g, const uint32_t* a, const uint32_t* b, uint32_t* d) {
  for (int i = 0; i < count; i++)
    d[i] = a[i] * 31 + (g[i] ? b[i] : 0);
}

void descend(const bool* g, const uint32_t* a, const uint32_t* b, int depth, uint32_t* d) {
  if (depth == 0) {
    for (int i = 0; i < count; i++)
      d[i] = a[i] ^ b[i];
    return;
  }
  bool other[count];
  for (int i = 0; i < count; i++)
    other[i] = !g[i];
  uint32_t mixed[count], low[count], high[count];
  mix(g, a, b, mixed);
  descend(other, b, mixed, depth - 1, low);
  if (depth & 1)
    descend(g, low, a, depth / 2, high);
  else
    mix(other, low, a, high);
  for (int i = 0; i < count; i++)
    d[i] = low[i] + (other[i] ? high[i] : depth);
}

void work(uint32_t* out, const uint32_t* a, const uint32_t* b, int depth) {
  bool g[count];
  for (int i = 0; i < count; i++)
    g[i] = a[i] < b[i];
  uint32_t r[count];
  descend(g, a, b, depth, r);
  if (depth & 1)
    for (int i = 0; i < count; i++)
      out[i] = g[i] && b[i] < r[i] ? b[i] : r[i];
  else
    mix(g, r, b, out);
}

void climb(const uint32_t* a, const uint32_t* b, int depth, uint32_t& log) {
  if (depth == 0)
    throw a[0] ^ b[0];
  const Leaving leaving{log, b[count - 1]};
  uint32_t added[count];
  for (int i = 0; i < count; i++)
    added[i] = b[i] + depth;
  climb(added, a, depth - 1, log);
}

void caught(const uint32_t* a, const uint32_t* b, int depth, uint32_t& log, uint32_t* d) {
  try {
    climb(a, b, depth, log);
  } catch (const uint32_t thrown) {
    for (int i = 0; i < count; i++)
      d[i] = a[i] * b[i] * thrown + b[i];
  }
}

uint32_t exceptions(uint32_t* out, const uint32_t* a, const uint32_t* b, int depth) {
  uint32_t log = 0, r[count], again[count];
  caught(a, b, depth, log, r);
  caught(r, a, depth / 2, log, again);
  for (int i = 0; i < count; i++)
    out[i] = again[i] + a[i];
  return log;
}

uint64_t registers(const uint32_t* a) {
  uint64_t sum = 0;
  for (int i = 0; i < 26; i++) {
    uint64_t r = a[3] + static_cast<uint32_t>(i);
    r = static_cast<uint32_t>(r);
    for (int k = 0; k < count; k++)
      if (a[k] > 1000u * i)
        r += a[k];
    sum = sum * 7 + r;
  }
  return sum;
}

uint64_t every_register() {
  uint64_t sum = 0;
  for (int i = 0; i < 11; i++)
    sum = sum * 3 + 15 * 2;
  return sum;
}

#endif

}  // namespace

int main() {
  kernels::Numbers numbers(23);
  for (int depth = 0; depth < 9; depth++) {
    uint32_t a[4], b[4], out[4];
    for (int i = 0; i < 4; i++) {
      a[i] = numbers.any<uint32_t>();
      b[i] = numbers.any<uint32_t>();
    }
    work(out, a, b, depth);
    printf("depth %d: %08x %08x %08x %08x, registers %016llx\n", depth, out[0], out[1], out[2],
           out[3], static_cast<unsigned long long>(registers(a)));
    const uint32_t log = exceptions(out, a, b, depth);
    printf("thrown: %08x %08x %08x %08x, left %08x\n", out[0], out[1], out[2], out[3], log);
  }
  printf("every register: %llx\n", static_cast<unsigned long long>(every_register()));
}
