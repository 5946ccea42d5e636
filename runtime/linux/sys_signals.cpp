// The calls that set masks and alternate stacks.
#include <sys/syscall.h>

#include <cerrno>
#include <csignal>

#include "runtime/core/entry.h"
#include "runtime/linux/signals.h"
#include "runtime/linux/syscalls.h"

namespace os {
namespace {

constexpr uint64_t kMaskSize = sizeof(uint64_t);
constexpr size_t kSmallestStack = 5120;  // the kernel's for this processor

const void* memory_at(uint64_t address) { return reinterpret_cast<const void*>(address); }

// Which argument of a waiting call points at the mask.
unsigned mask_argument(uint64_t number) {
  switch (number) {
  case SYS_rt_sigsuspend:
    return 0;
  case SYS_ppoll:
    return 3;
  case SYS_pselect6:
    return 5;
  default:
    return 4;
  }
}

// pselect6 has more than six arguments: the last one points at these two.
struct SelectMask {
  uint64_t address;
  uint64_t size;
};

// The new alternate stack, checked as the kernel does.
int64_t check_stack(stack_t& stack) {
  if (stack.ss_flags != 0 && stack.ss_flags != SS_DISABLE && stack.ss_flags != SS_ONSTACK) {
    return -EINVAL;
  }
  if (stack.ss_flags == SS_DISABLE) {
    stack.ss_sp = nullptr;
    stack.ss_size = 0;
    return 0;
  }
  stack.ss_flags = 0;
  return stack.ss_size < kSmallestStack ? -ENOMEM : 0;
}

bool change_mask(uint64_t& mask, uint64_t how, uint64_t set) {
  switch (how) {
  case SIG_BLOCK:
    mask |= set;
    return true;
  case SIG_UNBLOCK:
    mask &= ~set;
    return true;
  case SIG_SETMASK:
    mask = set;
    return true;
  default:
    return false;
  }
}

}  // namespace

int64_t sys_rt_sigprocmask(Thread& thread, const Call& call) {
  const auto* wanted = reinterpret_cast<const void*>(call.arguments[1]);
  auto* old = reinterpret_cast<void*>(call.arguments[2]);
  uint64_t set = 0;
  if (call.arguments[3] != kMaskSize) {
    return -EINVAL;
  }
  if (wanted != nullptr && core_copy(&set, wanted, sizeof set) != 0) {
    return -EFAULT;
  }
  const uint64_t before = thread.signals.mask;
  uint64_t after = before;
  if (wanted != nullptr && !change_mask(after, call.arguments[0], set)) {
    return -EINVAL;
  }
  thread.signals.mask = after & ~kUnblockable;
  if (after != before && !apply_mask(thread)) {
    thread.signals.mask = before;
    return kNotMade;
  }
  if (old != nullptr && core_copy(old, &before, sizeof before) != 0) {
    return -EFAULT;
  }
  return 0;
}

// The mask goes to the kernel without the signals that are never masked.
int64_t sys_wait_with_mask(Thread& thread, const Call& call) {
  const unsigned argument = mask_argument(call.number);
  const bool indirect = call.number == SYS_pselect6;
  SelectMask given = {call.arguments[argument], kMaskSize};
  if (indirect && given.address != 0 &&
      core_copy(&given, memory_at(given.address), sizeof given) != 0) {
    return -EFAULT;
  }
  if (given.address == 0) {
    return pass_on(thread, call);
  }
  uint64_t mask;
  if (core_copy(&mask, memory_at(given.address), sizeof mask) != 0) {
    return -EFAULT;
  }
  const uint64_t wanted = mask & ~kNeverMasked;
  given.address = reinterpret_cast<uint64_t>(&wanted);
  Call changed = call;
  changed.arguments[argument] = indirect ? reinterpret_cast<uint64_t>(&given) : given.address;
  const int64_t result = pass_on(thread, changed);
  thread.signals.temporary_mask = mask & ~kUnblockable;
  thread.signals.has_temporary_mask = result == -EINTR;
  return result;
}

// The kernel does not know of a SIGSEGV or SIGBUS that waits because the application blocks it.
int64_t sys_rt_sigpending(Thread& thread, const Call& call) {
  const int64_t result = pass_on(thread, call);
  const ThreadSignals& signals = thread.signals;
  uint64_t set;
  auto* to = reinterpret_cast<void*>(call.arguments[0]);
  if (result == 0 && signals.has_held && core_copy(&set, to, sizeof set) == 0) {
    set |= signal_bit(signals.held.si_signo);
    core_copy(to, &set, sizeof set);
  }
  return result;
}

namespace {

// Whether what is held is one of the signals that a call waits for, and the call ends with it.
bool takes_held(Thread& thread, const Call& call, int64_t& result) {
  ThreadSignals& signals = thread.signals;
  uint64_t set = 0;
  core_copy(&set, memory_at(call.arguments[0]), sizeof set);
  if (!signals.has_held || (set & signal_bit(signals.held.si_signo)) == 0) {
    return false;
  }
  auto* to = reinterpret_cast<void*>(call.arguments[1]);
  result = signals.held.si_signo;
  signals.has_held = false;
  if (to != nullptr && core_copy(to, &signals.held, sizeof signals.held) != 0) {
    result = -EFAULT;
  }
  return true;
}

}  // namespace

// One that comes meanwhile interrupts the call.
int64_t sys_rt_sigtimedwait(Thread& thread, const Call& call) {
  int64_t result;
  if (!takes_held(thread, call, result)) {
    result = pass_on(thread, call);
    if (result == -EINTR) {
      takes_held(thread, call, result);
    }
  }
  return result;
}

int64_t set_alternate_stack(Thread& thread, stack_t stack) {
  const int64_t result = on_alternate_stack(thread) ? -EPERM : check_stack(stack);
  if (result == 0) {
    thread.signals.alternate = stack;
  }
  return result;
}

int64_t sys_sigaltstack(Thread& thread, const Call& call) {
  const uint64_t wanted = call.arguments[0];
  auto* old = reinterpret_cast<void*>(call.arguments[1]);
  stack_t before = thread.signals.alternate;
  if (on_alternate_stack(thread)) {
    before.ss_flags |= SS_ONSTACK;
  }
  if (wanted != 0) {
    stack_t stack;
    if (core_copy(&stack, memory_at(wanted), sizeof stack) != 0) {
      return -EFAULT;
    }
    const int64_t result = set_alternate_stack(thread, stack);
    if (result != 0) {
      return result;
    }
  }
  if (old != nullptr && core_copy(old, &before, sizeof before) != 0) {
    return -EFAULT;
  }
  return 0;
}

}  // namespace os
