// The place in a signal's context that differs between host processors: the program counter, and
// the one load whose fault a handler may step over.
#pragma once

#include <cstdint>

namespace host {

// Reads the byte at the address with a single load and drops it. If the memory cannot be read, the
// load faults, and step_over_probe in the handler lets the call return.
void probe_byte(const volatile char* address);

// context: the third argument of a signal handler for a synchronous fault. If the fault is that of
// probe_byte's load, moves the program counter behind the load and returns true; otherwise changes
// nothing and returns false.
bool step_over_probe(void* context);

// The address without what loads of this processor ignore and system calls refuse.
inline uintptr_t without_tag(uintptr_t address) {
#if defined(__aarch64__)
  constexpr int tag_bits = 8;
  return static_cast<uintptr_t>(static_cast<intptr_t>(address << tag_bits) >> tag_bits);
#else
  return address;
#endif
}

}  // namespace host
