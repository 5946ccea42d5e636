// The assembly between the dispatcher and the code cache; entry.S has the picture.
#pragma once

#include <cstddef>
#include <cstdint>

namespace core {
struct Context;
}

extern "C" {
// Runs the application from `code`, a fragment's head, until it leaves the cache. Returns the
// number of the exit, EXIT_INDIRECT with the target in context->pc, or EXIT_NONE if nothing ran or
// the fault handler sent the thread back.
uint64_t core_enter(core::Context* context, uint64_t code);

// Places for the signal handler and for emitted code: not to be called.
extern const char core_enter_check[], core_enter_end[], core_enter_bail[];
void core_leave();
void core_leave_indirect();

// Copies `size` bytes from or to memory that the application named. Returns the number of bytes
// that could not be copied.
size_t core_copy(void* to, const void* from, size_t size);
extern const char core_copy_begin[], core_copy_end[], core_copy_fault[];
}
