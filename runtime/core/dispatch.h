// Running the application.
#pragma once

#include "runtime/core/context.h"

namespace core {

enum class Event {
  system_call,     // behind an SVC at pc - 4
  interrupted,     // context.pending is set; pc is where the application stands
  code_changed,    // behind an IC IVAU at pc - 4
  not_executable,  // there is no code at pc
};

// Runs the application from context.pc until something needs the operating system's side.
Event run(Context& context);

// The top byte of an address is a tag, which the processor ignores and which it drops when it
// branches.
uint64_t without_tag(uint64_t address);

// Makes the calling thread, which is out of the cache, forget its fragments of [begin, end).
void forget_own_fragments(Context& context, uint64_t begin, uint64_t end);
// Makes another thread do so: it leaves the cache at the end of the fragment that it is in, and
// forgets before it enters again.
void request_forgetting(Context& other, uint64_t begin, uint64_t end);

}  // namespace core
