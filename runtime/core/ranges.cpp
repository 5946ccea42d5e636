#include "runtime/core/ranges.h"

#include <algorithm>

namespace core {

std::vector<Range>::iterator RangeSet::first_behind(uint64_t address) {
  return std::upper_bound(ranges.begin(), ranges.end(), address,
                          [](uint64_t at, const Range& range) { return at < range.end; });
}

uint64_t RangeSet::end_of_range(uint64_t address) {
  const auto at = first_behind(address);
  return at != ranges.end() && at->begin <= address ? at->end : 0;
}

std::vector<Range>::iterator RangeSet::remove(uint64_t begin, uint64_t end) {
  auto at = first_behind(begin);
  if (at != ranges.end() && at->begin < begin) {
    const Range behind = {begin, at->end};
    at->end = begin;
    at = ranges.insert(at + 1, behind);
  }
  auto last = at;
  while (last != ranges.end() && last->end <= end) {
    ++last;
  }
  at = ranges.erase(at, last);
  if (at != ranges.end() && at->begin < end) {
    at->begin = end;
  }
  return at;
}

void RangeSet::add(uint64_t begin, uint64_t end) {
  if (begin >= end) {
    return;
  }
  auto at = ranges.insert(remove(begin, end), Range{begin, end});
  if (at + 1 != ranges.end() && (at + 1)->begin == at->end) {
    at->end = (at + 1)->end;
    ranges.erase(at + 1);
  }
  if (at != ranges.begin() && (at - 1)->end == at->begin) {
    (at - 1)->end = at->end;
    ranges.erase(at);
  }
}

}  // namespace core
