// Signals of the application, and the client's own handlers.
#pragma once

#include <csignal>
#include <cstdint>

#include "runtime/core/lock.h"
#include "runtime/linux/thread.h"

namespace os {

// ---- masks: one bit for each signal, as the kernel has them -------------------------------------

constexpr uint64_t signal_bit(int signal) { return uint64_t{1} << (signal - 1); }
// Never in the kernel's mask, whatever the application asks: a guarded read with SIGSEGV blocked
// would kill the process.
inline constexpr uint64_t kNeverMasked = signal_bit(SIGSEGV) | signal_bit(SIGBUS);
// Those that an instruction raises: the kernel ends a process that blocks one when it is raised.
inline constexpr uint64_t kTraps =
    kNeverMasked | signal_bit(SIGILL) | signal_bit(SIGFPE) | signal_bit(SIGTRAP);
inline constexpr uint64_t kUnblockable = signal_bit(SIGKILL) | signal_bit(SIGSTOP);
inline constexpr uint64_t kAllSignals = ~uint64_t{0};

// Sets the kernel's mask for this thread from a mask of the application's; returns the old one.
uint64_t set_kernel_mask(uint64_t mask);
// The same from the thread's own mask, unless a signal waits: then the kernel's mask is full, and
// the delivery sets it. Returns whether it was done.
bool apply_mask(Thread& thread);

// The mask that the process was started with. The kernel's loses what is never masked.
uint64_t initial_mask();

// ---- actions ------------------------------------------------------------------------------------

// The kernel's own layout.
struct SignalAction {
  uint64_t handler;
  uint64_t flags;
  uint64_t restorer;
  uint64_t mask;
};

inline constexpr int kSignals = 64;

// Flags of actions that not every header has.
inline constexpr uint64_t kExposeTag = 0x800, kRestorer = 0x04000000;

struct ActionTable {
  core::Lock mutex;
  SignalAction actions[kSignals + 1];
};
extern ActionTable process_actions;

bool is_function(const SignalAction& action);
// The application's action for a signal that is delivered now: puts a one-shot handler back to the
// default.
SignalAction take_action(Thread& thread, int signal);

// Puts every handler of the application back to the default.
void clear_handlers(ActionTable& table);

// The runtime's handlers for the whole process, and the calling thread's alternate stack.
void install_handlers();
void prepare_thread_signals(Thread& thread);
void release_thread_signals(Thread& thread);

// Gives the kernel the default action for `signal`.
void restore_default(int signal);
// Tells the kernel once more what the application wants.
void renew_action(int signal);
// For SIGSEGV and SIGBUS: lets the kernel ignore the signal, or gives it the runtime's handler
// back.
void set_runtime_action(int signal, bool ignore);
// Ends the process as the default action for `signal` does, or stops it; returns if that action is
// to ignore the signal.
void act_by_default(int signal);

// ---- the client's own actions for SIGSEGV and SIGBUS, for this thread ---------------------------

struct ClientActions {
  struct sigaction segv, bus;
};
ClientActions client_actions();
void set_client_actions(const ClientActions& actions);

enum class ClientAnswer {
  handled,     // the context that it was given holds
  disclaimed,  // it wanted the default action, and the application has a handler
  by_default,  // it put the default action in force
};
// Lets the client's action have the fault. `application_handles`: whether a handler of the
// application waits for it.
ClientAnswer ask_client(int signal, siginfo_t* info, void* context, bool application_handles);

// ---- delivery -----------------------------------------------------------------------------------

// The signals that context.pending tells of reach the application: its registers become those of
// the handler.
void deliver_pending(Thread& thread);
// A fault that the runtime found itself, at context.pc.
void raise_fault(Thread& thread, int signal, int code, uint64_t address, uint64_t syndrome = 0);
void raise_fault(Thread& thread, siginfo_t& info, uint64_t syndrome);
// Whether a fault reaches a handler of the application.
bool application_handles(const Thread& thread, int signal);

// Whether the application's SP is on its alternate stack.
bool on_alternate_stack(const Thread& thread);
// Sets that stack. Returns 0, or why the kernel would not.
int64_t set_alternate_stack(Thread& thread, stack_t stack);

// What a handler's frame takes of a stack at most, AT_MINSIGSTKSZ for the application.
inline constexpr uint64_t kSignalFrameSize = 4720;
// Calls the application's handler: pushes a frame and sets the registers.
void push_frame(Thread& thread, const SignalAction& action, const siginfo_t& info);

// Where handlers return to unless the action names another place.
uint64_t sigreturn_page();

}  // namespace os
