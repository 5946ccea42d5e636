// What a client may export beyond the plain interface, for the launcher. Everything is optional:
// bound weakly, null or absent where a client has none of it.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" {

// Switches, off at first: libraries are emulated, too; memory faults are those of a processor with
// SVE.
__attribute__((weak)) extern bool sve_in_libraries;
__attribute__((weak)) extern bool sve_faults_as_hardware;

// The thread's predicates and its first-fault register as Linux lays them out: P0 to P15 and FFR,
// a bit for each byte of a vector, kPredicateBytes in all.
__attribute__((weak)) void sve_save_predicates(void* drcontext, unsigned char* to);
__attribute__((weak)) void sve_load_predicates(void* drcontext, const unsigned char* from);

// What a word of the SVE encoding space is that the client does not emulate: a few words for a
// message, null if it is no instruction.
__attribute__((weak)) const char* sve_describe_word(uint32_t word);
}

namespace os {

inline constexpr size_t kVectorBytes = 16;  // of a Z register: the one length that there is
inline constexpr size_t kPredicateBytes = 17 * kVectorBytes / 8;

}  // namespace os
