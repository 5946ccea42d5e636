// Which pages the application may execute. Its text is mapped without the permission, so that an
// escape from the code cache is a fault; this table is what the block builder asks instead.
#pragma once

#include <cstdint>

#include "runtime/core/lock.h"

namespace core {

void allow_execution(uint64_t begin, uint64_t end);
void forbid_execution(uint64_t begin, uint64_t end);
// The end of the executable range that holds `pc`, 0 if there is none.
uint64_t executable_end(uint64_t pc);
// The beginning of the first executable range behind `pc`, which lies in none; all ones if there is
// none.
uint64_t next_executable(uint64_t pc);

// How many of the `size` bytes at `pc` may be executed.
uint64_t executable_size(uint64_t pc, uint64_t size);

// The table's lock, to be held over a fork.
extern Lock code_map_mutex;

}  // namespace core
