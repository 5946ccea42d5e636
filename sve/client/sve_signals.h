// Memory faults: reads that may fail, and what happens to all other faults.
#pragma once

#include <csetjmp>
#include <csignal>

#include "sve/client/exports.h"

// 0 until SVEInitialize has run, then 1.
extern int SVELibInitialized;

extern "C" {

// Where a guarded read of this thread returns to when it faults.
TAVOK_EXPORT extern thread_local sigjmp_buf sveFaultJB;

// 1 while a guarded read of this thread has its access under way, otherwise 0.
TAVOK_EXPORT extern thread_local volatile int SVEFaultRegion;
}

// Installs SVESigHandler for SIGSEGV and SIGBUS, once. Returns 1.
int SVEInitialize();

// Ends a guarded read that faulted. Any other fault is the application's own: prints a message,
// puts the default action back and returns, so that the access faults again and ends the process.
void SVESigHandler(int signal, siginfo_t* info, void* context);

// True if one byte can be read at the address. The memory is only read, and the signal action in
// force before the call is in force after it.
template <class T> bool addr_is_readable(volatile T* address);
