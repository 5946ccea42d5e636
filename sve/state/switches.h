// What a runtime or an embedding program may switch on beyond what the library does by itself. All
// are off at first; each is set before the first thread of the application runs, and stays.
#pragma once

#include <cstdint>

#include "sve/state/exports.h"

extern "C" {

// Scope: SVE instructions of all modules are emulated, and each MSR FPCR is followed. Off: those of
// the executable and of code outside all modules.
TAVOK_EXPORT extern bool sve_in_libraries;

// Memory faults are what a processor with SVE makes of them. Off: first-fault loads of the model
// never fault, a SIGBUS in a probe is the application's own, first-fault loads of the fast path
// look at 16 bytes whatever the predicate, and a load that faults may leave elements behind.
TAVOK_EXPORT extern bool sve_faults_as_hardware;
}

// What a runtime needs that shows SVE to the application, for signal frames: the predicates of the
// thread of a drcontext and its first-fault register, as Linux lays them out: P0 to P15 and FFR, 16
// bits each, a bit for each byte of a vector.
extern "C" {
void sve_save_predicates(void* drcontext, unsigned char* to);
void sve_load_predicates(void* drcontext, const unsigned char* from);

// What a word of the SVE encoding space is, in a few words for a message: "SVE" if it is emulated,
// else the extension and the class of instructions; null if it is none that is known.
const char* sve_describe_word(uint32_t word);
}
