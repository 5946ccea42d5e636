// Half precision over every operand: operations on one operand under all rounding modes, FZ16 and
// DN, and operations on two with every first operand beside a set of corners.
#include <gtest/gtest.h>

#include "sve/fp/fp.h"
#include "tests/fp/agreement.h"

namespace {

using H = std::uint16_t;
using agreement::agree;
using agreement::Operands;
using reference::Controls;
using reference::Outcome;

constexpr std::uint64_t patterns = 1 << 16;

/// Calls `visit` for every operand and all 16 controls; a run with fewer cases than operands
/// visits every operand with one control value, which changes from one operand to the next.
template <typename Visit> void for_each_operand(Visit visit) {
  const bool all = cases::count(patterns) >= patterns;
  for (std::uint64_t op = 0; op < patterns && !testing::Test::HasFailure(); ++op) {
    for (std::uint64_t control = 0; control < 16; ++control) {
      if (all || (op ^ op >> 4 ^ op >> 10) % 16 == control)
        visit(op, agreement::controls_of(control));
    }
  }
}

template <typename Library, typename Expected>
void compare_unary(Library library, Expected expected) {
  for_each_operand([&](std::uint64_t op, const Controls& c) {
    agree({op, 0, 0}, c, 0, library, expected);
  });
}

TEST(Half, SquareRoot) {
  compare_unary([](const Operands& ops, FPSCR& w) { return FPSqrt(H(ops[0]), w); },
                [](const Operands& ops, const Controls& c) {
                  return reference::square_root(reference::half, ops[0], c);
                });
}

TEST(Half, RoundToIntegral) {
  for (const int rounding : {0, 1, 2, 3, 4}) {
    compare_unary([=](const Operands& ops,
                      FPSCR& w) { return FPRoundInt(H(ops[0]), FPRounding(rounding), true, w); },
                  [=](const Operands& ops, const Controls& c) {
                    return reference::round_to_integral(reference::half, ops[0], rounding, true, c);
                  });
  }
}

template <typename To> void compare_widening() {
  compare_unary(
      [](const Operands& ops, FPSCR& w) { return FPConvert<To>(H(ops[0]), FPRoundingMode(w), w); },
      [](const Operands& ops, const Controls& c) {
        return reference::convert(reference::half, reference::format_of<To>(), ops[0], c.rounding,
                                  c);
      });
}

TEST(Half, Widening) {
  compare_widening<std::uint32_t>();
  compare_widening<std::uint64_t>();
}

/// The alternative format has a value for every pattern, and converts there and back unchanged.
TEST(Half, AlternativeFormatRoundTrip) {
  for (std::uint64_t op = 0; op < patterns; ++op) {
    FPSCR word = FPSCR_AHP;
    const auto wide = FPConvert<std::uint32_t>(H(op), FPRounding_TIEEVEN, word);
    EXPECT_EQ(FPConvert<H>(wide, FPRounding_TIEEVEN, word), op);
    EXPECT_EQ(word, FPSCR_AHP) << std::hex << op;
  }
}

template <typename To> void compare_to_fixed(bool is_unsigned) {
  compare_unary(
      [=](const Operands& ops, FPSCR& w) {
        return fplibFPToFixed<To>(H(ops[0]), 0, is_unsigned, FPRoundingMode(w), w);
      },
      [=](const Operands& ops, const Controls& c) {
        return reference::to_fixed(reference::half, 8 * sizeof(To), ops[0], 0, is_unsigned,
                                   c.rounding, c);
      });
}

TEST(Half, ToFixed) {
  for (const bool is_unsigned : {false, true}) {
    compare_to_fixed<std::uint16_t>(is_unsigned);
    compare_to_fixed<std::uint32_t>(is_unsigned);
    compare_to_fixed<std::uint64_t>(is_unsigned);
  }
}

TEST(Half, FromFixed) {
  for (const bool is_unsigned : {false, true}) {
    compare_unary(
        [=](const Operands& ops, FPSCR& w) {
          return fplibFixedToFP<H>(ops[0] * ops[0], 0, is_unsigned, FPRoundingMode(w), w);
        },
        [=](const Operands& ops, const Controls& c) {
          return reference::from_fixed(reference::half, ops[0] * ops[0], 0, is_unsigned, c.rounding,
                                       c);
        });
  }
}

TEST(Half, Scale) {
  for (const std::int16_t by : {-32768, -41, -11, -1, 0, 1, 14, 41, 32767}) {
    compare_unary(
        [=](const Operands& ops, FPSCR& w) {
          return by == 0 ? FPProcess16(H(ops[0]), w) : FPScale16(H(ops[0]), by, w);
        },
        [=](const Operands& ops, const Controls& c) {
          return reference::scale(reference::half, ops[0], by, c);
        });
  }
}

/// Every first operand and every second from the corners, with each control value in turn.
template <typename Expected> void compare_binary(H (*operation)(H, H, FPSCR&), Expected expected) {
  const std::vector<std::uint64_t> corners = cases::corners(reference::half, 2);
  std::uint64_t control = 0;
  const std::uint64_t step = cases::count(patterns) >= patterns ? 3 : 61;
  for (std::uint64_t a = 0; a < patterns && !testing::Test::HasFailure(); a += step) {
    for (const std::uint64_t b : corners) {
      agree(
          {a, b, 0}, agreement::controls_of(control++ * 7 % 16), 0,
          [=](const Operands& ops, FPSCR& w) { return operation(H(ops[0]), H(ops[1]), w); },
          [=](const Operands& ops, const Controls& c) {
            return expected(reference::half, ops[0], ops[1], c);
          });
    }
  }
}

TEST(Half, TwoOperands) {
  compare_binary(FPAdd<H>, reference::add);
  compare_binary(FPMul<H>, reference::multiply);
  compare_binary(FPDiv<H>, reference::divide);
}

TEST(Half, MultiplyAddOnAGrid) {
  const std::vector<std::uint64_t> corners = cases::corners(reference::half, 3);
  std::uint64_t control = 0;
  const std::uint64_t step = cases::count(patterns) >= patterns ? 257 : 5003;
  for (std::uint64_t a = 0; a < patterns && !testing::Test::HasFailure(); a += step) {
    for (const std::uint64_t b : corners) {
      for (const std::uint64_t c : corners)
        agree(
            {a, b, c}, agreement::controls_of(control++ * 7 % 16), 0,
            [](const Operands& ops, FPSCR& w) {
              return FPMulAdd(H(ops[0]), H(ops[1]), H(ops[2]), w);
            },
            [](const Operands& ops, const Controls& controls) {
              return reference::multiply_add(reference::half, ops[0], ops[1], ops[2], controls);
            });
    }
  }
}

}  // namespace
