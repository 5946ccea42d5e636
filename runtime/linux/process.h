// The process as a whole.
#pragma once

#include <string>

#include "runtime/linux/thread.h"

namespace os {

// Paths that outlive the start: what /proc/self/exe must show, and the launcher's own file.
struct ProcessPaths {
  std::string application;
  std::string launcher;
};
extern ProcessPaths paths;

// The thread goes on in the application until the process or the thread ends.
[[noreturn]] void run_application(Thread& thread);

// The events of the thread's and the process's end, then the end itself with this status.
[[noreturn]] void exit_process(Thread& thread, int status);

// All threads forget their fragments, and none goes on in an old one when this returns. For a
// change to the application's code in [begin, end).
void code_changed(Thread& thread, uint64_t begin, uint64_t end);

}  // namespace os
