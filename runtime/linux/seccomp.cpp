#include "runtime/linux/seccomp.h"

#include <linux/audit.h>
#include <linux/capability.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <iterator>
#include <vector>

#include "runtime/core/entry.h"
#include "runtime/linux/filter.h"
#include "runtime/linux/process.h"
#include "runtime/linux/signals.h"

namespace os {

struct CallFilter {
  std::vector<sock_filter> program;
  const CallFilter* before;
};

namespace {

constexpr int kOfSeccomp = 1;  // SYS_SECCOMP, which not every header has
constexpr uint64_t kKnownFlags = SECCOMP_FILTER_FLAG_TSYNC | SECCOMP_FILTER_FLAG_LOG |
                                 SECCOMP_FILTER_FLAG_SPEC_ALLOW | SECCOMP_FILTER_FLAG_TSYNC_ESRCH;
constexpr uint32_t kActions[] = {
    SECCOMP_RET_KILL_PROCESS, SECCOMP_RET_KILL_THREAD, SECCOMP_RET_TRAP, SECCOMP_RET_ERRNO,
    SECCOMP_RET_TRACE,        SECCOMP_RET_LOG,         SECCOMP_RET_ALLOW};

// The most severe answer, and of those the newest filter's.
uint32_t ask(const CallFilter* filters, const seccomp_data& data) {
  const auto severity = [](uint32_t answer) {
    return static_cast<int32_t>(answer & SECCOMP_RET_ACTION_FULL);
  };
  uint32_t answer = SECCOMP_RET_ALLOW;
  for (const CallFilter* filter = filters; filter != nullptr; filter = filter->before) {
    const uint32_t next = run_filter(filter->program, data);
    answer = severity(next) < severity(answer) ? next : answer;
  }
  return answer;
}

bool is_strictly_allowed(uint64_t number) {
  return number == SYS_read || number == SYS_write || number == SYS_exit ||
         number == SYS_rt_sigreturn;
}

// As the kernel does: SIGSYS, which nothing can handle, and the whole process if it has but one
// thread.
int64_t kill_caller(Thread& thread, bool process) {
  if (process || !is_one_of_many()) {
    act_by_default(SIGSYS);
  }
  return sys_exit(thread, {SYS_exit, {SIGSYS}});
}

int64_t trap(Thread& thread, const Call& call, uint32_t data) {
  siginfo_t info = {};
  info.si_signo = SIGSYS;
  info.si_code = kOfSeccomp;
  info.si_errno = static_cast<int>(data);
  info.si_call_addr = reinterpret_cast<void*>(thread.context.pc);
  info.si_syscall = static_cast<int>(call.number);
  info.si_arch = AUDIT_ARCH_AARCH64;
  raise_fault(thread, info, 0);
  return kNoResult;
}

bool has_rights() {
  __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct data[_LINUX_CAPABILITY_U32S_3] = {};
  syscall(SYS_capget, &header, data);
  return prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0) == 1 ||
         (data[0].effective >> CAP_SYS_ADMIN & 1) != 0;
}

int64_t set_strict(Thread& thread) {
  if (thread.filters != nullptr) {
    return -EINVAL;
  }
  thread.strict = true;
  return 0;
}

int64_t add_filter(Thread& thread, uint64_t flags, uint64_t address) {
  sock_fprog given;
  if ((flags & ~kKnownFlags) != 0 || thread.strict) {
    return -EINVAL;
  }
  if (core_copy(&given, reinterpret_cast<const void*>(address), sizeof given) != 0) {
    return -EFAULT;
  }
  if (given.len == 0 || given.len > BPF_MAXINSNS) {
    return -EINVAL;
  }
  if (!has_rights()) {
    return -EACCES;
  }
  std::vector<sock_filter> program(given.len);
  if (core_copy(program.data(), given.filter, program.size() * sizeof program[0]) != 0) {
    return -EFAULT;
  }
  if (!is_filter(program)) {
    return -EINVAL;
  }
  const auto* const added = new CallFilter{std::move(program), thread.filters};
  if ((flags & SECCOMP_FILTER_FLAG_TSYNC) != 0) {
    if (const int other = give_filters_to_all(thread, added)) {
      delete added;
      return (flags & SECCOMP_FILTER_FLAG_TSYNC_ESRCH) != 0 ? -ESRCH : other;
    }
  }
  thread.filters = added;
  return 0;
}

}  // namespace

bool may_call(Thread& thread, const Call& call, int64_t& result) {
  if (thread.strict) {
    if (!is_strictly_allowed(call.number)) {
      act_by_default(SIGKILL);
    }
    return true;
  }
  seccomp_data data = {static_cast<int>(call.number), AUDIT_ARCH_AARCH64, thread.context.pc, {}};
  std::ranges::copy(call.arguments, data.args);
  const uint32_t answer = ask(thread.filters, data);
  constexpr uint32_t kMostError = 4095;
  switch (answer & SECCOMP_RET_ACTION_FULL) {
  case SECCOMP_RET_ALLOW:
  case SECCOMP_RET_LOG:
    return true;
  case SECCOMP_RET_ERRNO:
    result = -static_cast<int64_t>(std::min(answer & SECCOMP_RET_DATA, kMostError));
    break;
  case SECCOMP_RET_TRAP:
    result = trap(thread, call, answer & SECCOMP_RET_DATA);
    break;
  case SECCOMP_RET_TRACE:
  case SECCOMP_RET_USER_NOTIF:
    result = -ENOSYS;  // there is nobody to ask
    break;
  default:
    result = kill_caller(thread, (answer & SECCOMP_RET_ACTION_FULL) != SECCOMP_RET_KILL_THREAD);
    break;
  }
  return false;
}

int64_t sys_seccomp(Thread& thread, const Call& call) {
  const uint64_t flags = call.arguments[1];
  const uint64_t address = call.arguments[2];
  uint32_t action;
  switch (call.arguments[0]) {
  case SECCOMP_SET_MODE_STRICT:
    return flags != 0 || address != 0 ? -EINVAL : set_strict(thread);
  case SECCOMP_SET_MODE_FILTER:
    return add_filter(thread, flags, address);
  case SECCOMP_GET_ACTION_AVAIL:
    if (flags != 0) {
      return -EINVAL;
    }
    if (core_copy(&action, reinterpret_cast<const void*>(address), sizeof action) != 0) {
      return -EFAULT;
    }
    return std::ranges::find(kActions, action) != std::end(kActions) ? 0 : -EOPNOTSUPP;
  default:
    return -EINVAL;
  }
}

int64_t set_seccomp(Thread& thread, uint64_t mode, uint64_t program) {
  return mode == SECCOMP_MODE_STRICT   ? set_strict(thread)
         : mode == SECCOMP_MODE_FILTER ? add_filter(thread, 0, program)
                                       : -EINVAL;
}

int64_t get_seccomp(const Thread& thread) {
  return thread.filters != nullptr ? SECCOMP_MODE_FILTER : SECCOMP_MODE_DISABLED;
}

bool begins_with(const CallFilter* filters, const CallFilter* before) {
  while (filters != before && filters != nullptr) {
    filters = filters->before;
  }
  return filters == before;
}

// The oldest one first: its length, its instructions.
int write_filters(const CallFilter* filters) {
  std::vector<const CallFilter*> order;
  for (; filters != nullptr; filters = filters->before) {
    order.insert(order.begin(), filters);
  }
  const auto fd = static_cast<int>(syscall(SYS_memfd_create, "filters", 0));
  for (const CallFilter* filter : order) {
    const uint64_t length = filter->program.size();
    const auto bytes = static_cast<ssize_t>(length * sizeof filter->program[0]);
    if (fd < 0 || write(fd, &length, sizeof length) != sizeof length ||
        write(fd, filter->program.data(), static_cast<size_t>(bytes)) != bytes) {
      close(fd);
      return -ENOMEM;
    }
  }
  return fd;
}

const CallFilter* read_filters(int fd) {
  const CallFilter* filters = nullptr;
  uint64_t length;
  lseek(fd, 0, SEEK_SET);
  while (read(fd, &length, sizeof length) == sizeof length && length <= BPF_MAXINSNS) {
    std::vector<sock_filter> program(length);
    if (read(fd, program.data(), length * sizeof program[0]) < 0 || !is_filter(program)) {
      break;
    }
    filters = new CallFilter{std::move(program), filters};
  }
  close(fd);
  return filters;
}

}  // namespace os
