// Half precision by intrinsics, beside double arithmetic rounded once to half: with these operands
// every exact result but a quotient's and a root's fits in a double, and for those two rounding
// twice gives the same. Families: FADD, FSUB, FMUL, FDIV, FSQRT, FMLA, FABD, FMAXNM, compares,
// FRINTN, FCVT between half and the others, SCVTF and FCVTZS with halves; and FPCR's FZ16, which a
// host without half precision does not keep.
#include <cmath>
#include <cstring>

#include "lanes.h"

using kernels::Numbers;
using namespace lanes;

namespace {

using Half = uint16_t;  // the pattern of the number

enum Operation { Add, Subtract, Multiply, Divide, Root, Fused, Distance, Greater, Nearest };

#ifdef __ARM_FEATURE_SVE

svfloat16_t halves(const Vector<Half>& a) { return svreinterpret_f16(load(a)); }

Vector<Half> patterns(svfloat16_t z) { return store<Half>(svreinterpret_u16(z)); }

Vector<Half> operate(Operation how, const Predicate& g, const Vector<Half>& a,
                     const Vector<Half>& b, const Vector<Half>& c) {
  const svbool_t pg = load(g);
  const svfloat16_t x = halves(a), y = halves(b), z = halves(c);
  switch (how) {
  case Add:
    return patterns(svadd_m(pg, x, y));
  case Subtract:
    return patterns(svsub_m(pg, x, y));
  case Multiply:
    return patterns(svmul_m(pg, x, y));
  case Divide:
    return patterns(svdiv_m(pg, x, y));
  case Root:
    return patterns(svsqrt_m(x, pg, svabs_x(svptrue_b16(), x)));
  case Fused:
    return patterns(svmla_m(pg, x, y, z));
  case Distance:
    return patterns(svabd_m(pg, x, y));
  case Greater:
    return patterns(svmaxnm_m(pg, x, y));
  default:
    return patterns(svrintn_m(x, pg, x));
  }
}

Predicate less(const Predicate& g, const Vector<Half>& a, const Vector<Half>& b) {
  return store(svcmplt(load(g), halves(a), halves(b)));
}

Vector<float> to_single(const Predicate& g, const Vector<Half>& a) {
  return store<float>(svcvt_f32_z(load(g), halves(a)));
}

Vector<Half> from_double(const Vector<double>& a) {
  return patterns(svcvt_f16_z(svptrue_b64(), load(a)));
}

Vector<int16_t> to_integer(const Predicate& g, const Vector<Half>& a) {
  return store<int16_t>(svcvt_s16_z(load(g), halves(a)));
}

Vector<Half> from_integer(const Vector<int16_t>& a) {
  return patterns(svcvt_f16_x(svptrue_b16(), load(a)));
}

// Writes FPCR as an application does that wants subnormal halves flushed.
Vector<Half> flushed_sum(const Vector<Half>& a, const Vector<Half>& b) {
  constexpr uint64_t flush_halves = 1 << 19;
  uint64_t control;
  asm volatile("mrs %0, fpcr" : "=r"(control));
  asm volatile("msr fpcr, %0" : : "r"(control | flush_halves));
  const Vector<Half> d =
      operate(Add, Predicate{{1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}}, a, b, a);
  asm volatile("msr fpcr, %0" : : "r"(control & ~flush_halves) : "memory");
  return d;
}

#else

double value(Half h) {
  __fp16 half;
  memcpy(&half, &h, sizeof h);
  return half;
}

Half rounded(double x) {
  const __fp16 half = x;
  Half h;
  memcpy(&h, &half, sizeof h);
  return h;
}

double exact(Operation how, double x, double y, double z) {
  switch (how) {
  case Add:
    return x + y;
  case Subtract:
    return x - y;
  case Multiply:
    return x * y;
  case Divide:
    return x / y;
  case Root:
    return std::sqrt(std::abs(x));
  case Fused:
    return x + y * z;
  case Distance:
    return std::abs(x - y);
  case Greater:
    return std::fmax(x, y);
  default:
    return std::nearbyint(x);
  }
}

Vector<Half> operate(Operation how, const Predicate& g, const Vector<Half>& a,
                     const Vector<Half>& b, const Vector<Half>& c) {
  Vector<Half> d = a;
  for (int i = 0; i < count<Half>; i++)
    if (g.active<Half>(i))
      d.at[i] = rounded(exact(how, value(a.at[i]), value(b.at[i]), value(c.at[i])));
  return d;
}

Predicate less(const Predicate& g, const Vector<Half>& a, const Vector<Half>& b) {
  Predicate d{};
  for (int i = 0; i < count<Half>; i++)
    d.set<Half>(i, g.active<Half>(i) && value(a.at[i]) < value(b.at[i]));
  return d;
}

Vector<float> to_single(const Predicate& g, const Vector<Half>& a) {
  Vector<float> d{};
  for (int i = 0; i < count<float>; i++)
    if (g.active<float>(i))
      d.at[i] = static_cast<float>(value(a.at[2 * i]));
  return d;
}

Vector<Half> from_double(const Vector<double>& a) {
  Vector<Half> d{};
  for (int i = 0; i < count<double>; i++)
    d.at[4 * i] = rounded(a.at[i]);
  return d;
}

Vector<int16_t> to_integer(const Predicate& g, const Vector<Half>& a) {
  Vector<int16_t> d{};
  for (int i = 0; i < count<Half>; i++) {
    const double x = value(a.at[i]);
    if (g.active<Half>(i))
      d.at[i] = x < -32768 ? -32768 : x > 32767 ? 32767 : static_cast<int16_t>(x);
  }
  return d;
}

Half flushed(Half h) { return (h & 0x7c00) == 0 ? h & 0x8000 : h; }

Vector<Half> flushed_sum(const Vector<Half>& a, const Vector<Half>& b) {
  Vector<Half> d;
  for (int i = 0; i < count<Half>; i++)
    d.at[i] = flushed(rounded(value(flushed(a.at[i])) + value(flushed(b.at[i]))));
  return d;
}

Vector<Half> from_integer(const Vector<int16_t>& a) {
  Vector<Half> d;
  for (int i = 0; i < count<Half>; i++)
    d.at[i] = rounded(a.at[i]);
  return d;
}

#endif

// Numbers with zeros, subnormal numbers and infinities, but no not-a-numbers.
Half any_half(Numbers& some) {
  const uint64_t bits = some.next();
  static const Half special[] = {0, 0x8000, 0x3c00, 1, 0x83ff, 0x7c00, 0xfc00, 0x7bff};
  return bits % 5 == 0 ? special[bits / 5 % 8]
                       : static_cast<Half>((bits >> 40) % 0x7c00 | (bits & 0x8000));
}

Vector<Half> any_halves(Numbers& some) {
  Vector<Half> v;
  for (Half& element : v.at)
    element = any_half(some);
  return v;
}

// All not-a-numbers alike.
Vector<Half> plain_nans(Vector<Half> v) {
  for (Half& element : v.at)
    if ((element & 0x7fff) > 0x7c00)
      element = 0x7e00;
  return v;
}

}  // namespace

int main() {
  for (const Operation how :
       {Add, Subtract, Multiply, Divide, Root, Fused, Distance, Greater, Nearest})
    check<Half>("operate", [how](Numbers& some) {
      const Predicate g = any_predicate(some);
      const Vector<Half> a = any_halves(some), b = any_halves(some);
      // Products of near magnitudes only, or the exact sum would not fit in a double.
      Vector<Half> c;
      for (Half& element : c.at)
        element = 0x3000 | (any_half(some) & 0x8fff);
      return plain_nans(operate(how, g, a, b, c));
    });
  check<Half>("flushed sum", [](Numbers& some) {
    const Vector<Half> a = any_halves(some);
    Vector<Half> b = any_halves(some);
    // Near cancellations and subnormal operands.
    for (int i = 0; i < count<Half>; i += 2)
      b.at[i] = (a.at[i] ^ 0x8000) + 1;
    return plain_nans(flushed_sum(a, b));
  });
  check<Half>("less", [](Numbers& some) {
    const Predicate g = any_predicate(some);
    const Vector<Half> a = any_halves(some);
    return less(g, a, any_halves(some));
  });
  check<float>("to single", [](Numbers& some) {
    const Predicate g = any_predicate(some);
    return to_single(g, any_halves(some));
  });
  check<double>("from double", [](Numbers& some) {
    Vector<double> a;
    for (double& element : a.at)
      element = static_cast<int32_t>(some.next()) / 60000.0;
    return from_double(a);
  });
  check<int16_t>("to integer", [](Numbers& some) {
    const Predicate g = any_predicate(some);
    return to_integer(g, any_halves(some));
  });
  check<int16_t>("from integer",
                 [](Numbers& some) { return from_integer(any_vector<int16_t>(some)); });
}
