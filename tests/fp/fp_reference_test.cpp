// The library against the exact reference, value and flags, over all controls: first a grid of
// corners, then random operands.
//
// The short run is for every build. The long run takes the number of cases for each operation and
// width from the environment:
//
//     TAVOK_FP_CASES=10000000 build/native/bin/fp_reference_test
#include <gtest/gtest.h>

#include "sve/fp/fp.h"
#include "tests/fp/agreement.h"

namespace {

using agreement::compare;
using agreement::Operands;
using reference::Controls;
using reference::Format;
using reference::format_of;
using reference::Outcome;

template <typename T> class Arithmetic : public testing::Test {};
using Widths = testing::Types<std::uint16_t, std::uint32_t, std::uint64_t>;
TYPED_TEST_SUITE(Arithmetic, Widths);

template <typename T, typename Expected>
void compare_binary(T (*operation)(T, T, FPSCR&), Expected expected) {
  compare<T>(
      2, [=](const Operands& ops, FPSCR& word) { return operation(T(ops[0]), T(ops[1]), word); },
      [=](const Operands& ops, const Controls& c) {
        return expected(format_of<T>(), ops[0], ops[1], c);
      });
}

TYPED_TEST(Arithmetic, Add) { compare_binary(FPAdd<TypeParam>, reference::add); }

TYPED_TEST(Arithmetic, Subtract) { compare_binary(FPSub<TypeParam>, reference::subtract); }

TYPED_TEST(Arithmetic, Multiply) { compare_binary(FPMul<TypeParam>, reference::multiply); }

TYPED_TEST(Arithmetic, MultiplyExtended) {
  compare_binary(FPMulX<TypeParam>, reference::multiply_extended);
}

TYPED_TEST(Arithmetic, Divide) { compare_binary(FPDiv<TypeParam>, reference::divide); }

TYPED_TEST(Arithmetic, SquareWithSign) {
  compare_binary(FPTRISMUL<TypeParam>, reference::square_with_sign);
}

TYPED_TEST(Arithmetic, ReciprocalStep) {
  compare_binary(FPRecipStepFused<TypeParam>, [](Format f, auto a, auto b, const Controls& c) {
    return reference::newton_step(f, 2, 0, a, b, c);
  });
}

TYPED_TEST(Arithmetic, ReciprocalRootStep) {
  compare_binary(FPRSqrtStepFused<TypeParam>, [](Format f, auto a, auto b, const Controls& c) {
    return reference::newton_step(f, 3, -1, a, b, c);
  });
}

TYPED_TEST(Arithmetic, MultiplyAdd) {
  using T = TypeParam;
  compare<T>(
      3,
      [](const Operands& ops, FPSCR& word) {
        return FPMulAdd(T(ops[0]), T(ops[1]), T(ops[2]), word);
      },
      [](const Operands& ops, const Controls& c) {
        return reference::multiply_add(format_of<T>(), ops[0], ops[1], ops[2], c);
      });
}

TYPED_TEST(Arithmetic, SquareRoot) {
  using T = TypeParam;
  compare<T>(
      1, [](const Operands& ops, FPSCR& word) { return FPSqrt(T(ops[0]), word); },
      [](const Operands& ops, const Controls& c) {
        return reference::square_root(format_of<T>(), ops[0], c);
      });
}

TYPED_TEST(Arithmetic, RoundToIntegral) {
  using T = TypeParam;
  compare<T>(
      1,
      [](const Operands& ops, FPSCR& word) {
        return FPRoundInt(T(ops[0]), FPRounding(ops[2] % 5), ops[2] & 8, word);
      },
      [](const Operands& ops, const Controls& c) {
        return reference::round_to_integral(format_of<T>(), ops[0], static_cast<int>(ops[2] % 5),
                                            ops[2] & 8, c);
      });
}

/// Scales about the whole range of the format, now and then far beyond.
template <typename Int> Int scale_from(const Operands& ops) {
  const auto any = static_cast<Int>(ops[2]);
  constexpr Int range = sizeof(Int) == 2 ? 70 : sizeof(Int) == 4 ? 330 : 2300;
  return ops[1] % 16 == 0 ? any : static_cast<Int>(any % range);
}

TEST(Scale, Half) {
  compare<std::uint16_t>(
      1,
      [](const Operands& ops, FPSCR& word) {
        return FPScale16(static_cast<std::uint16_t>(ops[0]), scale_from<std::int16_t>(ops), word);
      },
      [](const Operands& ops, const Controls& c) {
        return reference::scale(reference::half, ops[0], scale_from<std::int16_t>(ops), c);
      });
}

TEST(Scale, Single) {
  compare<std::uint32_t>(
      1,
      [](const Operands& ops, FPSCR& word) {
        return FPScale32(static_cast<std::uint32_t>(ops[0]), scale_from<std::int32_t>(ops), word);
      },
      [](const Operands& ops, const Controls& c) {
        return reference::scale(reference::single, ops[0], scale_from<std::int32_t>(ops), c);
      });
}

TEST(Scale, Double) {
  compare<std::uint64_t>(
      1,
      [](const Operands& ops, FPSCR& word) {
        return FPScale64(ops[0], scale_from<std::int64_t>(ops), word);
      },
      [](const Operands& ops, const Controls& c) {
        return reference::scale(reference::double_, ops[0], scale_from<std::int64_t>(ops), c);
      });
}

template <typename To, typename From> struct Formats {
  using Target = To;
  using Source = From;
};

template <typename T> class Convert : public testing::Test {};
using Conversions =
    testing::Types<Formats<std::uint16_t, std::uint32_t>, Formats<std::uint16_t, std::uint64_t>,
                   Formats<std::uint32_t, std::uint16_t>, Formats<std::uint32_t, std::uint64_t>,
                   Formats<std::uint64_t, std::uint16_t>, Formats<std::uint64_t, std::uint32_t>>;
TYPED_TEST_SUITE(Convert, Conversions);

TYPED_TEST(Convert, BetweenFormats) {
  using To = typename TypeParam::Target;
  using From = typename TypeParam::Source;
  // To odd belongs to narrowing results in half and single, but not to nearest away.
  static constexpr FPRounding modes[] = {FPRounding_TIEEVEN, FPRounding_POSINF, FPRounding_NEGINF,
                                         FPRounding_ZERO, FPRounding_ODD};
  compare<From>(
      1,
      [](const Operands& ops, FPSCR& word) {
        return FPConvert<To>(From(ops[0]), modes[ops[2] % 5], word);
      },
      [](const Operands& ops, const Controls& c) {
        return reference::convert(format_of<From>(), format_of<To>(), ops[0], modes[ops[2] % 5], c);
      });
}

/// Mostly integers, and all fixed points up to the container.
int fbits_from(std::uint64_t any) { return any % 4 == 0 ? static_cast<int>(any >> 8) % 65 : 0; }

template <typename T> class ToFixed : public testing::Test {};
using FixedResults =
    testing::Types<Formats<std::uint16_t, std::uint16_t>, Formats<std::uint32_t, std::uint16_t>,
                   Formats<std::uint32_t, std::uint32_t>, Formats<std::uint32_t, std::uint64_t>,
                   Formats<std::uint64_t, std::uint16_t>, Formats<std::uint64_t, std::uint32_t>,
                   Formats<std::uint64_t, std::uint64_t>>;
TYPED_TEST_SUITE(ToFixed, FixedResults);

template <typename To, typename From> void compare_to_fixed(bool is_unsigned) {
  compare<From>(
      1,
      [=](const Operands& ops, FPSCR& word) {
        return fplibFPToFixed<To>(From(ops[0]), fbits_from(ops[1] & 0xffff), is_unsigned,
                                  FPRounding(ops[2] % 5), word);
      },
      [=](const Operands& ops, const Controls& c) {
        return reference::to_fixed(format_of<From>(), 8 * sizeof(To), ops[0],
                                   fbits_from(ops[1] & 0xffff), is_unsigned,
                                   static_cast<int>(ops[2] % 5), c);
      });
}

TYPED_TEST(ToFixed, Signed) {
  compare_to_fixed<typename TypeParam::Target, typename TypeParam::Source>(false);
}

TYPED_TEST(ToFixed, Unsigned) {
  compare_to_fixed<typename TypeParam::Target, typename TypeParam::Source>(true);
}

template <typename T> void compare_from_fixed(bool is_unsigned) {
  agreement::compare_integers<T>(
      [=](const Operands& ops, FPSCR& word) {
        return fplibFixedToFP<T>(ops[0], fbits_from(ops[1]), is_unsigned, FPRounding(ops[2] % 4),
                                 word);
      },
      [=](const Operands& ops, const Controls& c) {
        return reference::from_fixed(format_of<T>(), ops[0], fbits_from(ops[1]), is_unsigned,
                                     static_cast<int>(ops[2] % 4), c);
      });
}

TYPED_TEST(Arithmetic, FromSigned) { compare_from_fixed<TypeParam>(false); }

TYPED_TEST(Arithmetic, FromUnsigned) { compare_from_fixed<TypeParam>(true); }

}  // namespace
