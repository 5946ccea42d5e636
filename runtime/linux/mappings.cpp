#include "runtime/linux/mappings.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <mutex>
#include <sstream>

#include "runtime/core/code_map.h"
#include "runtime/core/ranges.h"
#include "runtime/linux/stack.h"
#include "runtime/linux/syscalls.h"

namespace os {
namespace {

constinit core::RangeSet memory;

struct Line {
  uint64_t begin, end, offset, inode;
  char rights[5], device[16];
  std::string path;
};

bool parse(const std::string& text, Line& line) {
  int path = 0;
  if (std::sscanf(text.c_str(), "%" SCNx64 "-%" SCNx64 " %4s %" SCNx64 " %15s %" SCNu64 " %n",
                  &line.begin, &line.end, line.rights, &line.offset, line.device, &line.inode,
                  &path) != 6) {
    return false;
  }
  line.path = text.substr(static_cast<size_t>(path));
  return true;
}

// What the kernel would call anonymous memory there.
std::string name_of(uint64_t begin, uint64_t end) {
  const StackLayout& stack = stack_layout();
  const core::Range heap = heap_range();
  return begin < stack.end && end > stack.begin ? "[stack]"
         : begin < heap.end && end > heap.begin ? "[heap]"
                                                : "";
}

void append_piece(std::string& to, const Line& line, uint64_t begin, uint64_t end, bool code) {
  const bool file = line.inode != 0;
  const uint64_t offset = file ? line.offset + (begin - line.begin) : 0;
  char head[128];
  const int length = std::snprintf(head, sizeof head,
                                   "%08" PRIx64 "-%08" PRIx64 " %.2s%c%c %08" PRIx64 " %s %" PRIu64,
                                   begin, end, line.rights, code ? 'x' : line.rights[2],
                                   line.rights[3], offset, line.device, line.inode);
  const std::string path = file || !line.path.starts_with('[') ? line.path : "";
  const std::string name = path.empty() ? name_of(begin, end) : path;
  constexpr size_t kNameColumn = 73;
  to.append(head, static_cast<size_t>(length));
  to.append(name.empty() ? 1 : std::max<size_t>(kNameColumn - static_cast<size_t>(length), 1), ' ');
  to.append(name).append("\n");
}

// The part of a line that is the application's, cut where the right to execute changes.
void append_shown(std::string& to, const Line& line) {
  for (auto range = memory.first_behind(line.begin);
       range != memory.ranges.end() && range->begin < line.end; ++range) {
    const uint64_t last = std::min(range->end, line.end);
    for (uint64_t at = std::max(range->begin, line.begin); at < last;) {
      const uint64_t code_end = core::executable_end(at);
      const uint64_t end = std::min(code_end != 0 ? code_end : core::next_executable(at), last);
      append_piece(to, line, at, end, code_end != 0);
      at = end;
    }
  }
}

}  // namespace

constinit core::Lock application_memory_mutex;

void note_application_memory(uint64_t begin, uint64_t end) {
  const core::Change change(application_memory_mutex);
  memory.add(begin, end);
}

void forget_application_memory(uint64_t begin, uint64_t end) {
  const core::Change change(application_memory_mutex);
  if (begin < end) {
    memory.remove(begin, end);
  }
}

std::string shown_maps(const std::string& host) {
  const std::lock_guard lock(application_memory_mutex);
  std::istringstream lines(host);
  std::string shown, text;
  Line line;
  while (std::getline(lines, text)) {
    if (parse(text, line)) {
      append_shown(shown, line);
    }
  }
  return shown;
}

}  // namespace os
