// The threads' records, listed for a debugger: it finds the one of the thread that it stopped by
// reading memory alone, whatever the runtime is and wherever the thread stands.
#pragma once

#include <cstddef>

#include "sve/state/cpu_state.h"

// tools/gdb reads entries by these places.
struct sve_thread {
  sve_thread* next;
  cpu_state* record;
  long id;  // the kernel's
};
static_assert(offsetof(sve_thread, record) == 8 && offsetof(sve_thread, id) == 16);

// In no particular order. A plain name, so that no debug information is needed to find it.
extern "C" sve_thread* sve_threads;

// The calling thread's record begins and ends to exist.
void list_thread_record(cpu_state* record);
void unlist_thread_record(const cpu_state* record);

// Keeps the list true in the child of a fork, where only the forking thread is left. Once.
void keep_thread_records_over_fork();
