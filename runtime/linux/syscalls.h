// The application's system calls. What the runtime need not know reaches the kernel unchanged.
#pragma once

#include <cstdint>

#include "runtime/core/lock.h"
#include "runtime/core/ranges.h"
#include "runtime/linux/thread.h"

namespace os {

struct Call {
  uint64_t number;
  uint64_t arguments[6];
};

// Results beyond those of the kernel: the call was not made and must be made again after a signal,
// or the registers are set already.
inline constexpr int64_t kNotMade = -512;
inline constexpr int64_t kNoResult = -513;

// Executes the call that stands in the context's registers, with the PC behind the SVC.
void system_call(Thread& thread);

// The kernel's answer to `call`, or kNotMade.
int64_t pass_on(Thread& thread, const Call& call);

// By topic: each returns what the application finds in X0, or one of the results above.
int64_t sys_brk(Thread& thread, const Call& call);
int64_t sys_mmap(Thread& thread, const Call& call);
int64_t sys_munmap(Thread& thread, const Call& call);
int64_t sys_mremap(Thread& thread, const Call& call);
int64_t sys_shmat(Thread& thread, const Call& call);
int64_t sys_shmdt(Thread& thread, const Call& call);
int64_t sys_madvise(Thread& thread, const Call& call);
int64_t sys_mprotect(Thread& thread, const Call& call);

int64_t sys_readlinkat(Thread& thread, const Call& call);
int64_t sys_openat(Thread& thread, const Call& call);
int64_t sys_newfstatat(Thread& thread, const Call& call);
int64_t sys_statx(Thread& thread, const Call& call);

int64_t sys_prctl(Thread& thread, const Call& call);

int64_t sys_exit(Thread& thread, const Call& call);
int64_t sys_exit_group(Thread& thread, const Call& call);
int64_t sys_set_tid_address(Thread& thread, const Call& call);
int64_t sys_set_robust_list(Thread& thread, const Call& call);
int64_t sys_clone(Thread& thread, const Call& call);
int64_t sys_ptrace(Thread& thread, const Call& call);
int64_t sys_clone3(Thread& thread, const Call& call);
int64_t sys_execve(Thread& thread, const Call& call);
int64_t sys_execveat(Thread& thread, const Call& call);
int64_t sys_change_root(Thread& thread, const Call& call);

int64_t sys_rt_sigaction(Thread& thread, const Call& call);
int64_t sys_rt_sigprocmask(Thread& thread, const Call& call);
int64_t sys_rt_sigpending(Thread& thread, const Call& call);
int64_t sys_rt_sigtimedwait(Thread& thread, const Call& call);
int64_t sys_rt_sigreturn(Thread& thread, const Call& call);
int64_t sys_sigaltstack(Thread& thread, const Call& call);
// A call that replaces the mask while it waits.
int64_t sys_wait_with_mask(Thread& thread, const Call& call);

// The application's break begins at the next page.
void set_initial_break(uint64_t begin);
// The part of it that is in use, in whole pages. Without its lock: for a text that is out of date
// as soon as it is made.
core::Range heap_range();
// Held while a mapping changes and the tables follow: between the two another thread might map
// something else there, which the tables would then deny.
extern core::Lock mappings_mutex;

}  // namespace os
