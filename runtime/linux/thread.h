// One thread of the application: its registers and what the kernel would know of it.
#pragma once

#include <csignal>
#include <cstdint>

#include "runtime/core/context.h"

namespace os {

// Bits of core::Context::pending.
inline constexpr uint64_t kSignalPending = 2;  // signals.waiting has an entry
inline constexpr uint64_t kFaultPending = 4;   // signals.fault waits to be delivered

inline constexpr unsigned kMostWaiting = 8;

struct ActionTable;
struct CallFilter;

struct ThreadSignals {
  ActionTable* actions;     // the process's, or a vfork child's own
  uint64_t mask;            // as the application sees it
  uint64_t temporary_mask;  // in force during a call such as rt_sigsuspend
  bool has_temporary_mask;
  stack_t alternate;  // the application's
  // Signals that arrived and wait to be delivered, in order. One is the rule, since the first
  // blocks all others but traps; but a client that jumps out of its fault handler opens the mask
  // again.
  siginfo_t waiting[kMostWaiting];
  unsigned waiting_count;
  siginfo_t fault;
  uint64_t fault_syndrome;  // the kernel's ESR for `fault`, 0 if it told none
  uint64_t fault_tag;       // the uppermost byte of its address, which most handlers do not see
  siginfo_t held;           // a SIGSEGV or SIGBUS that was sent while the application blocks it
  bool has_held;
  void* handler_stack;  // the runtime's own alternate stack
};

struct Thread {
  core::Context context;  // first: a drcontext is a Thread
  ThreadSignals signals;
  uint64_t clear_tid;         // emulated CLONE_CHILD_CLEARTID
  uint64_t robust_list;       // as set_robust_list gave it
  const CallFilter* filters;  // of seccomp, null: none
  Thread* next;               // in the list of all threads
  int id;
  bool keeps_vector_length;  // PR_SVE_VL_INHERIT
  bool strict;               // seccomp's strict mode
  bool main;                 // the one that the kernel started: it cannot end by returning
  bool exiting;              // run_application shall return
  bool vfork_child;          // runs in the memory of a parent that waits
};

inline Thread& thread_of(core::Context& context) { return reinterpret_cast<Thread&>(context); }
// The calling thread, null before it has a context.
inline Thread* current_thread() { return reinterpret_cast<Thread*>(core::current_context()); }

}  // namespace os
