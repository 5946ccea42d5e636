// Memory faults: reads that may fail, and what happens to all other faults.
//
// All of it is safe with any number of threads: what a read in progress needs to know is the
// thread's own, and no read changes the process's signal actions.
#pragma once

#include <csetjmp>
#include <csignal>
#include <cstdint>

#include "sve/state/exports.h"

// A handler may run on a thread that has touched neither variable yet, and must not be the one that
// allocates them: hence a fixed place in the thread's block, also in the shared library.
#define TAVOK_SIGNAL_SAFE_TLS __attribute__((tls_model("initial-exec")))

extern "C" {

// Where a guarded read of this thread returns to when it faults.
TAVOK_EXPORT TAVOK_SIGNAL_SAFE_TLS extern constinit thread_local sigjmp_buf sveFaultJB;

// 1 while a guarded read of this thread has its access under way, otherwise 0.
TAVOK_EXPORT TAVOK_SIGNAL_SAFE_TLS extern constinit thread_local volatile int SVEFaultRegion;
}

// Installs SVESigHandler for SIGSEGV and SIGBUS.
void install_fault_handler();

// Ends a guarded read that faulted, and steps over a probe that raised SIGSEGV, or SIGBUS with
// sve_faults_as_hardware. Any other fault is the application's own: prints a message, puts the
// default action back and returns, so that the access faults again and ends the process.
void SVESigHandler(int signal, siginfo_t* info, void* context);

// True if one byte can be read at the address. The memory is only read, and the signal action in
// force before the call is in force during and after it. Memory that raises SIGBUS counts as
// unreadable with sve_faults_as_hardware, and where SVESigHandler is not in force; otherwise a
// SIGBUS of the read is an ordinary fault.
template <class T> bool addr_is_readable(volatile T* address);
template <> bool addr_is_readable<char>(volatile char* address);

// Reads a T (uint8_t to uint64_t, any alignment) at the address. If it cannot be read, stores true
// to *fault and returns 0; *fault is never cleared. With a null fault the read is a plain load.
template <class T> T guarded_read(uint64_t address, bool* fault);
extern template uint8_t guarded_read(uint64_t, bool*);
extern template uint16_t guarded_read(uint64_t, bool*);
extern template uint32_t guarded_read(uint64_t, bool*);
extern template uint64_t guarded_read(uint64_t, bool*);
