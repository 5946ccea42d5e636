// From a recorded signal to the application's handler, masks and alternate stacks.
#include <sys/mman.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include <algorithm>
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
  const SignalAction action = take_action(thread, info.si_signo);
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

// The oldest signal that waits. All signals are blocked.
siginfo_t take_waiting(Thread& thread) {
  ThreadSignals& signals = thread.signals;
  const siginfo_t first = signals.waiting[0];
  --signals.waiting_count;
  std::copy_n(signals.waiting + 1, signals.waiting_count, signals.waiting);
  if (signals.waiting_count == 0) {
    core::remove_pending(thread.context, kSignalPending);
  }
  return first;
}

}  // namespace

uint64_t set_kernel_mask(uint64_t mask) {
  const uint64_t wanted = mask & ~kNeverMasked;
  uint64_t old = 0;
  syscall(SYS_rt_sigprocmask, SIG_SETMASK, &wanted, &old, kMaskSize);
  return old;
}

uint64_t initial_mask() {
  uint64_t mask = 0;
  syscall(SYS_rt_sigprocmask, SIG_BLOCK, nullptr, &mask, kMaskSize);
  set_kernel_mask(mask);
  return mask;
}

bool apply_mask(Thread& thread) {
  ThreadSignals& signals = thread.signals;
  if (signals.has_held && (signals.mask & signal_bit(signals.held.si_signo)) == 0) {
    signals.has_held = false;
    signals.fault = signals.held;
    signals.fault_syndrome = 0;
    core::add_pending(thread.context, kFaultPending);
  }
  const uint64_t wanted = thread.signals.mask & ~kNeverMasked;
  const Call call = {SYS_rt_sigprocmask,
                     {SIG_SETMASK, reinterpret_cast<uint64_t>(&wanted), 0, kMaskSize}};
  return pass_on(thread, call) != kNotMade;
}

void prepare_thread_signals(Thread& thread) {
  void* memory =
      mmap(nullptr, kHandlerStack, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) {
    core::fatal("no memory for a signal stack");
  }
  stack_t stack = {};
  stack.ss_sp = memory;
  stack.ss_size = kHandlerStack;
  if (sigaltstack(&stack, nullptr) != 0) {
    core::fatal("the host refuses a signal stack");
  }
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
    core::remove_pending(context, kFaultPending);
    deliver(thread, info);
    apply_mask(thread);
    return;
  }
  set_kernel_mask(kAllSignals);
  deliver(thread, take_waiting(thread));
  if (thread.signals.waiting_count == 0) {
    set_kernel_mask(thread.signals.mask);
  }
}

void raise_fault(Thread& thread, int signal, int code, uint64_t address, uint64_t syndrome) {
  siginfo_t info = {};
  info.si_signo = signal;
  info.si_code = code;
  info.si_addr = reinterpret_cast<void*>(address);
  raise_fault(thread, info, syndrome);
}

void raise_fault(Thread& thread, siginfo_t& info, uint64_t syndrome) {
  const int signal = info.si_signo;
  thread.signals.fault_syndrome = syndrome;
  thread.signals.fault_tag = 0;
  if (application_handles(thread, signal)) {
    push_frame(thread, take_action(thread, signal), info);
    apply_mask(thread);
    return;
  }
  ucontext_t context = {};
  context.uc_mcontext.pc = thread.context.pc;
  ask_client(signal, &info, &context, false);
  act_by_default(signal);
  core::fatal("a fault was ignored");
}

}  // namespace os
