// The beginning and the end of the application's threads.
#pragma once

#include "runtime/linux/thread.h"

namespace os {

// The arguments of clone and clone3 in one form.
struct CloneArguments {
  uint64_t flags;  // without the signal
  int exit_signal;
  uint64_t stack;       // the child's SP, 0: the parent's
  uint64_t parent_tid;  // addresses
  uint64_t child_tid;
  uint64_t tls;
  uint64_t pidfd;
};

// Each returns what the parent's call returns, or kNotMade.
int64_t create_thread(Thread& parent, const CloneArguments& arguments);
int64_t create_process(Thread& parent, const CloneArguments& arguments);
// A process that runs in the parent's memory beside it.
int64_t create_companion(Thread& parent, const CloneArguments& arguments);

// The child's registers and masks: the parent's, but for what clone changes.
void inherit(const Thread& parent, const CloneArguments& arguments, Thread& child);
// Before the thread's own code can run, and by the thread: glibc names the same word for both, and
// a late write by the parent would undo the clearing at the thread's end.
void write_ids(const CloneArguments& arguments, int id);

// Writes a number where the application asked for it. False, and nothing written, if it cannot be.
bool write_word(uint64_t address, int value);

// What the kernel does at a thread's end: robust mutexes are released, and whoever waits for the
// thread learns of it.
void tell_thread_end(Thread& thread);

}  // namespace os
