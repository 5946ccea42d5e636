#include "runtime/ir/mov_immediate.h"

#include "runtime/ir/encode.h"

namespace ir {
namespace {

constexpr unsigned halfwords = 4;
constexpr unsigned all_ones = 0xffff;

unsigned halfword(std::uint64_t value, unsigned hw) { return value >> (16 * hw) & all_ones; }

unsigned count_halfwords(std::uint64_t value, unsigned wanted) {
  unsigned count = 0;
  for (unsigned hw = 0; hw < halfwords; ++hw) {
    count += halfword(value, hw) == wanted;
  }
  return count;
}

// The one halfword in which a 32-bit value differs from all ones; none if both do.
bool is_movn_w(std::uint64_t value, unsigned& hw) {
  if (value >> 32 != 0) {
    return false;
  }
  hw = halfword(value, 0) == all_ones;
  return halfword(value, hw ^ 1) == all_ones;
}

}  // namespace

unsigned mov_immediate(unsigned rd, std::uint64_t value, std::uint32_t words[mov_immediate_max]) {
  const unsigned zeros = count_halfwords(value, 0);
  const unsigned ones = count_halfwords(value, all_ones);
  unsigned w_form = 0;
  if (zeros < halfwords - 1 && is_movn_w(value, w_form)) {
    words[0] = enc::movn_w(rd, halfword(value, w_form) ^ all_ones, w_form);
    return 1;
  }
  const bool inverted = ones > zeros;
  const unsigned implied = inverted ? all_ones : 0;
  unsigned length = 0;
  for (unsigned hw = 0; hw < halfwords; ++hw) {
    const unsigned part = halfword(value, hw);
    if (part == implied) {
      continue;
    }
    if (length > 0) {
      words[length] = enc::movk(rd, part, hw);
    } else {
      words[length] = inverted ? enc::movn(rd, part ^ all_ones, hw) : enc::movz(rd, part, hw);
    }
    ++length;
  }
  if (length == 0) {
    words[length++] = inverted ? enc::movn(rd, 0) : enc::movz(rd, 0);
  }
  return length;
}

}  // namespace ir
