#include "runtime/core/code_map.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace core {
namespace {

struct Range {
  uint64_t begin, end;
};

constinit std::mutex map_mutex;
// Ascending, disjoint, and not touching each other.
constinit std::vector<Range> ranges;

// The first range that ends behind `address`.
std::vector<Range>::iterator first_behind(uint64_t address) {
  return std::upper_bound(ranges.begin(), ranges.end(), address,
                          [](uint64_t at, const Range& range) { return at < range.end; });
}

// Cuts [begin, end) out of the table and returns where it would stand.
std::vector<Range>::iterator cut(uint64_t begin, uint64_t end) {
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

}  // namespace

void allow_execution(uint64_t begin, uint64_t end) {
  const std::lock_guard lock(map_mutex);
  auto at = ranges.insert(cut(begin, end), Range{begin, end});
  if (at + 1 != ranges.end() && (at + 1)->begin == at->end) {
    at->end = (at + 1)->end;
    ranges.erase(at + 1);
  }
  if (at != ranges.begin() && (at - 1)->end == at->begin) {
    (at - 1)->end = at->end;
    ranges.erase(at);
  }
}

void forbid_execution(uint64_t begin, uint64_t end) {
  const std::lock_guard lock(map_mutex);
  cut(begin, end);
}

uint64_t executable_end(uint64_t pc) {
  const std::lock_guard lock(map_mutex);
  const auto at = first_behind(pc);
  return at != ranges.end() && at->begin <= pc ? at->end : 0;
}

bool any_executable(uint64_t begin, uint64_t end) {
  const std::lock_guard lock(map_mutex);
  const auto at = first_behind(begin);
  return at != ranges.end() && at->begin < end;
}

void lock_code_map() { map_mutex.lock(); }
void unlock_code_map() { map_mutex.unlock(); }

}  // namespace core
