// Running one operation of the library and of the reference over the same cases.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "sve/fp/format.h"
#include "tests/fp/cases.h"
#include "tests/fp/reference.h"

namespace agreement {

inline constexpr std::uint64_t default_cases = 50000;
inline constexpr int tolerated_reports = 5;

// What else a word may hold: other bits of FPCR and FPSR, and flags raised earlier.
inline constexpr std::uint32_t other_bits = 0xf8071f60;
inline constexpr std::uint32_t flag_bits = 0x9f;

/// Operands of one case. Those beyond the arity are random: operations draw their further
/// arguments from them.
using Operands = std::array<std::uint64_t, 3>;

/// Runs both sides on one case. The word must keep what was in it, and gain the flags.
template <typename Library, typename Expected>
bool agree(const Operands& ops, const reference::Controls& c, std::uint32_t rest, Library library,
           Expected expected) {
  const FPSCR before = c.word() | (rest & (other_bits | flag_bits));
  FPSCR word = before;
  const std::uint64_t bits = library(ops, word);
  const reference::Outcome got{bits, word};
  const reference::Outcome plain = expected(ops, c);
  const reference::Outcome want{plain.bits, plain.flags | before};
  if (got == want)
    return true;
  ADD_FAILURE() << cases::describe(before, {ops[0], ops[1], ops[2]}, got, want);
  return false;
}

/// The controls of index 0 to 15: rounding mode, flushing, default NaN.
inline reference::Controls controls_of(std::uint64_t index) {
  const bool flush = index & 4;
  return {static_cast<int>(index & 3), flush, flush, (index & 8) != 0, false};
}

/// Every combination of corners under every control, or, if that is more than four times the
/// number of random cases, combinations spread evenly over it.
template <typename T, typename Library, typename Expected>
void compare_corners(int arity, Library library, Expected expected) {
  cases::Source source(reference::format_of<T>());
  const std::vector<std::uint64_t> corners = cases::corners(reference::format_of<T>(), arity);
  std::uint64_t combinations = 16;
  for (int i = 0; i < arity; ++i)
    combinations *= corners.size();
  const std::uint64_t stride =
      std::max<std::uint64_t>(1, combinations / (4 * cases::count(default_cases))) | 1;
  int failures = 0;
  for (std::uint64_t i = 0; i < combinations && failures < tolerated_reports; i += stride) {
    Operands ops;
    std::uint64_t index = i / 16;
    for (int n = 0; n < 3; ++n) {
      ops[static_cast<std::size_t>(n)] =
          n < arity ? corners[index % corners.size()] : source.random();
      index /= corners.size();
    }
    failures += !agree(ops, controls_of(i % 16), 0, library, expected);
  }
}

/// Random operands. Now and then the first is next to a product of the others or of one with
/// itself, negated or not: sums that cancel, quotients and roots that are exact or nearly so.
template <typename T> Operands draw(cases::Source& source, int arity) {
  const reference::Format f = reference::format_of<T>();
  Operands ops;
  for (int n = 2; n >= 0; --n) {
    std::uint64_t& op = ops[static_cast<std::size_t>(n)];
    op = n >= arity ? source.random() : n == 2 ? source.operand() : source.operand_beside(ops[2]);
  }
  const std::uint64_t kind = source.below(8);
  if (kind <= 1) {
    const std::uint64_t a = arity > 1 ? ops[1] : source.operand();
    const std::uint64_t b = arity == 1 || kind == 0 ? a : arity > 2 ? ops[2] : source.operand();
    const std::uint64_t product = reference::multiply(f, a, b, {}).bits;
    ops[0] = (product + source.below(3) - 1) & (f.sign() - 1);
    ops[0] |= source.below(2) ? f.sign() : 0;
  }
  return ops;
}

template <typename T, typename Library, typename Expected>
void compare_random(int arity, Library library, Expected expected) {
  cases::Source source(reference::format_of<T>());
  int failures = 0;
  for (std::uint64_t i = cases::count(default_cases); i > 0 && failures < tolerated_reports; --i) {
    const Operands ops = draw<T>(source, arity);
    const auto rest = static_cast<std::uint32_t>(source.random());
    failures += !agree(ops, source.controls(), i & 1 ? rest : 0, library, expected);
  }
}

/// Corners and random cases of an operation whose first `arity` operands are of the format of T.
template <typename T, typename Library, typename Expected>
void compare(int arity, Library library, Expected expected) {
  compare_corners<T>(arity, library, expected);
  compare_random<T>(arity, library, expected);
}

/// Random cases of an operation on one integer.
template <typename T, typename Library, typename Expected>
void compare_integers(Library library, Expected expected) {
  cases::Source source(reference::format_of<T>());
  int failures = 0;
  for (std::uint64_t i = cases::count(default_cases); i > 0 && failures < tolerated_reports; --i) {
    const Operands ops = {source.integer(), source.random(), source.random()};
    failures += !agree(ops, source.controls(), 0, library, expected);
  }
}

}  // namespace agreement
