// The process as a whole, and its threads.
#pragma once

#include <string>

#include "runtime/linux/options.h"
#include "runtime/linux/thread.h"

namespace os {

// Paths that outlive the start: what /proc/self/exe must show, and the launcher's own file.
struct ProcessPaths {
  std::string application;
  std::string launcher;
  int launcher_fd = -1;  // its descriptor, where its path may lead elsewhere
};
extern ProcessPaths paths;
// What the command line and the environment asked for.
extern Options options;

// Whether the path is the link to this process's executable, which shows the launcher.
bool is_own_executable(const char* path);

// openat beyond the process's own limit of descriptors, if that can be had: the kernel's exec needs
// none.
int open_anyway(int directory, const char* path, int flags);

// A thread without registers, in the list of all threads.
Thread* new_thread();
// Takes the thread out of the list and frees it and all that it owns.
void delete_thread(Thread* thread);
// Counts a thread out that ends or never began; whether it was the last one.
bool leave_process();
// The thread of this number, null if it is none of the application's.
Thread* find_thread(int id);
// Whether there are other threads.
bool is_one_of_many();
// Gives all threads these filters, which begin with the thread's own. If one has others it stays as
// it is, and so do all: returns its id, else 0.
int give_filters_to_all(Thread& thread, const CallFilter* filters);
// After a fork only the calling thread is left.
void keep_only(Thread& thread);

// Makes `thread` the calling thread's: its context, its signal stack, the client's event.
void begin_thread(Thread& thread);

// The thread goes on in the application until the thread ends.
void run_application(Thread& thread);

// The events of the thread's and the process's end, then the end itself with this status.
[[noreturn]] void exit_process(Thread& thread, int status);

// If code of the application in [begin, end) was decoded, all threads forget their fragments, and
// none goes on in an old one when this returns. code_written: only if it is not what it was.
void mapping_changed(Thread& thread, uint64_t begin, uint64_t end);
void code_written(Thread& thread, uint64_t begin, uint64_t end);

void forget_everything(Thread& thread);

// All locks of the runtime, to be held over a fork.
void lock_runtime();
void unlock_runtime();
// What a vfork child that ran as `thread` held when it was killed is released, and what it left
// half done made anew. Returns whether all threads have to forget their fragments.
bool take_over(Thread& thread);

}  // namespace os
