// How many elements a predicate constraint names.
#pragma once

namespace fast {

inline constexpr unsigned patterns = 32;

// Elements of a pattern field out of n, a power of two.
constexpr unsigned pattern_count(unsigned pattern, unsigned n) {
  unsigned count = 0;
  if (pattern >= 1 && pattern <= 8)  // VL1 to VL8
    count = pattern;
  else if (pattern >= 9 && pattern <= 13)  // VL16 to VL256
    count = 16u << (pattern - 9);
  else if (pattern == 29)  // MUL4
    count = n - n % 4;
  else if (pattern == 30)  // MUL3
    count = n - n % 3;
  else if (pattern == 31 || pattern == 0)  // ALL, POW2
    count = n;
  return count <= n ? count : 0;
}

// The same for one n, ready made.
struct PatternCounts {
  unsigned char of[patterns];
};
template <unsigned n>
inline constexpr PatternCounts pattern_counts = [] {
  PatternCounts counts{};
  for (unsigned pattern = 0; pattern < patterns; pattern++)
    counts.of[pattern] = static_cast<unsigned char>(pattern_count(pattern, n));
  return counts;
}();

}  // namespace fast
