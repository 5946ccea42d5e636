// What is to happen at a signal: the application's table and the client's.
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csetjmp>
#include <mutex>

#include "runtime/core/entry.h"
#include "runtime/linux/handler.h"
#include "runtime/linux/signals.h"
#include "runtime/linux/syscalls.h"

namespace os {

constinit ActionTable process_actions = {};

namespace {

constexpr uint64_t kDefault = 0, kIgnore = 1;
// Of the application's flags, those that the kernel must know.
constexpr uint64_t kKernelFlags = SA_RESTART | SA_NOCLDSTOP | SA_NOCLDWAIT;
// What a program finds of those that it gave: it can ask which ones are known.
constexpr uint64_t kKnownFlags = SA_NOCLDSTOP | SA_NOCLDWAIT | SA_SIGINFO | SA_ONSTACK |
                                 SA_RESTART | SA_NODEFER | SA_RESETHAND | kExposeTag | kRestorer;

int64_t kernel_action(int signal, const SignalAction* action, SignalAction* old) {
  const long result = syscall(SYS_rt_sigaction, signal, action, old, sizeof(uint64_t));
  return result == 0 ? 0 : -errno;
}

// The kernel's action for the application's: a function is reached through the runtime's handler,
// and so is the default for an illegal instruction, of which the runtime has something to say.
SignalAction action_for_kernel(int signal, const SignalAction& wanted) {
  const bool told = signal == SIGILL && wanted.handler == kDefault;
  if (!is_function(wanted) && !told) {
    return {wanted.handler, wanted.flags & kKernelFlags, 0, wanted.mask};
  }
  return {reinterpret_cast<uint64_t>(&handle_signal),
          (wanted.flags & kKernelFlags) | SA_SIGINFO | SA_ONSTACK, 0, kAllSignals};
}

// Tells the kernel what the application wants for `signal`.
int64_t give_to_kernel(int signal, const SignalAction& wanted) {
  const SignalAction action = action_for_kernel(signal, wanted);
  return kernel_action(signal, &action, nullptr);
}

bool is_kept_by_runtime(int signal) { return (signal_bit(signal) & kNeverMasked) != 0; }

}  // namespace

bool is_function(const SignalAction& action) {
  return action.handler != kDefault && action.handler != kIgnore;
}

SignalAction take_action(Thread& thread, int signal) {
  ActionTable& table = *thread.signals.actions;
  const std::lock_guard lock(table.mutex);
  const SignalAction action = table.actions[signal];
  if (is_function(action) && (action.flags & SA_RESETHAND) != 0) {
    table.actions[signal].handler = kDefault;
    if (!is_kept_by_runtime(signal)) {
      give_to_kernel(signal, {});
    }
  }
  return action;
}

void clear_handlers(ActionTable& table) {
  const std::lock_guard lock(table.mutex);
  for (int signal = 1; signal <= kSignals; ++signal) {
    if (is_function(table.actions[signal])) {
      table.actions[signal] = {};
      if (!is_kept_by_runtime(signal)) {
        give_to_kernel(signal, {});
      }
    }
  }
}

bool application_handles(const Thread& thread, int signal) {
  // Read without the lock: this runs in the fault handler.
  return is_function(thread.signals.actions->actions[signal]) &&
         (thread.signals.mask & signal_bit(signal)) == 0;
}

void set_runtime_action(int signal, bool ignore) {
  SignalAction action = {kIgnore, 0, 0, 0};
  if (!ignore) {
    action = {reinterpret_cast<uint64_t>(&handle_signal), SA_SIGINFO | SA_ONSTACK | kExposeTag, 0,
              kAllSignals};
  }
  kernel_action(signal, &action, nullptr);
}

void install_handlers() {
  for (int signal = 1; signal <= kSignals; ++signal) {
    kernel_action(signal, nullptr, &process_actions.actions[signal]);
  }
  set_runtime_action(SIGSEGV, false);
  set_runtime_action(SIGBUS, false);
  give_to_kernel(SIGILL, process_actions.actions[SIGILL]);
}

void renew_action(int signal) {
  const std::lock_guard lock(process_actions.mutex);
  give_to_kernel(signal, process_actions.actions[signal]);
}

void restore_default(int signal) {
  const SignalAction action = {};
  kernel_action(signal, &action, nullptr);
}

int64_t sys_rt_sigaction(Thread& thread, const Call& call) {
  const int signal = static_cast<int>(call.arguments[0]);
  const auto* wanted = reinterpret_cast<const void*>(call.arguments[1]);
  auto* old = reinterpret_cast<void*>(call.arguments[2]);
  if (call.arguments[3] != sizeof(uint64_t) || signal < 1 || signal > kSignals) {
    return -EINVAL;
  }
  SignalAction action = {};
  if (wanted != nullptr && core_copy(&action, wanted, sizeof action) != 0) {
    return -EFAULT;
  }
  SignalAction previous;
  {
    ActionTable& table = *thread.signals.actions;
    const std::lock_guard lock(table.mutex);
    previous = table.actions[signal];
    if (wanted != nullptr) {
      action.mask &= ~kUnblockable;
      action.flags &= kKnownFlags;
      const int64_t result = is_kept_by_runtime(signal) ? 0 : give_to_kernel(signal, action);
      if (result != 0) {
        return result;
      }
      table.actions[signal] = action;
    }
  }
  if (old != nullptr && core_copy(old, &previous, sizeof previous) != 0) {
    return -EFAULT;
  }
  return 0;
}

// ---- the client's table -------------------------------------------------------------------------

namespace {

// Set before main runs, by the client's static initialiser: hence constant-initialised.
constinit thread_local ClientActions clients = {};
// While the client's handler runs for a fault that the application would take.
constinit thread_local sigjmp_buf* disclaim = nullptr;

struct sigaction* client_action(int signal) {
  return signal == SIGSEGV ? &clients.segv : signal == SIGBUS ? &clients.bus : nullptr;
}

bool is_function(const struct sigaction& action) {
  return action.sa_handler != SIG_DFL && action.sa_handler != SIG_IGN;
}

}  // namespace

ClientActions client_actions() { return clients; }
void set_client_actions(const ClientActions& from) { clients = from; }

namespace {

void call_client(const struct sigaction& action, int signal, siginfo_t* info, void* context) {
  if ((action.sa_flags & SA_SIGINFO) != 0) {
    action.sa_sigaction(signal, info, context);
  } else {
    action.sa_handler(signal);
  }
}

// Whether the client's handler went its way to the end. The client may also jump out of it: then
// the buffer here stays behind, and the next fault sets its own.
bool returns_from_client(const struct sigaction& action, int signal, siginfo_t* info, void* context,
                         bool application_waits) {
  sigjmp_buf back;
  if (sigsetjmp(back, 0) != 0) {
    disclaim = nullptr;
    return false;
  }
  disclaim = application_waits ? &back : nullptr;
  call_client(action, signal, info, context);
  disclaim = nullptr;
  return true;
}

}  // namespace

ClientAnswer ask_client(int signal, siginfo_t* info, void* context, bool application_waits) {
  const struct sigaction* action = client_action(signal);
  if (action == nullptr || !is_function(*action)) {
    return application_waits ? ClientAnswer::disclaimed : ClientAnswer::by_default;
  }
  if (!returns_from_client(*action, signal, info, context, application_waits)) {
    return ClientAnswer::disclaimed;
  }
  return is_function(*client_action(signal)) ? ClientAnswer::handled : ClientAnswer::by_default;
}

}  // namespace os

extern "C" {
int __real_sigaction(int signal, const struct sigaction* action, struct sigaction* old);

// What the client calls as sigaction: bound at link time.
int __wrap_sigaction(int signal, const struct sigaction* action, struct sigaction* old) {
  struct sigaction* mine = os::client_action(signal);
  if (mine == nullptr) {
    return __real_sigaction(signal, action, old);
  }
  const bool to_default = action != nullptr && action->sa_handler == SIG_DFL;
  if (to_default && os::disclaim != nullptr) {
    siglongjmp(*os::disclaim, 1);
  }
  if (old != nullptr) {
    *old = *mine;
  }
  if (action != nullptr) {
    *mine = *action;
  }
  return 0;
}
}
