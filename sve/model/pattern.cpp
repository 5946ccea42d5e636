#include <bit>

#include "sve/model/predicate.h"

uint32_t VecTrueILength(uint64_t pattern, int elements) {
  enum : uint64_t {
    pow2 = 0,
    vl1 = 1,
    vl8 = 8,
    vl16 = 9,
    vl256 = 13,
    mul4 = 29,
    mul3 = 30,
    all = 31
  };
  const auto n = static_cast<uint32_t>(elements);
  if (pattern == pow2)
    return n == 0 ? 1 : std::bit_floor(n);
  if (pattern >= vl1 && pattern <= vl256) {
    const uint64_t count = pattern <= vl8 ? pattern : 16ull << (pattern - vl16);
    return count <= n ? static_cast<uint32_t>(count) : 0;
  }
  switch (pattern) {
  case mul4:
    return n - n % 4;
  case mul3:
    return n - n % 3;
  case all:
    return n;
  default:
    return 0;
  }
}
