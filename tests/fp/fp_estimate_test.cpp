// Estimates and accelerators against their definitions: every half-precision operand under all
// controls, and every table entry in single and double precision.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "sve/fp/fp.h"
#include "tests/fp/agreement.h"
#include "tests/fp/natural.h"

namespace {

using agreement::agree;
using agreement::Operands;
using reference::Controls;
using reference::Format;
using reference::format_of;
using reference::Outcome;

/// An operand cut up as the architecture does: the fraction in 52 bits whatever the format.
struct Fields {
  bool negative, nan, infinite, zero;
  int exponent;
  std::uint64_t fraction;
  unsigned flags;
};

Fields cut(Format f, std::uint64_t op, const Controls& c) {
  Fields x{};
  x.negative = op & f.sign();
  const std::uint64_t magnitude = op & (f.sign() - 1);
  x.nan = magnitude > f.infinity();
  x.infinite = magnitude == f.infinity();
  x.exponent = static_cast<int>(magnitude >> f.fraction_bits());
  x.fraction = (magnitude << (52 - f.fraction_bits())) & ((std::uint64_t{1} << 52) - 1);
  const bool flushed = x.exponent == 0 && magnitude && (f.width == 16 ? c.fz16 : c.fz);
  x.zero = magnitude == 0 || flushed;
  x.flags = flushed && f.width != 16 ? reference::input_denormal : 0u;
  return x;
}

Outcome nan_outcome(Format f, std::uint64_t op, const Controls& c) {
  return {c.dn ? f.default_nan() : op | f.quiet(), f.is_signalling(op) ? reference::invalid : 0u};
}

/// The estimate whose low 8 bits follow the point, from the definition in real numbers.
std::uint64_t estimate_of(double value) {
  return static_cast<std::uint64_t>(std::floor(value * 256 + 0.5));
}

std::uint64_t pack(Format f, bool negative, int exponent, std::uint64_t fraction52) {
  return (negative ? f.sign() : 0) | static_cast<std::uint64_t>(exponent) << f.fraction_bits() |
         fraction52 >> (52 - f.fraction_bits());
}

Outcome reciprocal(Format f, std::uint64_t op, const Controls& c) {
  Fields x = cut(f, op, c);
  const std::uint64_t sign = x.negative ? f.sign() : 0;
  if (x.nan)
    return nan_outcome(f, op, c);
  if (x.infinite)
    return {sign, 0};
  if (x.zero)
    return {sign | f.infinity(), x.flags | reference::division_by_zero};
  const double value = std::ldexp(static_cast<double>(x.fraction), -52);  // of a denormal
  if (x.exponent == 0 && value < 0.25) {
    const bool to_infinity = c.rounding == reference::nearest_even ||
                             c.rounding == (x.negative ? reference::down : reference::up);
    return {sign | (f.infinity() - (to_infinity ? 0 : 1)),
            reference::overflow | reference::inexact};
  }
  if ((f.width == 16 ? c.fz16 : c.fz) && x.exponent >= 2 * f.bias() - 1)
    return {sign, reference::underflow};
  while (x.exponent <= 0 && !(x.fraction >> 52 & 1)) {
    x.fraction <<= 1;
    x.exponent -= x.fraction >> 52 & 1 ? 0 : 1;
  }
  const auto range = static_cast<double>(256 + (x.fraction >> 44 & 0xff));
  const std::uint64_t estimate = estimate_of(1 / ((range + 0.5) / 512));
  std::uint64_t fraction = (estimate & 0xff) << 44;
  int exponent = 2 * f.bias() - 1 - x.exponent;
  if (exponent == 0) {
    fraction = std::uint64_t{1} << 51 | fraction >> 1;
  } else if (exponent == -1) {
    fraction = std::uint64_t{1} << 50 | fraction >> 2;
    exponent = 0;
  }
  return {pack(f, x.negative, exponent, fraction), 0};
}

Outcome reciprocal_root(Format f, std::uint64_t op, const Controls& c) {
  Fields x = cut(f, op, c);
  if (x.nan)
    return nan_outcome(f, op, c);
  if (x.zero)
    return {(x.negative ? f.sign() : 0) | f.infinity(), x.flags | reference::division_by_zero};
  if (x.negative)
    return {f.default_nan(), reference::invalid};
  if (x.infinite)
    return {0, 0};
  if (x.exponent == 0) {
    for (; !(x.fraction >> 51); --x.exponent)
      x.fraction <<= 1;
    x.fraction <<= 1;
  }
  // Ranges of 1/512 from a quarter to a half, and of 1/256 from there to 1.
  const bool odd = x.exponent & 1;
  const auto range = static_cast<double>(odd ? 128 + (x.fraction >> 45 & 0x7f)
                                             : 256 + 2 * (x.fraction >> 45 & 0x7f));
  const double middle = (range + (odd ? 0.5 : 1)) / 512;
  const std::uint64_t estimate = estimate_of(1 / std::sqrt(middle));
  return {pack(f, false, (3 * f.bias() - 1 - x.exponent) / 2, (estimate & 0xff) << 44), 0};
}

Outcome exponent_reciprocal(Format f, std::uint64_t op, const Controls& c) {
  const Fields x = cut(f, op, c);
  if (x.nan)
    return nan_outcome(f, op, c);
  const int exponent =
      x.exponent == 0 ? f.infinite_exponent() - 1 : f.infinite_exponent() - x.exponent;
  return {pack(f, x.negative, exponent, 0), x.flags};
}

/// Every pattern of half; of the others every leading ten fraction bits, with the rest clear and
/// set, under exponents of both parities at the ends and in the middle of the range.
template <typename T> std::vector<std::uint64_t> operands() {
  const Format f = format_of<T>();
  std::vector<std::uint64_t> values;
  if (f.width == 16) {
    for (std::uint64_t op = 0; op < 0x10000; ++op)
      values.push_back(op);
    return values;
  }
  const int top = f.infinite_exponent();
  const int rest_bits = f.fraction_bits() - 10;
  for (const int exponent :
       {0, 1, 2, 3, f.bias(), f.bias() + 1, top - 4, top - 3, top - 2, top - 1, top}) {
    for (std::uint64_t leading = 0; leading < 1024; ++leading) {
      const std::uint64_t low =
          static_cast<std::uint64_t>(exponent) << f.fraction_bits() | leading << rest_bits;
      for (const std::uint64_t sign : {std::uint64_t{0}, f.sign()}) {
        values.push_back(sign | low);
        values.push_back(sign | low | ((std::uint64_t{1} << rest_bits) - 1));
      }
    }
  }
  // Denormals whose leading bit stands anywhere.
  for (int shift = 0; shift < f.fraction_bits(); ++shift) {
    for (const std::uint64_t head : {0x100, 0x1ff, 0x155, 0x1aa})
      values.push_back(head << shift & (f.hidden() - 1));
  }
  return values;
}

template <typename T> class Estimate : public testing::Test {};
using Widths = testing::Types<std::uint16_t, std::uint32_t, std::uint64_t>;
TYPED_TEST_SUITE(Estimate, Widths);

template <typename T>
void compare(T (*operation)(T, FPSCR&),
             Outcome (*expected)(Format, std::uint64_t, const Controls&)) {
  for (const std::uint64_t op : operands<T>()) {
    for (std::uint64_t control = 0; control < 16; ++control) {
      if (!agree(
              {op, 0, 0}, agreement::controls_of(control), 0,
              [=](const Operands& ops, FPSCR& w) { return operation(T(ops[0]), w); },
              [=](const Operands& ops, const Controls& c) {
                return expected(format_of<T>(), ops[0], c);
              }))
        return;
    }
  }
}

TYPED_TEST(Estimate, Reciprocal) { compare(FPRecipEstimate<TypeParam>, reciprocal); }

TYPED_TEST(Estimate, ReciprocalRoot) { compare(FPRSqrtEstimate<TypeParam>, reciprocal_root); }

TYPED_TEST(Estimate, ReciprocalExponent) { compare(FPRecpX<TypeParam>, exponent_reciprocal); }

/// An unsigned estimate is that of the fraction as a single-precision value in [1/4, 1).
TEST(UnsignedEstimate, MatchesFloatingPointEstimates) {
  for (std::uint64_t op = 0; op < 0x100000000; op += 0x3fff7f) {
    FPSCR word = 0;
    const auto estimated = [&](std::uint64_t result) { return 0x80000000 | result << 8; };
    if (op & 0x80000000) {
      const auto value = static_cast<std::uint32_t>(0x3f000000 | (op >> 8 & 0x7fffff));
      EXPECT_EQ(UnsignedRecipEstimate(op, 0), estimated(FPRecipEstimate(value, word) & 0x7fffff));
      EXPECT_EQ(UnsignedRSqrtEstimate(op, 0), estimated(FPRSqrtEstimate(value, word) & 0x7fffff));
    } else {
      EXPECT_EQ(UnsignedRecipEstimate(op, 0), 0xffffffff);
    }
    if (op < 0x40000000) {
      EXPECT_EQ(UnsignedRSqrtEstimate(op, 0), 0xffffffff);
    } else if (op < 0x80000000) {
      const auto value = static_cast<std::uint32_t>(0x3e800000 | (op >> 7 & 0x7fffff));
      EXPECT_EQ(UnsignedRSqrtEstimate(op, 0), estimated(FPRSqrtEstimate(value, word) & 0x7fffff));
    }
  }
}

TYPED_TEST(Estimate, ExponentialIsCorrectlyRounded) {
  using T = TypeParam;
  const Format f = format_of<T>();
  const int bits = f.width == 16 ? 5 : 6;
  for (std::uint64_t op = 0; op < 0x10000; ++op) {
    const std::uint64_t result = FPEXPA(T(op));
    const std::uint64_t exponent = op >> bits & static_cast<std::uint64_t>(f.infinite_exponent());
    ASSERT_EQ(result >> f.fraction_bits(), exponent) << std::hex << op;
    const T index = static_cast<T>(op & ((1u << bits) - 1));
    ASSERT_EQ(result & (f.hidden() - 1), FPEXPA(index)) << std::hex << op;
  }
  // The significand m of 2^(i/n) is the nearest if (2m - 1)^n <= 2^(n (F + 1) + i) <= (2m + 1)^n.
  for (int i = 0; i < 1 << bits; ++i) {
    const std::uint64_t m = f.hidden() + FPEXPA(static_cast<T>(i));
    Natural below = 2 * m - 1, above = 2 * m + 1;
    for (int n = 0; n < bits; ++n) {
      below = below * below;
      above = above * above;
    }
    const Natural power = Natural(1) << ((f.fraction_bits() + 1) * (1 << bits) + i);
    EXPECT_TRUE(below <= power && power <= above) << i;
  }
}

double value_of(std::uint64_t pattern, Format f) {
  const int exponent = static_cast<int>(pattern >> f.fraction_bits()) & f.infinite_exponent();
  const std::uint64_t fraction = (pattern & (f.hidden() - 1)) + (exponent != 0 ? f.hidden() : 0);
  const int lowest = 2 - f.infinite_exponent() / 2 - 1 - f.fraction_bits();
  const double magnitude =
      std::ldexp(static_cast<double>(fraction), std::max(exponent, 1) - 1 + lowest);
  return pattern & f.sign() ? -magnitude : magnitude;
}

/// The steps of a program that computes sine and cosine: each of the coefficients has to be right
/// to nearly its last place for the sums to be.
TYPED_TEST(Estimate, TrigonometricStepsGiveSineAndCosine) {
  using T = TypeParam;
  const Format f = format_of<T>();
  constexpr int points = 4000;
  double worst[2] = {};
  for (int i = -points; i <= points; ++i) {
    FPSCR word = 0;
    const double wanted = i * (M_PI / 4 / points);
    T x = 0;  // the next one below
    for (int width = f.width - 2; width >= 0; --width)
      if (value_of(x | T(1) << width, f) <= std::fabs(wanted))
        x = static_cast<T>(x | T(1) << width);
    x = static_cast<T>(i < 0 ? x | f.sign() : x);
    for (const bool cosine : {false, true}) {
      const T square = FPTRISMUL<T>(x, cosine, word);
      T sum = 0;
      for (std::uint64_t step = 8; step-- > 0;)
        sum = FPTRIMADD<T>(step, sum, square, word);
      const double exact = cosine ? std::cos(value_of(x, f)) : std::sin(value_of(x, f));
      const T result = cosine ? sum : FPMul<T>(sum, x, word);
      const double place = std::ldexp(1.0, std::max(std::ilogb(exact), -14) - f.fraction_bits());
      if (exact != 0)
        worst[cosine] = std::max(worst[cosine], std::fabs(value_of(result, f) - exact) / place);
    }
  }
  EXPECT_LT(worst[0], 1.1);
  EXPECT_LT(worst[1], 1.1);
}

}  // namespace
