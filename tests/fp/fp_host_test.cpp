// The library against the floating-point unit of the machine that runs the test, in single and
// double precision and every rounding mode, value and flags.
//
// Two things differ between machines and are found out at the start. Some detect tininess after
// rounding where the architecture does before: there, a result that rounded up to the smallest
// normal may lack the underflow flag, and only that flag is left out of the comparison. Some
// choose another NaN: there, any NaN matches a NaN, and a fused operation with a quiet NaN beside
// infinity times zero may or may not be invalid.
#include <gtest/gtest.h>

#include <bit>
#include <cfenv>
#include <cmath>
#include <cstdio>
#include <limits>

#include "sve/fp/fp.h"
#include "tests/fp/cases.h"

namespace {

constexpr std::uint64_t default_cases = 200000;
constexpr int host_rounding[] = {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO};

unsigned host_flags() {
  const int raised = std::fetestexcept(FE_ALL_EXCEPT);
  return (raised & FE_INVALID ? FPSCR_IOC : 0) | (raised & FE_DIVBYZERO ? FPSCR_DZC : 0) |
         (raised & FE_OVERFLOW ? FPSCR_OFC : 0) | (raised & FE_UNDERFLOW ? FPSCR_UFC : 0) |
         (raised & FE_INEXACT ? FPSCR_IXC : 0);
}

struct HostTraits {
  bool tiny_before_rounding;
  bool architectural_nans;
};

HostTraits probe_host() {
  HostTraits traits{};
  // So close below the smallest normal that 24 bits round it up whatever the exponent range.
  volatile double below_smallest = std::numeric_limits<float>::min() * (1.0 - 0x1p-30);
  std::feclearexcept(FE_ALL_EXCEPT);
  [[maybe_unused]] volatile float rounded = static_cast<float>(below_smallest);
  traits.tiny_before_rounding = std::fetestexcept(FE_UNDERFLOW);
  volatile double zero = 0;
  volatile double invalid = zero / zero;
  traits.architectural_nans =
      std::bit_cast<std::uint64_t>(double{invalid}) == FPFormat<std::uint64_t>::default_nan;
  std::printf("host: tininess %s rounding, %s NaNs\n",
              traits.tiny_before_rounding ? "before" : "after",
              traits.architectural_nans ? "the architecture's" : "other");
  return traits;
}

const HostTraits& host() {
  static const HostTraits traits = probe_host();
  return traits;
}

template <FPBits T> bool same(T library, std::uint32_t word, T unit, unsigned raised) {
  using F = FPFormat<T>;
  unsigned flags = word & 0x9f;
  const bool smallest_normal = T(library & ~F::sign_bit) == F::hidden_bit;
  if (!host().tiny_before_rounding && smallest_normal && (flags & FPSCR_IXC)) {
    flags &= ~FPSCR_UFC;
    raised &= ~FPSCR_UFC;
  }
  if (!host().architectural_nans && F::is_nan(library) && F::is_nan(unit))
    return flags == raised;
  return library == unit && flags == raised;
}

template <typename T> using Float = std::conditional_t<sizeof(T) == 4, float, double>;

/// Runs `library` and `unit` over the same operands. `unit` gets volatile values, so that the
/// compiler leaves the operation to the running rounding mode.
template <FPBits Result, FPBits T, typename Library, typename Unit>
void compare(const char* name, Library library, Unit unit) {
  host();
  cases::Source source(reference::format_of<T>());
  int failures = 0;
  for (std::uint64_t i = cases::count(default_cases); i > 0 && failures < 5; --i) {
    const T a = static_cast<T>(source.operand());
    const T b = static_cast<T>(source.operand_beside(a));
    const T c = static_cast<T>(source.operand_beside(b));
    FPSCR word = static_cast<FPSCR>(i % 4) << FPSCR_RMODE_SHIFT;
    const Result got = library(a, b, c, word);

    volatile Float<T> x = std::bit_cast<Float<T>>(a), y = std::bit_cast<Float<T>>(b),
                      z = std::bit_cast<Float<T>>(c);
    std::fesetround(host_rounding[i % 4]);
    std::feclearexcept(FE_ALL_EXCEPT);
    volatile Float<Result> result = unit(x, y, z);
    const unsigned raised = host_flags();
    std::fesetround(FE_TONEAREST);

    const auto want = std::bit_cast<Result>(Float<Result>{result});
    if (!same(got, word, want, raised)) {
      ++failures;
      ADD_FAILURE() << name << ": "
                    << cases::describe(word, {a, b, c}, {got, word & 0x9f}, {want, raised});
    }
  }
}

template <typename T> class Host : public testing::Test {};
using Widths = testing::Types<std::uint32_t, std::uint64_t>;
TYPED_TEST_SUITE(Host, Widths);

TYPED_TEST(Host, Arithmetic) {
  using T = TypeParam;
  compare<T, T>(
      "add", [](T a, T b, T, FPSCR& w) { return FPAdd(a, b, w); },
      [](auto& x, auto& y, auto&) { return x + y; });
  compare<T, T>(
      "multiply", [](T a, T b, T, FPSCR& w) { return FPMul(a, b, w); },
      [](auto& x, auto& y, auto&) { return x * y; });
  compare<T, T>(
      "divide", [](T a, T b, T, FPSCR& w) { return FPDiv(a, b, w); },
      [](auto& x, auto& y, auto&) { return x / y; });
  compare<T, T>(
      "square root", [](T a, T, T, FPSCR& w) { return FPSqrt(a, w); },
      [](auto& x, auto&, auto&) { return std::sqrt(x); });
}

TYPED_TEST(Host, Subtract) {
  using T = TypeParam;
  compare<T, T>(
      "subtract", [](T a, T b, T, FPSCR& w) { return FPSub(a, b, w); },
      [](auto& x, auto& y, auto&) { return x - y; });
}

TYPED_TEST(Host, MultiplyAdd) {
  using T = TypeParam;
  compare<T, T>(
      "fused multiply-add",
      [](T a, T b, T c, FPSCR& w) {
        const T result = FPMulAdd(a, b, c, w);
        if (!host().architectural_nans && FPFormat<T>::is_quiet_nan(a) && !FPFormat<T>::is_nan(b) &&
            !FPFormat<T>::is_nan(c))
          w &= ~FPSCR_IOC;
        return result;
      },
      [](auto& x, auto& y, auto& z) {
        const auto result = std::fma(y, z, x);
        if (!host().architectural_nans && std::isnan(x) && !std::isnan(y) && !std::isnan(z) &&
            std::bit_cast<T>(Float<T>{x}) & FPFormat<T>::quiet_bit)
          std::feclearexcept(FE_INVALID);
        return result;
      });
}

TYPED_TEST(Host, RoundToIntegral) {
  using T = TypeParam;
  compare<T, T>(
      "round to integral",
      [](T a, T, T, FPSCR& w) { return FPRoundInt(a, FPRoundingMode(w), true, w); },
      [](auto& x, auto&, auto&) { return std::rint(x); });
}

TYPED_TEST(Host, FromInteger) {
  using T = TypeParam;
  compare<T, std::uint64_t>(
      "from a signed integer",
      [](std::uint64_t a, std::uint64_t, std::uint64_t, FPSCR& w) {
        return fplibFixedToFP<T>(a, 0, false, FPRoundingMode(w), w);
      },
      [](auto& x, auto&, auto&) {
        return static_cast<Float<T>>(std::bit_cast<std::int64_t>(double{x}));
      });
}

TEST(Host, BetweenFormats) {
  using S = std::uint32_t;
  using D = std::uint64_t;
  compare<S, D>(
      "double to single", [](D a, D, D, FPSCR& w) { return FPConvert<S>(a, FPRoundingMode(w), w); },
      [](auto& x, auto&, auto&) { return static_cast<float>(x); });
  compare<D, S>(
      "single to double", [](S a, S, S, FPSCR& w) { return FPConvert<D>(a, FPRoundingMode(w), w); },
      [](auto& x, auto&, auto&) { return static_cast<double>(x); });
}

/// To signed integers, towards zero. Out of range and NaN are left to the reference: what a
/// machine gives there is its own.
template <typename Int, typename T> void compare_to_integer() {
  using UInt = std::make_unsigned_t<Int>;
  cases::Source source(reference::format_of<T>());
  for (std::uint64_t i = cases::count(default_cases); i > 0 && !testing::Test::HasFailure(); --i) {
    const T a = static_cast<T>(source.operand());
    volatile Float<T> x = std::bit_cast<Float<T>>(a);
    constexpr auto edge = -static_cast<Float<T>>(std::numeric_limits<Int>::min());
    FPSCR word = 0;
    const auto got = fplibFPToFixed<UInt>(a, 0, false, FPRounding_ZERO, word);
    const auto whole = std::trunc(Float<T>{x});
    if (!(whole >= -edge && whole < edge)) {
      EXPECT_EQ(word, FPSCR_IOC) << std::hex << a;
      continue;
    }
    std::feclearexcept(FE_ALL_EXCEPT);
    volatile Int want = static_cast<Int>(x);
    EXPECT_EQ(got, static_cast<UInt>(want)) << std::hex << a;
    EXPECT_EQ(word, host_flags()) << std::hex << a;
  }
}

TEST(Host, ToInteger) {
  compare_to_integer<std::int32_t, std::uint32_t>();
  compare_to_integer<std::int64_t, std::uint32_t>();
  compare_to_integer<std::int32_t, std::uint64_t>();
  compare_to_integer<std::int64_t, std::uint64_t>();
}

}  // namespace
