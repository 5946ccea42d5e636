// Memory: the emulated break, and the tables that follow the application's mappings.
#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/shm.h>
#include <sys/syscall.h>

#include <algorithm>
#include <mutex>
#include <vector>

#include "runtime/core/code_map.h"
#include "runtime/core/lock.h"
#include "runtime/core/ranges.h"
#include "runtime/linux/mappings.h"
#include "runtime/linux/modules.h"
#include "runtime/linux/pages.h"
#include "runtime/linux/process.h"
#include "runtime/linux/syscalls.h"

namespace os {
namespace {

// No machine has as much, and a simulator that is asked for it finds no place any more.
constexpr uint64_t kMostBreak = uint64_t{1} << 40;

struct Break {
  uint64_t begin, current;
};
constinit Break program_break = {};

void* at(uint64_t address) { return reinterpret_cast<void*>(address); }

bool failed(int64_t result) { return result < 0 && result > -4096; }

// The kernel's protection for the application's wish: its code is read, never executed in place.
uint64_t without_execution(uint64_t protection) {
  const bool code = (protection & PROT_EXEC) != 0;
  return (protection & ~uint64_t{PROT_EXEC}) | (code ? PROT_READ : 0);
}

bool map_exactly(uint64_t begin, uint64_t size) {
  // By a hint: a simulator may refuse free memory to MAP_FIXED_NOREPLACE.
  void* const got =
      mmap(at(begin), size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (got != MAP_FAILED && got != at(begin)) {
    munmap(got, size);
  }
  return got == at(begin);
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

// Like the kernel's own break: what lies behind it belongs to nobody, and may stop it.
bool set_break(Thread& thread, uint64_t wanted) {
  const uint64_t old_end = page_ceiling(program_break.current);
  const uint64_t new_end = page_ceiling(wanted);
  if (new_end < old_end) {
    forget_application_memory(new_end, old_end);
    note_change(thread, new_end, old_end - new_end, false);
    return munmap(at(new_end), old_end - new_end) == 0;
  }
  if (new_end > old_end && !map_exactly(old_end, new_end - old_end)) {
    return false;
  }
  note_application_memory(old_end, new_end);
  return true;
}

// Shared memory is given back by its address alone.
std::vector<core::Range> attached;

}  // namespace

constinit core::Lock mappings_mutex;

void set_initial_break(uint64_t begin) {
  program_break.begin = page_ceiling(begin);
  program_break.current = program_break.begin;
}

core::Range heap_range() { return {program_break.begin, page_ceiling(program_break.current)}; }

int64_t sys_brk(Thread& thread, const Call& call) {
  const std::lock_guard lock(mappings_mutex);
  const uint64_t wanted = call.arguments[0];
  if (wanted >= program_break.begin && wanted - program_break.begin <= kMostBreak &&
      set_break(thread, wanted)) {
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

int64_t sys_shmat(Thread& thread, const Call& call) {
  const std::lock_guard lock(mappings_mutex);
  const bool executable = (call.arguments[2] & SHM_EXEC) != 0;
  Call changed = call;
  changed.arguments[2] &= ~uint64_t{SHM_EXEC};
  const int64_t result = pass_on(thread, changed);
  shmid_ds status;
  if (!failed(result) && result != kNotMade &&
      shmctl(static_cast<int>(call.arguments[0]), IPC_STAT, &status) == 0) {
    const auto begin = static_cast<uint64_t>(result);
    const uint64_t end = begin + page_ceiling(status.shm_segsz);
    note_application_memory(begin, end);
    note_change(thread, begin, end - begin, executable);
    attached.push_back({begin, end});
  }
  return result;
}

int64_t sys_shmdt(Thread& thread, const Call& call) {
  const std::lock_guard lock(mappings_mutex);
  const int64_t result = pass_on(thread, call);
  const auto found = std::ranges::find(attached, call.arguments[0], &core::Range::begin);
  if (result == 0 && found != attached.end()) {
    forget_application_memory(found->begin, found->end);
    note_change(thread, found->begin, found->end - found->begin, false);
    attached.erase(found);
  }
  return result;
}

// Advice that throws the contents away.
int64_t sys_madvise(Thread& thread, const Call& call) {
  constexpr uint64_t kDontNeedLocked = 24;
  const int64_t result = pass_on(thread, call);
  const uint64_t begin = call.arguments[0], end = begin + page_ceiling(call.arguments[1]);
  switch (call.arguments[2]) {
  case MADV_DONTNEED:
  case MADV_REMOVE:
  case kDontNeedLocked:
    code_written(thread, begin, end);
    break;
  case MADV_FREE:
    mapping_changed(thread, begin, end);
    break;
  default:
    break;
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
