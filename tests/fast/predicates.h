// The definitions that several tests of predicates share: flags and predicate constraints.
#pragma once

#include "tests/fast/fixture.h"

namespace fixture {

// The record's nzcv after a test of `result` under `mask`, element by element.
inline uint64_t flags_of(uint64_t nzcv, const uint8_t* mask, const uint8_t* result,
                         unsigned width) {
  bool any_active = false, n = false, z = true, c = true;
  for (unsigned i = 0; i < vector_bytes / width; i++) {
    if (!active(mask, width, i))
      continue;
    const bool element = active(result, width, i);
    if (!any_active)
      n = element;
    any_active = true;
    z = z && !element;
    c = !element;
  }
  return (nzcv & ~0xf0000000ull) | (n ? flag_n : 0) | (z ? flag_z : 0) | (c ? flag_c : 0);
}

// A predicate with every bit true.
inline const uint8_t all_true[vector_bytes] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};

// How many elements of so many bytes each predicate constraint names, written out.
inline unsigned constraint(unsigned pattern, unsigned width) {
  // clang-format off
  static constexpr uint8_t counts[4][32] = {
      {16, 1, 2, 3, 4, 5, 6, 7, 8, 16, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 16, 15, 16},
      { 8, 1, 2, 3, 4, 5, 6, 7, 8,  0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,  8,  6,  8},
      { 4, 1, 2, 3, 4, 0, 0, 0, 0,  0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,  4,  3,  4},
      { 2, 1, 2, 0, 0, 0, 0, 0, 0,  0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,  0,  0,  2},
  };
  // clang-format on
  return counts[width == 8 ? 3 : width / 2][pattern];
}

}  // namespace fixture
