#include "runtime/core/code_map.h"

#include <algorithm>
#include <mutex>

#include "runtime/core/lock.h"
#include "runtime/core/ranges.h"

namespace core {
namespace {

constinit RangeSet executable;

}  // namespace

constinit Lock code_map_mutex;

void allow_execution(uint64_t begin, uint64_t end) {
  const Change change(code_map_mutex);
  executable.add(begin, end);
}

void forbid_execution(uint64_t begin, uint64_t end) {
  const Change change(code_map_mutex);
  if (begin < end) {
    executable.remove(begin, end);
  }
}

uint64_t executable_end(uint64_t pc) {
  const std::lock_guard lock(code_map_mutex);
  return executable.end_of_range(pc);
}

uint64_t next_executable(uint64_t pc) {
  const std::lock_guard lock(code_map_mutex);
  const auto next = executable.first_behind(pc);
  return next != executable.ranges.end() ? next->begin : ~uint64_t{0};
}

uint64_t executable_size(uint64_t pc, uint64_t size) {
  const std::lock_guard lock(code_map_mutex);
  const uint64_t limit = executable.end_of_range(pc);
  return limit == 0 ? 0 : std::min(size, limit - pc);
}

}  // namespace core
