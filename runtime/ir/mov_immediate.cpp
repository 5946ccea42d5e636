#include "runtime/ir/mov_immediate.h"

#include <bit>

#include "runtime/ir/encode.h"

namespace ir {
namespace {

constexpr unsigned halfwords = 4;

unsigned halfword(std::uint64_t value, unsigned hw) { return value >> (16 * hw) & 0xffff; }

// The first instruction of a sequence: what it leaves in the halfwords that it does not name, and
// the bits that it can name.
struct seed {
  std::uint32_t (*encode)(unsigned rd, unsigned imm, unsigned hw);
  std::uint64_t implied;
  std::uint64_t reach;
  bool inverted;
};

constexpr std::uint64_t low_word = 0xffffffff;
constexpr seed seeds[] = {
    {enc::movz, 0, ~std::uint64_t{0}, false},
    {enc::movn, ~std::uint64_t{0}, ~std::uint64_t{0}, true},
    {enc::movn_w, low_word, low_word, true},
};

// How many halfwords are not zero: their bits are gathered in the lowest ones, and those added up.
unsigned count_halfwords(std::uint64_t value) {
  constexpr std::uint64_t lowest = 0x0001000100010001;
  value |= value >> 8;
  value |= value >> 4;
  value |= value >> 2;
  value |= value >> 1;
  return static_cast<unsigned>((value & lowest) * lowest >> 48);
}

// One instruction for each halfword that is not as implied, and one to begin with if that can be
// none of them.
unsigned length_of(const seed& first, std::uint64_t value) {
  const std::uint64_t differing = value ^ first.implied;
  return count_halfwords(differing) + ((differing & first.reach) == 0 ? 1 : 0);
}

void write(const seed& first, unsigned rd, std::uint64_t value, std::uint32_t* words) {
  const std::uint64_t differing = value ^ first.implied;
  const std::uint64_t nameable = differing & first.reach;
  const unsigned named = nameable == 0 ? 0 : static_cast<unsigned>(std::countr_zero(nameable)) / 16;
  *words++ = first.encode(rd, halfword(first.inverted ? ~value : value, named), named);
  for (unsigned hw = 0; hw < halfwords; ++hw) {
    if ((hw != named || nameable == 0) && halfword(differing, hw) != 0) {
      *words++ = enc::movk(rd, halfword(value, hw), hw);
    }
  }
}

}  // namespace

unsigned mov_immediate(unsigned rd, std::uint64_t value, std::uint32_t words[mov_immediate_max]) {
  constexpr std::uint64_t halfword_limit = 0x10000;
  if (value < halfword_limit) {
    words[0] = enc::movz(rd, static_cast<unsigned>(value), 0);
    return 1;
  }
  const seed* shortest = nullptr;
  unsigned length = mov_immediate_max + 1;
  for (const seed& first : seeds) {
    if (const unsigned own = length_of(first, value); own < length) {
      length = own;
      shortest = &first;
    }
  }
  write(*shortest, rd, value, words);
  return length;
}

}  // namespace ir
