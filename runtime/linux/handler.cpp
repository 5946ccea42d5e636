// What happens when the kernel interrupts a thread. Nothing here allocates. The one lock, that of
// the thread's cache, is taken where the interrupted code cannot hold it: in the cache, or in a
// call.
//
//   where the thread is           asynchronous signal               synchronous fault
//   -------------------------     ------------------------------    ------------------------------
//   core_copy                     goes on                           to core_copy_fault
//   dispatcher                    goes on, and sees `pending`       the runtime's own: message, end
//   about to enter the cache      to core_enter_bail                -
//   about to make a call          to os_call_bail                   -
//   a fragment, between two       registers to the context, and     registers to the context, and
//   instructions                  to core_enter_bail                to core_enter_bail; if a signal
//                                                                   waits it is delivered, and the
//                                                                   instruction runs again
//   a fragment without calls,     its exits are unlinked            -
//   elsewhere
//   a fragment with calls, or     goes on, and sees `pending` at    the client's action; else the
//   a call of one                 its exits and between rounds      restoring half of the call runs
#include "runtime/linux/handler.h"

#include <asm/sigcontext.h>
#include <ucontext.h>

#include <algorithm>
#include <cstring>
#include <mutex>

#include "runtime/core/cache.h"
#include "runtime/core/dispatch.h"
#include "runtime/core/entry.h"
#include "runtime/core/fatal.h"
#include "runtime/linux/illegal.h"
#include "runtime/linux/machine_context.h"
#include "runtime/linux/position.h"
#include "runtime/linux/signals.h"
#include "runtime/linux/stack.h"

extern "C" const char os_call_check[], os_call_svc[], os_call_bail[];

namespace os {
namespace {

uint64_t address_of(const char* label) { return reinterpret_cast<uint64_t>(label); }

bool is_between(uint64_t pc, const char* begin, const char* end) {
  return pc >= address_of(begin) && pc < address_of(end);
}

// ---- asynchronous signals -----------------------------------------------------------------------

// The fragment that runs ends in the dispatcher, by itself or because its exits are unlinked.
void leave_at_end(core::Context& context, uint64_t code) {
  const core::Fragment* fragment = core::fragment_holding(*context.cache, code);
  if (fragment != nullptr && !fragment->checks) {
    // Another thread may be at it, too; it never waits for this one meanwhile.
    const std::lock_guard lock(context.cache->mutex);
    core::unlink_exits(*context.cache, *fragment);
  }
  context.lookup_table = core::empty_lookup_table();
}

// core_enter_bail finds the context in X28, which the cache's code uses for other things.
void leave_cache(core::Context& context, mcontext_t& machine) {
  machine.regs[core::kStolenRegister] = reinterpret_cast<uint64_t>(&context);
  machine.pc = address_of(core_enter_bail);
}

// Brings the thread to the dispatcher without waiting for anything.
void come_to_dispatcher(core::Context& context, mcontext_t& machine) {
  if (is_between(machine.pc, core_enter_check, core_enter_end)) {
    machine.pc = address_of(core_enter_bail);
  } else if (is_between(machine.pc, os_call_check, os_call_svc + 4)) {
    machine.pc = address_of(os_call_bail);
  } else if (core::in_cache(*context.cache, machine.pc)) {
    if (load_exact_state(context, machine)) {
      leave_cache(context, machine);
    } else {
      leave_at_end(context, machine.pc);
    }
  } else if (context.in_cache != 0) {
    leave_at_end(context, context.call);
  }
}

// All but what an instruction may raise on the way to the dispatcher.
void block_others(const ThreadSignals& signals, ucontext_t& interrupted) {
  const uint64_t mask = kAllSignals & ~(kTraps & ~signals.mask) & ~kNeverMasked;
  std::memcpy(&interrupted.uc_sigmask, &mask, sizeof mask);
}

// SIGSEGV and SIGBUS that somebody sent: the kernel never blocks them, so what the application
// blocks is held here.
void record_unmasked(Thread& thread, const siginfo_t& info) {
  ThreadSignals& signals = thread.signals;
  if ((signals.mask & signal_bit(info.si_signo)) != 0) {
    signals.held = info;
    signals.has_held = true;
  } else if ((thread.context.pending & kFaultPending) == 0) {
    signals.fault = info;
    signals.fault_syndrome = 0;
    core::add_pending(thread.context, kFaultPending);
  }
}

void record_waiting(ThreadSignals& signals, const siginfo_t& info) {
  const siginfo_t* const end = signals.waiting + signals.waiting_count;
  // What is not blocked may come again: like the kernel, keep one of a kind.
  const bool again =
      (signal_bit(info.si_signo) & kTraps) != 0 &&
      std::any_of(static_cast<const siginfo_t*>(signals.waiting), end,
                  [&](const siginfo_t& one) { return one.si_signo == info.si_signo; });
  if (!again && signals.waiting_count < kMostWaiting) {
    signals.waiting[signals.waiting_count++] = info;
  }
}

void record_signal(Thread& thread, int signal, const siginfo_t& info, ucontext_t& interrupted) {
  if ((signal_bit(signal) & kNeverMasked) != 0) {
    record_unmasked(thread, info);
  } else {
    record_waiting(thread.signals, info);
    core::add_pending(thread.context, kSignalPending);
    block_others(thread.signals, interrupted);
  }
  if (thread.context.pending != 0) {
    come_to_dispatcher(thread.context, interrupted.uc_mcontext);
  }
}

// ---- synchronous faults -------------------------------------------------------------------------

// What guards the application's stack is memory of the runtime's: natively there is none.
void tell_of_overflow(ThreadSignals& signals) {
  constexpr uint64_t kStatus = 0x3f, kPermission = 0xf, kTranslation = 0x7;  // at the last level
  const StackLayout& stack = stack_layout();
  const auto address = reinterpret_cast<uint64_t>(signals.fault.si_addr);
  if (signals.fault.si_code == SEGV_ACCERR && address < stack.begin && address >= stack.guard) {
    signals.fault.si_code = SEGV_MAPERR;
    if ((signals.fault_syndrome & kStatus) == kPermission) {
      signals.fault_syndrome ^= kPermission ^ kTranslation;
    }
  }
}

void record_fault(Thread& thread, const siginfo_t& info, const mcontext_t& machine) {
  thread.signals.fault = info;
  thread.signals.fault_syndrome = 0;
  const RecordHead* record = find_record(machine, ESR_MAGIC);
  if (record != nullptr && record->size >= sizeof(esr_context)) {
    thread.signals.fault_syndrome = reinterpret_cast<const esr_context*>(record)->esr;
  }
  tell_of_overflow(thread.signals);
  core::add_pending(thread.context, kFaultPending);
}

void fault_in_cache(Thread& thread, const siginfo_t& info, ucontext_t& interrupted) {
  core::Context& context = thread.context;
  mcontext_t& machine = interrupted.uc_mcontext;
  load_fault_state(context, machine);
  // What waits came first: the instruction runs again behind it.
  if ((context.pending & ~core::kChangesPending) != 0) {
    leave_cache(context, machine);
    return;
  }
  record_fault(thread, info, machine);
  // For these the address is that of the instruction.
  if (info.si_signo == SIGILL || info.si_signo == SIGTRAP || info.si_signo == SIGFPE) {
    thread.signals.fault.si_addr = reinterpret_cast<void*>(context.pc);
  }
  leave_cache(context, machine);
}

const core::CallSite* call_in_progress(const core::Context& context) {
  const core::Fragment* fragment = core::fragment_holding(*context.cache, context.call);
  const uint64_t offset = context.call - reinterpret_cast<uint64_t>(context.cache->base);
  for (unsigned i = 0; fragment != nullptr && i < fragment->call_count; ++i) {
    const core::CallSite& call = context.cache->calls[fragment->first_call + i];
    if (call.constants == offset) {
      return &call;
    }
  }
  return nullptr;
}

// The callee is abandoned; the code behind the call gives the application its registers back as
// they were in front of the instruction that the call stands for.
bool abandon_call(Thread& thread, const siginfo_t& info, mcontext_t& machine) {
  core::Context& context = thread.context;
  const core::CallSite* call = call_in_progress(context);
  if (call == nullptr) {
    return false;
  }
  {
    const std::lock_guard lock(context.cache->mutex);
    machine.pc = core::prepare_replay(*context.cache, *call);
  }
  machine.sp = context.runtime_sp;
  machine.regs[core::kStolenRegister] = reinterpret_cast<uint64_t>(&context);
  context.pc = call->pc;
  record_fault(thread, info, machine);
  return true;
}

[[noreturn]] void fault_in_runtime(int signal) {
  core::fatal("internal error: unexpected signal ", signal == SIGSEGV  ? "SIGSEGV"
                                                    : signal == SIGBUS ? "SIGBUS"
                                                                       : "in the runtime");
}

void handle_fault(Thread& thread, int signal, siginfo_t& info, ucontext_t& interrupted) {
  core::Context& context = thread.context;
  mcontext_t& machine = interrupted.uc_mcontext;
  const bool cached = core::in_cache(*context.cache, machine.pc);
  // Another thread has this cache writable for a moment, where it cannot be both: try again.
  if (signal == SIGSEGV && cached && context.cache->toggles &&
      reinterpret_cast<uint64_t>(info.si_addr) == machine.pc) {
    return;
  }
  const bool wanted = application_handles(thread, signal);
  if (cached && (wanted || (context.pending & ~core::kChangesPending) != 0)) {
    fault_in_cache(thread, info, interrupted);
    return;
  }
  const ClientAnswer answer = ask_client(signal, &info, &interrupted, wanted);
  if (answer == ClientAnswer::by_default) {
    if (signal == SIGILL && cached) {
      load_fault_state(context, machine);
      tell_illegal_instruction(thread);
    }
    // The instruction runs again and meets the default action.
    restore_default(signal);
  } else if (answer == ClientAnswer::disclaimed) {
    if (context.in_cache == 0 || !abandon_call(thread, info, machine)) {
      fault_in_runtime(signal);
    }
  }
}

bool is_synchronous(int signal, const siginfo_t& info) {
  return (signal_bit(signal) & kTraps) != 0 && info.si_code > 0;
}

}  // namespace

void handle_signal(int signal, siginfo_t* info, void* context) {
  auto& interrupted = *static_cast<ucontext_t*>(context);
  mcontext_t& machine = interrupted.uc_mcontext;
  const int saved_errno = errno;
  Thread* thread = current_thread();
  const bool synchronous = is_synchronous(signal, *info);
  if (synchronous && thread != nullptr) {
    const auto address = reinterpret_cast<uint64_t>(info->si_addr);
    info->si_addr = reinterpret_cast<void*>(core::without_tag(address));
    thread->signals.fault_tag = address ^ core::without_tag(address);
  }
  if (synchronous && is_between(machine.pc, core_copy_begin, core_copy_end)) {
    machine.pc = address_of(core_copy_fault);
  } else if (thread == nullptr) {
    restore_default(signal);
  } else if (synchronous) {
    handle_fault(*thread, signal, *info, interrupted);
  } else {
    record_signal(*thread, signal, *info, interrupted);
  }
  errno = saved_errno;
}

}  // namespace os
