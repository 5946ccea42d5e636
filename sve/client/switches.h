// What a runtime or an embedding program may switch on beyond what the library does by itself. All
// are off at first; each is set before the first thread of the application runs, and stays.
#pragma once

#include "sve/client/exports.h"

extern "C" {

// Scope: SVE instructions of all modules are emulated, and each MSR FPCR is followed. Off: those of
// the executable and of code outside all modules.
TAVOK_EXPORT extern bool sve_in_libraries;

// Memory faults are what a processor with SVE makes of them. Off: first-fault loads of the model
// never fault, a SIGBUS in a probe is the application's own, first-fault loads of the fast path
// look at 16 bytes whatever the predicate, and a load that faults may leave elements behind.
TAVOK_EXPORT extern bool sve_faults_as_hardware;
}
