// Which pages the application may execute. Its text is mapped without the permission, so that an
// escape from the code cache is a fault; this table is what the block builder asks instead.
#pragma once

#include <cstdint>

namespace core {

void allow_execution(uint64_t begin, uint64_t end);
void forbid_execution(uint64_t begin, uint64_t end);
// The end of the executable range that holds `pc`, 0 if there is none.
uint64_t executable_end(uint64_t pc);

// How many of the `size` bytes at `pc` may be executed. Fragments will be built from them.
uint64_t note_decoded(uint64_t pc, uint64_t size);
// Whether fragments were or will be built from any byte of [begin, end). If so, the table forgets
// all that were: every thread is going to flush its cache.
bool forget_decoded(uint64_t begin, uint64_t end);

// The table's lock, to be held over a fork.
void lock_code_map();
void unlock_code_map();

}  // namespace core
