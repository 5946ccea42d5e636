// Memory: the emulated break, and the tables that follow the application's mappings.
#include <sys/mman.h>
#include <sys/syscall.h>

#include <algorithm>
#include <mutex>

#include "runtime/core/code_map.h"
#include "runtime/core/lock.h"
#include "runtime/linux/mappings.h"
#include "runtime/linux/modules.h"
#include "runtime/linux/pages.h"
#include "runtime/linux/process.h"
#include "runtime/linux/syscalls.h"

namespace os {
namespace {

// Behind it malloc goes over to mmap.
constexpr uint64_t kBreakRoom = 256U << 20;

struct Break {
  uint64_t begin, current, limit;
};
constinit Break program_break = {};

void* at(uint64_t address) { return reinterpret_cast<void*>(address); }

bool failed(int64_t result) { return result < 0 && result > -4096; }

// The kernel's protection for the application's wish: its code is read, never executed in place.
uint64_t without_execution(uint64_t protection) {
  const bool code = (protection & PROT_EXEC) != 0;
  return (protection & ~uint64_t{PROT_EXEC}) | (code ? PROT_READ : 0);
}

// What the tables must know when [begin, begin + size) becomes a new mapping or none.
void note_change(Thread& thread, uint64_t begin, uint64_t size, bool executable) {
  const uint64_t end = begin + page_ceiling(size);
  // Forbidden first: what another thread decodes behind the flush would stay.
  if (!executable) {
    core::forbid_execution(begin, end);
  }
  mapping_changed(thread, begin, end);
  if (executable) {
    core::allow_execution(begin, end);
  }
}

bool set_break(uint64_t wanted) {
  const uint64_t old_end = page_ceiling(program_break.current);
  const uint64_t new_end = page_ceiling(wanted);
  if (new_end > old_end) {
    note_application_memory(old_end, new_end);
    return mprotect(at(old_end), new_end - old_end, PROT_READ | PROT_WRITE) == 0;
  }
  forget_application_memory(new_end, old_end);
  // Mapped anew, so that memory that comes back later is zero.
  return new_end == old_end ||
         mmap(at(new_end), old_end - new_end, PROT_NONE,
              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_FIXED, -1, 0) != MAP_FAILED;
}

}  // namespace

constinit core::Lock mappings_mutex, break_mutex;

void set_initial_break(uint64_t begin) {
  const uint64_t start = page_ceiling(begin);
  void* got = mmap(at(start), kBreakRoom, PROT_NONE,
                   MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_FIXED_NOREPLACE, -1, 0);
  if (got != MAP_FAILED && got != at(start)) {
    munmap(got, kBreakRoom);
    got = MAP_FAILED;
  }
  program_break.begin = start;
  program_break.current = start;
  program_break.limit = got == MAP_FAILED ? start : start + kBreakRoom;
}

core::Range heap_range() { return {program_break.begin, page_ceiling(program_break.current)}; }

int64_t sys_brk(Thread&, const Call& call) {
  const std::lock_guard lock(break_mutex);
  const uint64_t wanted = call.arguments[0];
  if (wanted >= program_break.begin && wanted <= program_break.limit && set_break(wanted)) {
    program_break.current = wanted;
  }
  return static_cast<int64_t>(program_break.current);
}

int64_t sys_mmap(Thread& thread, const Call& call) {
  const std::lock_guard lock(mappings_mutex);
  const uint64_t size = call.arguments[1];
  const uint64_t protection = call.arguments[2];
  const uint64_t flags = call.arguments[3];
  Call changed = call;
  changed.arguments[2] = without_execution(protection);
  const int64_t result = pass_on(thread, changed);
  if (failed(result) || result == kNotMade) {
    return result;
  }
  const auto begin = static_cast<uint64_t>(result);
  note_application_memory(begin, begin + page_ceiling(size));
  note_change(thread, begin, size, (protection & PROT_EXEC) != 0);
  if ((flags & MAP_ANONYMOUS) == 0 && call.arguments[5] == 0) {
    forget_modules(begin, begin + size);
    note_file_mapping(begin, size, static_cast<int>(call.arguments[4]));
  }
  return result;
}

int64_t sys_munmap(Thread& thread, const Call& call) {
  const std::lock_guard lock(mappings_mutex);
  const int64_t result = pass_on(thread, call);
  if (result == 0) {
    forget_application_memory(call.arguments[0],
                              call.arguments[0] + page_ceiling(call.arguments[1]));
    note_change(thread, call.arguments[0], call.arguments[1], false);
    forget_modules(call.arguments[0], call.arguments[0] + call.arguments[1]);
  }
  return result;
}

int64_t sys_mremap(Thread& thread, const Call& call) {
  const std::lock_guard lock(mappings_mutex);
  const uint64_t old_begin = call.arguments[0];
  const uint64_t old_size = call.arguments[1];
  const bool executable = core::executable_end(old_begin) != 0;
  const int64_t result = pass_on(thread, call);
  if (!failed(result) && result != kNotMade) {
    const auto new_begin = static_cast<uint64_t>(result);
    const uint64_t old_bytes = page_ceiling(old_size), bytes = page_ceiling(call.arguments[2]);
    // What stays in its place may be running.
    if ((call.arguments[3] & MREMAP_DONTUNMAP) == 0) {
      forget_application_memory(old_begin, old_begin + old_bytes);
    }
    note_application_memory(new_begin, new_begin + bytes);
    const uint64_t kept = new_begin == old_begin ? std::min(old_bytes, bytes) : 0;
    note_change(thread, old_begin + kept, old_bytes - kept, false);
    note_change(thread, new_begin + kept, bytes - kept, executable);
  }
  return result;
}

int64_t sys_mprotect(Thread& thread, const Call& call) {
  const std::lock_guard lock(mappings_mutex);
  Call changed = call;
  changed.arguments[2] = without_execution(call.arguments[2]);
  const int64_t result = pass_on(thread, changed);
  const uint64_t begin = call.arguments[0], size = call.arguments[1];
  if (result == 0 && (call.arguments[2] & PROT_EXEC) == 0) {
    note_change(thread, begin, size, false);
  } else if (result == 0) {
    // What was decoded there holds on if it stands there still: some programs let their code be
    // written, and back, all the time.
    code_written(thread, begin, begin + page_ceiling(size));
    core::allow_execution(begin, begin + page_ceiling(size));
  }
  return result;
}

}  // namespace os
