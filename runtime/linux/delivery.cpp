// From a recorded signal to the application's handler, masks and alternate stacks.
#include <sys/mman.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "runtime/core/entry.h"
#include "runtime/core/fatal.h"
#include "runtime/linux/signals.h"
#include "runtime/linux/syscalls.h"

namespace os {
namespace {

constexpr size_t kHandlerStack = 64U << 10;
constexpr uint64_t kMaskSize = sizeof(uint64_t);

void deliver(Thread& thread, const siginfo_t& info) {
  const SignalAction action = take_action(info.si_signo);
  if (is_function(action)) {
    push_frame(thread, action, info);
    return;
  }
  constexpr uint64_t kIgnore = 1;
  if (action.handler == kIgnore) {
    return;
  }
  if ((signal_bit(info.si_signo) & kNeverMasked) != 0) {
    // Sent by somebody: the client's handler has its say, as at a fault.
    siginfo_t copy = info;
    ucontext_t context = {};
    context.uc_mcontext.pc = thread.context.pc;
    ask_client(info.si_signo, &copy, &context, false);
  }
  act_by_default(info.si_signo);
}

}  // namespace

uint64_t set_kernel_mask(uint64_t mask) {
  const uint64_t wanted = mask & ~kNeverMasked;
  uint64_t old = 0;
  syscall(SYS_rt_sigprocmask, SIG_SETMASK, &wanted, &old, kMaskSize);
  return old;
}

void prepare_thread_signals(Thread& thread) {
  void* memory = mmap(nullptr, kHandlerStack, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS,
                      -1, 0);
  if (memory == MAP_FAILED) {
    core::fatal("no memory for a signal stack");
  }
  stack_t stack = {};
  stack.ss_sp = memory;
  stack.ss_size = kHandlerStack;
  sigaltstack(&stack, nullptr);
  thread.signals.handler_stack = memory;
  thread.signals.alternate = {};
  thread.signals.alternate.ss_flags = SS_DISABLE;
}

void release_thread_signals(Thread& thread) {
  stack_t stack = {};
  stack.ss_flags = SS_DISABLE;
  sigaltstack(&stack, nullptr);
  munmap(thread.signals.handler_stack, kHandlerStack);
}

void act_by_default(int signal) {
  restore_default(signal);
  const uint64_t old = set_kernel_mask(kAllSignals);
  syscall(SYS_tgkill, getpid(), syscall(SYS_gettid), signal);
  // Unblocked, it is delivered before the call returns.
  const uint64_t open = ~signal_bit(signal);
  syscall(SYS_rt_sigprocmask, SIG_SETMASK, &open, nullptr, kMaskSize);
  syscall(SYS_rt_sigprocmask, SIG_SETMASK, &old, nullptr, kMaskSize);
}

void deliver_pending(Thread& thread) {
  core::Context& context = thread.context;
  if ((context.pending & kFaultPending) != 0) {
    const siginfo_t info = thread.signals.fault;
    context.pending = context.pending & ~kFaultPending;
    deliver(thread, info);
    return;
  }
  const siginfo_t info = thread.signals.info;
  context.pending = context.pending & ~kSignalPending;
  deliver(thread, info);
  set_kernel_mask(thread.signals.mask);
}

void raise_fault(Thread& thread, int signal, int code, uint64_t address) {
  siginfo_t info = {};
  info.si_signo = signal;
  info.si_code = code;
  info.si_addr = reinterpret_cast<void*>(address);
  if (application_handles(thread, signal)) {
    push_frame(thread, take_action(signal), info);
    if (thread.context.pending == 0) {
      set_kernel_mask(thread.signals.mask);
    }
    return;
  }
  ucontext_t context = {};
  context.uc_mcontext.pc = address;
  ask_client(signal, &info, &context, false);
  act_by_default(signal);
  core::fatal("a fault was ignored");
}

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
  switch (wanted == nullptr ? -1 : static_cast<int>(call.arguments[0])) {
  case SIG_BLOCK:
    after |= set;
    break;
  case SIG_UNBLOCK:
    after &= ~set;
    break;
  case SIG_SETMASK:
    after = set;
    break;
  case -1:
    if (wanted == nullptr) {
      break;
    }
    [[fallthrough]];
  default:
    return -EINVAL;
  }
  // The kernel's mask stays full while a signal waits; its delivery sets it.
  thread.signals.mask = after & ~kUnblockable;
  if (after != before && thread.context.pending == 0) {
    set_kernel_mask(thread.signals.mask);
  }
  if (old != nullptr && core_copy(old, &before, sizeof before) != 0) {
    return -EFAULT;
  }
  return 0;
}

int64_t sys_sigaltstack(Thread& thread, const Call& call) {
  const auto* wanted = reinterpret_cast<const void*>(call.arguments[0]);
  auto* old = reinterpret_cast<void*>(call.arguments[1]);
  stack_t& alternate = thread.signals.alternate;
  const auto begin = reinterpret_cast<uint64_t>(alternate.ss_sp);
  const bool in_use = (alternate.ss_flags & SS_DISABLE) == 0 && thread.context.sp > begin &&
                      thread.context.sp - begin <= alternate.ss_size;
  stack_t before = alternate;
  if (in_use) {
    before.ss_flags |= SS_ONSTACK;
  }
  if (wanted != nullptr) {
    stack_t stack;
    if (core_copy(&stack, wanted, sizeof stack) != 0) {
      return -EFAULT;
    }
    if (in_use) {
      return -EPERM;
    }
    if ((stack.ss_flags & ~SS_DISABLE) != 0 && stack.ss_flags != SS_ONSTACK) {
      return -EINVAL;
    }
    if ((stack.ss_flags & SS_DISABLE) != 0) {
      stack.ss_sp = nullptr;
      stack.ss_size = 0;
    } else if (stack.ss_size < MINSIGSTKSZ) {
      return -ENOMEM;
    } else {
      stack.ss_flags = 0;
    }
    alternate = stack;
  }
  if (old != nullptr && core_copy(old, &before, sizeof before) != 0) {
    return -EFAULT;
  }
  return 0;
}

}  // namespace os
