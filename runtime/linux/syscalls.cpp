#include "runtime/linux/syscalls.h"

#include <sys/syscall.h>

#include <algorithm>
#include <cerrno>
#include <iterator>

#include "runtime/linux/seccomp.h"

#include "runtime/linux/messages.h"

extern "C" int64_t os_call(core::Context* context, uint64_t number, const uint64_t* arguments);

namespace os {
namespace {

// rseq's abort addresses would be the application's own, where its code never runs.
int64_t sys_missing(Thread&, const Call&) { return -ENOSYS; }

struct Row {
  uint64_t number;
  int64_t (*handler)(Thread&, const Call&);
};

// clang-format off
constexpr Row kRows[] = {
    {SYS_brk, sys_brk},
    {SYS_mmap, sys_mmap},
    {SYS_munmap, sys_munmap},
    {SYS_mremap, sys_mremap},
    {SYS_shmat, sys_shmat},
    {SYS_shmdt, sys_shmdt},
    {SYS_madvise, sys_madvise},
    {SYS_mprotect, sys_mprotect},
    {SYS_pkey_mprotect, sys_mprotect},
    {SYS_readlinkat, sys_readlinkat},
    {SYS_openat, sys_openat},
    {SYS_openat2, sys_openat},
    {SYS_newfstatat, sys_newfstatat},
    {SYS_statx, sys_statx},
    {SYS_close, sys_close},
    {SYS_close_range, sys_close_range},
    {SYS_dup3, sys_dup3},
    {SYS_exit, sys_exit},
    {SYS_exit_group, sys_exit_group},
    {SYS_set_tid_address, sys_set_tid_address},
    {SYS_set_robust_list, sys_set_robust_list},
    {SYS_ptrace, sys_ptrace},
    {SYS_clone, sys_clone},
    {SYS_clone3, sys_clone3},
    {SYS_execve, sys_execve},
    {SYS_execveat, sys_execveat},
    {SYS_chroot, sys_change_root},
    {SYS_pivot_root, sys_change_root},
    {SYS_setns, sys_change_root},
    {SYS_rt_sigaction, sys_rt_sigaction},
    {SYS_rt_sigprocmask, sys_rt_sigprocmask},
    {SYS_rt_sigpending, sys_rt_sigpending},
    {SYS_rt_sigtimedwait, sys_rt_sigtimedwait},
    {SYS_rt_sigreturn, sys_rt_sigreturn},
    {SYS_sigaltstack, sys_sigaltstack},
    {SYS_rt_sigsuspend, sys_wait_with_mask},
    {SYS_ppoll, sys_wait_with_mask},
    {SYS_pselect6, sys_wait_with_mask},
    {SYS_epoll_pwait, sys_wait_with_mask},
    {SYS_epoll_pwait2, sys_wait_with_mask},
    {SYS_prctl, sys_prctl},
    {SYS_seccomp, sys_seccomp},
    {SYS_rseq, sys_missing},
};
// clang-format on

int64_t dispatch(Thread& thread, const Call& call) {
  const auto row = std::find_if(std::begin(kRows), std::end(kRows), [&](const Row& candidate) {
    return candidate.number == call.number;
  });
  return row != std::end(kRows) ? row->handler(thread, call) : pass_on(thread, call);
}

}  // namespace

int64_t pass_on(Thread& thread, const Call& call) {
  return os_call(&thread.context, call.number, call.arguments);
}

void system_call(Thread& thread) {
  core::Context& context = thread.context;
  Call call{context.x[8], {}};
  std::copy_n(context.x, std::size(call.arguments), call.arguments);
  if (keeps_standard_error) [[unlikely]] {
    note_call_while_kept(call.number);
  }
  int64_t result;
  if ((thread.filters == nullptr && !thread.strict) || may_call(thread, call, result)) {
    result = dispatch(thread, call);
  }
  if (result == kNotMade) {
    context.pc -= 4;
  } else if (result != kNoResult) {
    context.x[0] = static_cast<uint64_t>(result);
  }
  if ((context.pending & ~core::kChangesPending) == 0) {
    thread.signals.has_temporary_mask = false;
  }
}

}  // namespace os
