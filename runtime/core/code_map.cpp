#include "runtime/core/code_map.h"

#include <algorithm>
#include <mutex>
#include <vector>

#include "runtime/core/lock.h"

namespace core {
namespace {

struct Range {
  uint64_t begin, end;
};

// Ascending, disjoint, and not touching each other.
struct RangeSet {
  std::vector<Range> ranges;

  // The first range that ends behind `address`.
  std::vector<Range>::iterator first_behind(uint64_t address) {
    return std::upper_bound(ranges.begin(), ranges.end(), address,
                            [](uint64_t at, const Range& range) { return at < range.end; });
  }
  // Cuts [begin, end) out and returns where it would stand.
  std::vector<Range>::iterator remove(uint64_t begin, uint64_t end);
  void add(uint64_t begin, uint64_t end);
  // The end of the range that holds `address`, 0 if there is none.
  uint64_t end_of_range(uint64_t address) {
    const auto at = first_behind(address);
    return at != ranges.end() && at->begin <= address ? at->end : 0;
  }
};

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

constinit Lock map_mutex;
constinit RangeSet executable;

}  // namespace

void allow_execution(uint64_t begin, uint64_t end) {
  const std::lock_guard lock(map_mutex);
  executable.add(begin, end);
}

void forbid_execution(uint64_t begin, uint64_t end) {
  const std::lock_guard lock(map_mutex);
  if (begin < end) {
    executable.remove(begin, end);
  }
}

uint64_t executable_end(uint64_t pc) {
  const std::lock_guard lock(map_mutex);
  return executable.end_of_range(pc);
}

uint64_t executable_size(uint64_t pc, uint64_t size) {
  const std::lock_guard lock(map_mutex);
  const uint64_t limit = executable.end_of_range(pc);
  return limit == 0 ? 0 : std::min(size, limit - pc);
}

void lock_code_map() { map_mutex.lock(); }
void unlock_code_map() { map_mutex.unlock(); }

}  // namespace core
