#include "runtime/ir/mov_immediate.h"

#include <algorithm>

#include "runtime/ir/encode.h"

namespace ir {
namespace {

constexpr unsigned halfwords = 4;

unsigned halfword(std::uint64_t value, unsigned hw) { return value >> (16 * hw) & 0xffff; }

// The first instruction of a sequence: what it leaves in the halfwords that it does not name, and
// how many of them, from the lowest up, it can name.
struct seed {
  std::uint32_t (*encode)(unsigned rd, unsigned imm, unsigned hw);
  std::uint64_t implied;
  unsigned reach;
  bool inverted;
};

constexpr seed seeds[] = {
    {enc::movz, 0, 4, false},
    {enc::movn, ~std::uint64_t{0}, 4, true},
    {enc::movn_w, 0xffffffff, 2, true},
};

unsigned write(const seed& first, unsigned rd, std::uint64_t value, std::uint32_t* words) {
  unsigned length = 0;
  for (unsigned hw = 0; hw < halfwords; ++hw) {
    const unsigned part = halfword(value, hw);
    if (part == halfword(first.implied, hw)) {
      continue;
    }
    if (length == 0) {
      const bool reached = hw < first.reach;
      const unsigned imm = reached ? halfword(first.inverted ? ~value : value, hw) : 0;
      words[length++] = first.encode(rd, imm, reached ? hw : 0);
      if (reached) {
        continue;
      }
    }
    words[length++] = enc::movk(rd, part, hw);
  }
  if (length == 0) {
    words[length++] = first.encode(rd, 0, 0);
  }
  return length;
}

}  // namespace

unsigned mov_immediate(unsigned rd, std::uint64_t value, std::uint32_t words[mov_immediate_max]) {
  constexpr std::uint64_t halfword_limit = 0x10000;
  if (value < halfword_limit) {
    words[0] = enc::movz(rd, static_cast<unsigned>(value), 0);
    return 1;
  }
  unsigned shortest = mov_immediate_max + 1;
  for (const seed& first : seeds) {
    std::uint32_t candidate[mov_immediate_max];
    const unsigned length = write(first, rd, value, candidate);
    if (length < shortest) {
      shortest = length;
      std::copy_n(candidate, length, words);
    }
  }
  return shortest;
}

}  // namespace ir
