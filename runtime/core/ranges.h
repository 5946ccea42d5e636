// A set of addresses as ranges.
#pragma once

#include <cstdint>
#include <vector>

namespace core {

struct Range {
  uint64_t begin, end;
};

// Ascending, disjoint, and not touching each other. Nothing here locks.
struct RangeSet {
  std::vector<Range> ranges;

  void add(uint64_t begin, uint64_t end);
  // Cuts [begin, end) out and returns where it would stand.
  std::vector<Range>::iterator remove(uint64_t begin, uint64_t end);
  // The first range that ends behind `address`.
  std::vector<Range>::iterator first_behind(uint64_t address);
  // The end of the range that holds `address`, 0 if there is none.
  uint64_t end_of_range(uint64_t address);
};

}  // namespace core
