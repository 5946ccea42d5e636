// Seccomp: filters of the application's own calls are its own affair, and would kill the runtime's.
// So they are not the kernel's: the runtime asks them in front of every call of the application.
// They pass to threads, children, and programs that are executed.
#pragma once

#include <string>

#include "runtime/linux/syscalls.h"

namespace os {

// A filter and those that were there before it. Never changed and never freed.
struct CallFilter;

// Whether the thread may make the call. If not, `result` is what the call returns instead, unless
// the thread or the process has ended.
bool may_call(Thread& thread, const Call& call, int64_t& result);

// Whether `before` is `filters` without the newest ones.
bool begins_with(const CallFilter* filters, const CallFilter* before);

// Filters in a file without a name: its descriptor, or a negative error. And back, which closes it.
int write_filters(const CallFilter* filters);
const CallFilter* read_filters(int fd);

int64_t sys_seccomp(Thread& thread, const Call& call);
// prctl's two ways to it.
int64_t set_seccomp(Thread& thread, uint64_t mode, uint64_t program);
int64_t get_seccomp(const Thread& thread);

}  // namespace os
