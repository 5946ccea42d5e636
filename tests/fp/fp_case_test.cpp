// Cases worth naming, by operation, and the comparisons and selections against host values.
#include <gtest/gtest.h>

#include <cmath>

#include "sve/fp/fp.h"
#include "sve/fp/steps.h"
#include "tests/fp/cases.h"
#include "tests/fp/natural.h"

namespace {

using S = std::uint32_t;
using D = std::uint64_t;
using H = std::uint16_t;

constexpr FPSCR to_zero = FPRounding_ZERO << FPSCR_RMODE_SHIFT;
constexpr FPSCR down = FPRounding_NEGINF << FPSCR_RMODE_SHIFT;
constexpr FPSCR up = FPRounding_POSINF << FPSCR_RMODE_SHIFT;
constexpr FPSCR flags_of_word = 0x9f;

struct Case {
  const char* what;
  std::uint64_t (*run)(FPSCR&);
  FPSCR control;
  std::uint64_t result;
  FPSCR flags;
};

void check(const Case& c) {
  SCOPED_TRACE(c.what);
  FPSCR word = c.control;
  EXPECT_EQ(c.run(word), c.result);
  EXPECT_EQ(word & flags_of_word, c.flags);
  EXPECT_EQ(word & ~flags_of_word, c.control & ~flags_of_word);
}

#define OP(...) []([[maybe_unused]] FPSCR& w) -> std::uint64_t { return __VA_ARGS__; }

// clang-format off
const Case arithmetic_cases[] = {
  {"smallest denormal times 1", OP(FPMul<S>(1, 0x3f800000, w)), 0, 1, 0},
  {"the same, flushed", OP(FPMul<S>(1, 0x3f800000, w)), FPSCR_FZ, 0, FPSCR_IDC},
  {"largest denormal and half its last place", OP(FPMul<S>(0x00ffffff, 0x3f000000, w)), 0, 0x00800000, FPSCR_UFC | FPSCR_IXC},
  {"the same under FZ: no rounding up", OP(FPMul<S>(0x00ffffff, 0x3f000000, w)), FPSCR_FZ, 0, FPSCR_UFC},
  {"half denormals under FZ16 raise nothing", OP(FPAdd<H>(1, 0x8002, w)), FPSCR_FZ16, 0, 0},
  {"overflow towards zero", OP(FPMul<S>(0x7f7fffff, 0xc0000000, w)), to_zero, 0xff7fffff, FPSCR_OFC | FPSCR_IXC},
  {"signalling NaN under DN", OP(FPAdd<S>(0xff800001, 0, w)), FPSCR_DN, 0x7fc00000, FPSCR_IOC},
  {"quiet NaN under DN", OP(FPAdd<S>(0xffc00001, 0, w)), FPSCR_DN, 0x7fc00000, 0},
  {"signalling second wins over quiet first", OP(FPAdd<S>(0x7fc00001, 0xff800002, w)), 0, 0xffc00002, FPSCR_IOC},
  {"1 - 1", OP(FPAdd<D>(0x3ff0000000000000, 0xbff0000000000000, w)), up, 0, 0},
  {"1 - 1, down", OP(FPAdd<D>(0x3ff0000000000000, 0xbff0000000000000, w)), down, 0x8000000000000000, 0},
  {"-0 + -0, up", OP(FPAdd<S>(0x80000000, 0x80000000, w)), up, 0x80000000, 0},
  {"+0 + -0, down", OP(FPAdd<S>(0, 0x80000000, w)), down, 0x80000000, 0},
  {"FPSub keeps the sign of a NaN", OP(FPSub<S>(0, 0x7fc00003, w)), 0, 0x7fc00003, 0},
  {"quiet addend, zero times infinity", OP(FPMulAdd<S>(0x7fc00003, 0, 0x7f800000, w)), 0, 0x7fc00000, FPSCR_IOC},
  {"signalling addend, zero times infinity", OP(FPMulAdd<S>(0xff800003, 0, 0x7f800000, w)), 0, 0xffc00003, FPSCR_IOC},
  {"signalling factor, quiet addend", OP(FPMulAdd<S>(0x7fc00003, 0x7f800001, 0, w)), 0, 0x7fc00001, FPSCR_IOC},
  {"exact zero product leaves the addend", OP(FPMulAdd<D>(1, 0, 5, w)), up, 1, 0},
  {"tiny product moves a huge addend up", OP(FPMulAdd<S>(0x7f000000, 1, 1, w)), up, 0x7f000001, FPSCR_IXC},
  // 2^(4n+2) + 1 has factors that fit a mantissa: a product with two bits, far apart. The low one
  // lies below all that alignment keeps, and must still turn a tie.
  {"half: just above a tie", OP(FPMulAdd<H>(0x3c00, 0x3c42, 0x0f84, w)), 0, 0x3c01, FPSCR_IXC},
  {"half: just below a tie", OP(FPMulAdd<H>(0x3c02, 0x3c42, 0x8f84, w)), 0, 0x3c01, FPSCR_IXC},
  {"single: just above a tie", OP(FPMulAdd<S>(0x3f800000, 0x4b001001, 0x27ffe002, w)), 0, 0x3f800001, FPSCR_IXC},
  {"single: just below a tie", OP(FPMulAdd<S>(0x3f800002, 0x4b001001, 0xa7ffe002, w)), 0, 0x3f800001, FPSCR_IXC},
  {"double: just above a tie", OP(FPMulAdd<D>(0x3ff0000000000000, 0x4320000008000002, 0x396ffffff0000004, w)), 0, 0x3ff0000000000001, FPSCR_IXC},
  {"double: just below a tie", OP(FPMulAdd<D>(0x3ff0000000000002, 0x4320000008000002, 0xb96ffffff0000004, w)), 0, 0x3ff0000000000001, FPSCR_IXC},
  {"FPMulX of -infinity and 0", OP(FPMulX<H>(0xfc00, 0, w)), 0, 0xc000, 0},
  {"FPMul of infinity and 0", OP(FPMul<H>(0x7c00, 0, w)), 0, 0x7e00, FPSCR_IOC},
  {"finite by -0", OP(FPDiv<S>(0x3f800000, 0x80000000, w)), 0, 0xff800000, FPSCR_DZC},
  {"infinity by 0", OP(FPDiv<S>(0x7f800000, 0, w)), 0, 0x7f800000, 0},
  {"0 by a flushed denormal", OP(FPDiv<S>(0, 1, w)), FPSCR_FZ, 0x7fc00000, FPSCR_IDC | FPSCR_IOC},
  {"largest by smallest", OP(FPDiv<D>(0x7fefffffffffffff, 1, w)), to_zero, 0x7fefffffffffffff, FPSCR_OFC | FPSCR_IXC},
  {"root of -0", OP(FPSqrt<S>(0x80000000, w)), 0, 0x80000000, 0},
  {"root of a flushed negative denormal", OP(FPSqrt<S>(0x80000001, w)), FPSCR_FZ, 0x80000000, FPSCR_IDC},
  {"root of -infinity", OP(FPSqrt<S>(0xff800000, w)), 0, 0x7fc00000, FPSCR_IOC},
  {"root of an exact square", OP(FPSqrt<D>(0x4022000000000000, w)), 0, 0x4008000000000000, 0},
  {"flags stay", OP(FPAdd<S>(0, 0, w)), FPSCR_IOC | FPSCR_IDC, 0, FPSCR_IOC | FPSCR_IDC},
};

const Case selection_cases[] = {
  {"EQ of a quiet NaN", OP(FPCompareEQ<S>(0x7fc00000, 0, w)), 0, 0, 0},
  {"EQ of a signalling NaN", OP(FPCompareEQ<S>(0, 0x7f800001, w)), 0, 0, FPSCR_IOC},
  {"GE of a quiet NaN", OP(FPCompareGE<S>(0x7fc00000, 0, w)), 0, 0, FPSCR_IOC},
  {"UN of a quiet NaN", OP(FPCompareUN<D>(0, 0x7ff8000000000000, w)), 0, 1, 0},
  {"smallest denormal > +0", OP(FPCompareGT<S>(1, 0, w)), 0, 1, 0},
  {"the same, flushed", OP(FPCompareGT<S>(1, 0, w)), FPSCR_FZ, 0, FPSCR_IDC},
  {"half denormal and +0 under FZ16", OP(FPCompareEQ<H>(1, 0, w)), FPSCR_FZ16, 1, 0},
  {"FPCompare unordered, quiet", OP(FPCompare<S>(0x7fc00000, 0, false, w)), 0, 3, 0},
  {"FPCompare unordered, any NaN signals", OP(FPCompare<S>(0x7fc00000, 0, true, w)), 0, 3, FPSCR_IOC},
  {"FPCompare equal", OP(FPCompare<D>(0x8000000000000000, 0, true, w)), 0, 6, 0},
  {"FPCompare less", OP(FPCompare<S>(0xbf800000, 0, true, w)), 0, 8, 0},
  {"FPCompare greater", OP(FPCompare<S>(0x3f800000, 0, true, w)), 0, 2, 0},
  {"max of +0 and -0", OP(FPMax<S>(0, 0x80000000, w)), 0, 0, 0},
  {"max of -0 and +0", OP(FPMax<S>(0x80000000, 0, w)), 0, 0, 0},
  {"min of +0 and -0", OP(FPMin<S>(0, 0x80000000, w)), 0, 0x80000000, 0},
  {"max of a signalling NaN", OP(FPMax<S>(0x7f800001, 0, w)), 0, 0x7fc00001, FPSCR_IOC},
  {"maxnum of a quiet NaN", OP(FPMaxNum<S>(0x7fc00001, 0xbf800000, w)), 0, 0xbf800000, 0},
  {"maxnum of a quiet and a signalling NaN", OP(FPMaxNum<S>(0x7fc00001, 0x7f800002, w)), 0, 0x7fc00002, FPSCR_IOC},
  {"maxnum of two quiet NaNs", OP(FPMaxNum<S>(0x7fc00001, 0x7fc00002, w)), 0, 0x7fc00001, 0},
  {"the same under DN", OP(FPMaxNum<S>(0x7fc00001, 0x7fc00002, w)), FPSCR_DN, 0x7fc00000, 0},
  {"max of flushed denormals", OP(FPMax<S>(2, 1, w)), FPSCR_FZ, 0, FPSCR_IDC},
  {"max of a flushed negative denormal and -1", OP(FPMax<S>(0x80000001, 0xbf800000, w)), FPSCR_FZ, 0x80000000, FPSCR_IDC},
  {"maxnum of -infinity and a quiet NaN", OP(FPMaxNum<H>(0xfc00, 0x7e00, w)), 0, 0xfc00, 0},
  {"minnum of a quiet NaN and +infinity", OP(FPMinNum<H>(0x7e00, 0x7c00, w)), 0, 0x7c00, 0},
};

const Case estimate_cases[] = {
  {"reciprocal of 1", OP(FPRecipEstimate<S>(0x3f800000, w)), 0, 0x3f7f8000, 0},
  {"of 2^127: a denormal", OP(FPRecipEstimate<S>(0x7f000000, w)), 0, 0x003fe000, 0},
  {"the same, flushed", OP(FPRecipEstimate<S>(0x7f000000, w)), FPSCR_FZ, 0, FPSCR_UFC},
  {"of the smallest denormal, to zero", OP(FPRecipEstimate<S>(1, w)), to_zero, 0x7f7fffff, FPSCR_OFC | FPSCR_IXC},
  {"of the smallest denormal", OP(FPRecipEstimate<S>(1, w)), 0, 0x7f800000, FPSCR_OFC | FPSCR_IXC},
  {"of 2^-128", OP(FPRecipEstimate<S>(0x00200000, w)), 0, 0x7f7f8000, 0},
  {"of a flushed denormal", OP(FPRecipEstimate<S>(1, w)), FPSCR_FZ, 0x7f800000, FPSCR_DZC | FPSCR_IDC},
  {"root of -0", OP(FPRSqrtEstimate<S>(0x80000000, w)), 0, 0xff800000, FPSCR_DZC},
  {"root of -1", OP(FPRSqrtEstimate<S>(0xbf800000, w)), 0, 0x7fc00000, FPSCR_IOC},
  {"root of 2", OP(FPRSqrtEstimate<S>(0x40000000, w)), 0, 0x3f348000, 0},
  {"root of 4", OP(FPRSqrtEstimate<S>(0x40800000, w)), 0, 0x3eff8000, 0},
  {"exponent of 1", OP(FPRecpX<S>(0x3f800000, w)), 0, 0x40000000, 0},
  {"exponent of +0", OP(FPRecpX<S>(0, w)), 0, 0x7f000000, 0},
  {"exponent of +infinity", OP(FPRecpX<S>(0x7f800000, w)), 0, 0, 0},
  {"step of infinity and 0", OP(FPRecipStepFused<S>(0x7f800000, 0, w)), 0, 0x40000000, 0},
  {"root step of 0 and infinity", OP(FPRSqrtStepFused<H>(0, 0x7c00, w)), 0, 0x3e00, 0},
  {"root step of 3 and 1, down", OP(FPRSqrtStepFused<S>(0x40400000, 0x3f800000, w)), down, 0x80000000, 0},
  {"step with a NaN: sign inverted", OP(FPRecipStepFused<S>(0x7fc00001, 0, w)), 0, 0xffc00001, 0},
};

const Case conversion_cases[] = {
  {"single signalling NaN to double", OP(FPConvert<D>(S{0x7f800001}, FPRounding_TIEEVEN, w)), 0, 0x7ff8000020000000, FPSCR_IOC},
  {"low payload of a double is lost", OP(FPConvert<S>(D{0x7ff800001fffffff}, FPRounding_TIEEVEN, w)), 0, 0x7fc00000, 0},
  {"65520 to half", OP(FPConvert<H>(S{0x477ff000}, FPRounding_TIEEVEN, w)), 0, 0x7c00, FPSCR_OFC | FPSCR_IXC},
  {"65520 to half, to zero", OP(FPConvert<H>(S{0x477ff000}, FPRounding_ZERO, w)), 0, 0x7bff, FPSCR_IXC},
  {"half denormals are not flushed on the way in", OP(FPConvert<H>(S{0x33800000}, FPRounding_ZERO, w)), FPSCR_FZ16, 1, 0},
  {"NaN to alternative half", OP(FPConvert<H>(S{0xffc00000}, FPRounding_TIEEVEN, w)), FPSCR_AHP, 0x8000, FPSCR_IOC},
  {"infinity to alternative half", OP(FPConvert<H>(S{0xff800000}, FPRounding_TIEEVEN, w)), FPSCR_AHP, 0xffff, FPSCR_IOC},
  {"131072 to alternative half", OP(FPConvert<H>(S{0x48000000}, FPRounding_ZERO, w)), FPSCR_AHP, 0x7fff, FPSCR_IOC},
  {"alternative half 0x7c00", OP(FPConvert<S>(H{0x7c00}, FPRounding_TIEEVEN, w)), FPSCR_AHP, 0x47800000, 0},
  {"-0.5 to unsigned", OP(fplibFPToFixed<S>(S{0xbf000000}, 0, true, FPRounding_ZERO, w)), 0, 0, FPSCR_IXC},
  {"-1 to unsigned", OP(fplibFPToFixed<S>(S{0xbf800000}, 0, true, FPRounding_ZERO, w)), 0, 0, FPSCR_IOC},
  {"2^31 to signed", OP(fplibFPToFixed<S>(S{0x4f000000}, 0, false, FPRounding_ZERO, w)), 0, 0x7fffffff, FPSCR_IOC},
  {"-2^31 to signed", OP(fplibFPToFixed<S>(D{0xc1e0000000000000}, 0, false, FPRounding_ZERO, w)), 0, 0x80000000, 0},
  {"+infinity to unsigned", OP(fplibFPToFixed<D>(H{0x7c00}, 0, true, FPRounding_ZERO, w)), 0, ~0ull, FPSCR_IOC},
  {"signed top bit", OP(fplibFixedToFP<D>(1ull << 63, 0, false, FPRounding_TIEEVEN, w)), 0, 0xc3e0000000000000, 0},
  {"unsigned top bit", OP(fplibFixedToFP<D>(1ull << 63, 0, true, FPRounding_TIEEVEN, w)), 0, 0x43e0000000000000, 0},
  {"integer 65519 to half", OP(fplibFixedToFP<H>(65519, 0, true, FPRounding_TIEEVEN, w)), 0, 0x7bff, FPSCR_IXC},
  {"integer 65520 to half", OP(fplibFixedToFP<H>(65520, 0, true, FPRounding_TIEEVEN, w)), 0, 0x7c00, FPSCR_OFC | FPSCR_IXC},
  {"2.5 to even", OP(FPRoundInt<S>(0x40200000, FPRounding_TIEEVEN, false, w)), 0, 0x40000000, 0},
  {"2.5 away", OP(FPRoundInt<S>(0x40200000, FPRounding_TIEAWAY, false, w)), 0, 0x40400000, 0},
  {"-0.5 up", OP(FPRoundInt<S>(0xbf000000, FPRounding_POSINF, false, w)), 0, 0x80000000, 0},
  {"1.5, exact", OP(FPRoundInt<S>(0x3fc00000, FPRounding_ZERO, true, w)), 0, 0x3f800000, FPSCR_IXC},
  {"flushed denormal, exact", OP(FPRoundInt<S>(1, FPRounding_POSINF, true, w)), FPSCR_FZ, 0, FPSCR_IDC},
  {"1 scaled by 400", OP(FPScale32(0x3f800000, 400, w)), 0, 0x7f800000, FPSCR_OFC | FPSCR_IXC},
  {"smallest normal scaled by -1", OP(FPScale32(0x00800000, -1, w)), 0, 0x00400000, 0},
  {"denormal in canonical form, flushed", OP(FPProcess32(0x80000001, w)), FPSCR_FZ, 0x80000000, FPSCR_IDC},
  {"signalling NaN in canonical form", OP(FPProcess64(0x7ff0000000000001, w)), 0, 0x7ff8000000000001, FPSCR_IOC},
};

const Case accelerator_cases[] = {
  {"sine row 0 and +0", OP(FPTRIMADD<S>(1, 0x3f800000, 0, w)), 0, 0xbe2aaaab, 0},
  {"a negative zero takes the cosine row", OP(FPTRIMADD<S>(1, 0x3f800000, 0x80000000, w)), 0, 0xbf000000, 0},
  {"last cosine coefficient", OP(FPTRIMADD<D>(7, 0, 1ull << 63, w)), 0, 0xbda8f76380fbb401, 0},
  {"half cosine row 2", OP(FPTRIMADD<H>(2, 0x3c00, 0x8000, w)), 0, 0x293a, 0},
  {"a negative NaN becomes positive", OP(FPTRIMADD<S>(0, 0, 0xffc00001, w)), 0, 0x7fc00001, 0},
  {"zero coefficient: the product", OP(FPTRIMADD<S>(5, 0x40000000, 0x40400000, w)), 0, 0x40c00000, 0},
  {"square of -2", OP(FPTRISMUL<S>(0xc0000000, 2, w)), 0, 0x40800000, 0},
  {"square of -2, sign taken", OP(FPTRISMUL<S>(0xc0000000, 3, w)), 0, 0xc0800000, 0},
  {"square of a NaN", OP(FPTRISMUL<S>(0x7fc00001, 1, w)), 0, 0x7fc00001, 0},
  {"overflow, down: rounded as positive", OP(FPTRISMUL<S>(0x7f000000, 1, w)), down, 0xff7fffff, FPSCR_OFC | FPSCR_IXC},
  {"exponential 0", OP(FPEXPA<S>(0)), 0, 0, 0},
  {"exponential of exponent 127", OP(FPEXPA<S>(127 << 6)), 0, 0x3f800000, 0},
  {"square root of two", OP(FPEXPA<S>((127 << 6) + 32)), 0, 0x3fb504f3, 0},
  {"half entry 1", OP(FPEXPA<H>(1)), 0, 0x16, 0},
  {"single entry 1", OP(FPEXPA<S>(1)), 0, 0x164d2, 0},
  {"double entry 1", OP(FPEXPA<D>(1)), 0, 0x2c9a3e778061, 0},
};
// clang-format on

template <std::size_t n> void check_all(const Case (&table)[n]) {
  for (const Case& c : table)
    check(c);
}

TEST(Cases, Arithmetic) { check_all(arithmetic_cases); }
TEST(Cases, Selection) { check_all(selection_cases); }
TEST(Cases, Estimates) { check_all(estimate_cases); }
TEST(Cases, Conversions) { check_all(conversion_cases); }
TEST(Cases, Accelerators) { check_all(accelerator_cases); }

/// Widths at the edges of the limbs that a product of 62 bits may be made of.
TEST(Steps, Multiply62) {
  constexpr D all = (D{1} << 62) - 1;
  for (const D a : {D{0}, D{1}, D{0x7fffffff}, D{0x80000000}, D{0x123456789abcdef}, all, ~D{0}}) {
    for (const D b : {D{1}, D{3}, D{0x7fffffff}, D{0x80000001}, all, ~D{0} - 5}) {
      const Natural product = Natural(a & all) * Natural(b & all);
      EXPECT_EQ(static_cast<D>(fp_mul62(a, b)), product.low64());
      EXPECT_EQ(static_cast<D>(fp_mul62(a, b) >> 64), (product >> 64).low64());
    }
  }
}

/// A number as host value, exactly; the zero of its sign if the controls flush it.
template <typename T> double value_of(T op, FPSCR word) {
  using F = FPFormat<T>;
  const int field = static_cast<int>(op >> F::fraction_bits) & F::infinite_exponent;
  const double sign = op & F::sign_bit ? -1 : 1;
  const bool flush = word & (sizeof(T) == 2 ? FPSCR_FZ16 : FPSCR_FZ);
  if (field == F::infinite_exponent)
    return sign * HUGE_VAL;
  if (field == 0 && flush)
    return sign * 0;
  const auto mantissa = static_cast<double>((op & F::fraction_mask) | (field ? F::hidden_bit : 0));
  return sign * std::ldexp(mantissa, std::max(field, 1) - F::bias - F::fraction_bits);
}

template <typename T> class Selection : public testing::Test {};
using Widths = testing::Types<H, S, D>;
TYPED_TEST_SUITE(Selection, Widths);

/// Comparisons and selections of numbers against the host's order of their values.
TYPED_TEST(Selection, FollowsTheOrderOfValues) {
  using T = TypeParam;
  cases::Source source(reference::format_of<T>());
  for (std::uint64_t i = cases::count(200000); i > 0 && !testing::Test::HasFailure(); --i) {
    const T a = static_cast<T>(source.operand());
    const T b = static_cast<T>(source.operand_beside(a));
    if (FPFormat<T>::is_nan(a) || FPFormat<T>::is_nan(b))
      continue;
    const FPSCR control = i & 1 ? FPSCR_FZ | FPSCR_FZ16 : 0;
    const double x = value_of(a, control), y = value_of(b, control);
    const bool flushed =
        sizeof(T) != 2 && ((x == 0 && T(a << 1) != 0) || (y == 0 && T(b << 1) != 0));
    SCOPED_TRACE(testing::Message() << std::hex << a << ' ' << b << " word " << control);
    FPSCR word = control;
    EXPECT_EQ(FPCompareEQ(a, b, word), x == y);
    EXPECT_EQ(FPCompareGE(a, b, word), x >= y);
    EXPECT_EQ(FPCompareGT(a, b, word), x > y);
    EXPECT_FALSE(FPCompareUN(a, b, word));
    // Equal values are alike but for zeros, of which the positive one is the greater.
    const bool first = x != y ? x > y : std::signbit(y);
    EXPECT_EQ(value_of(FPMax(a, b, word), 0), first ? x : y);
    EXPECT_EQ(std::signbit(value_of(FPMax(a, b, word), 0)), std::signbit(first ? x : y));
    EXPECT_EQ(value_of(FPMin(a, b, word), 0), first ? y : x);
    EXPECT_EQ(std::signbit(value_of(FPMin(a, b, word), 0)), std::signbit(first ? y : x));
    EXPECT_EQ(FPMaxNum(a, b, word), FPMax(a, b, word));
    EXPECT_EQ(FPMinNum(a, b, word), FPMin(a, b, word));
    EXPECT_EQ(word, control | (flushed ? FPSCR_IDC : 0));
  }
}

}  // namespace
