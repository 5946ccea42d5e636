// clone, clone3, fork and vfork.
#include <linux/sched.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <vector>

#include "runtime/core/entry.h"
#include "runtime/linux/process.h"
#include "runtime/linux/signals.h"
#include "runtime/linux/syscalls.h"
#include "runtime/linux/threads.h"

// Both return the child's id, or a negative error, in the parent; in the child os_vfork calls
// `child` on this very stack.
extern "C" int64_t os_vfork(uint64_t flags, void (*child)(void*), void* argument);

namespace os {
namespace {

constexpr uint64_t kThreadFlags = CLONE_VM | CLONE_THREAD | CLONE_SIGHAND;
// What the runtime does itself around a fork.
constexpr uint64_t kOwnFlags = CLONE_VFORK | CLONE_VM | CLONE_SETTLS | CLONE_PARENT_SETTID |
                               CLONE_CHILD_SETTID | CLONE_CHILD_CLEARTID | CLONE_CLEAR_SIGHAND |
                               CLONE_PIDFD;

int64_t clone_any(Thread& parent, const CloneArguments& arguments) {
  if ((arguments.flags & CLONE_THREAD) != 0) {
    return (arguments.flags & kThreadFlags) == kThreadFlags ? create_thread(parent, arguments)
                                                            : -EINVAL;
  }
  if ((arguments.flags & (CLONE_VM | CLONE_VFORK)) == CLONE_VM) {
    return create_companion(parent, arguments);
  }
  return create_process(parent, arguments);
}

// What the child's clone call leaves in the registers.
void become_child(Thread& thread, const CloneArguments& arguments) {
  thread.id = static_cast<int>(syscall(SYS_gettid));
  if ((arguments.flags & CLONE_CHILD_SETTID) != 0) {
    write_word(arguments.child_tid, thread.id);
  }
  thread.clear_tid = (arguments.flags & CLONE_CHILD_CLEARTID) != 0 ? arguments.child_tid : 0;
  thread.robust_list = 0;
  thread.signals.has_held = false;
  if ((arguments.flags & CLONE_SETTLS) != 0) {
    thread.context.tpidr = arguments.tls;
  }
  if (arguments.stack != 0) {
    thread.context.sp = arguments.stack;
  }
  if ((arguments.flags & CLONE_CLEAR_SIGHAND) != 0) {
    clear_handlers(*thread.signals.actions);
  }
}

// ---- a process of its own -----------------------------------------------------------------------

// By the C library where possible, since other threads may hold its locks.
int64_t plain_fork(const CloneArguments& arguments) {
  const uint64_t others = arguments.flags & ~kOwnFlags;
  if (others == 0 && arguments.exit_signal == SIGCHLD) {
    const int64_t child = fork();
    return child < 0 ? -errno : child;
  }
  const uint64_t flags = others | static_cast<uint64_t>(arguments.exit_signal);
  const int64_t child = syscall(SYS_clone, flags, 0, 0, 0, 0);
  return child < 0 ? -errno : child;
}

int64_t fork_process(Thread& parent, const CloneArguments& arguments) {
  lock_runtime();
  const int64_t child = plain_fork(arguments);
  if (child == 0) {
    keep_only(parent);
    parent.vfork_child |= (arguments.flags & CLONE_VFORK) != 0;
  }
  unlock_runtime();
  if (child == 0) {
    become_child(parent, arguments);
  } else if (child > 0 && (arguments.flags & CLONE_PARENT_SETTID) != 0) {
    write_word(arguments.parent_tid, static_cast<int>(child));
  }
  return child;
}

// ---- a process that borrows the parent's memory -------------------------------------------------

// The simulator copies the memory, like a fork: found out at the first child.
constinit bool can_borrow = true;

struct VforkChild {
  Thread* thread;
  const CloneArguments* arguments;
  uint64_t mask;
  bool began;
  ActionTable actions;
};

// The child runs as the parent's thread: same context, same cache, further down the same stack,
// while the parent sleeps. Only the table of signal actions is its own.
void run_vfork_child(void* argument) {
  auto& child = *static_cast<VforkChild*>(argument);
  child.began = true;
  unlock_runtime();
  Thread& thread = *child.thread;
  thread.signals.actions = &child.actions;
  thread.vfork_child = true;
  become_child(thread, *child.arguments);
  thread.context.x[0] = 0;
  set_kernel_mask(child.mask);
  run_application(thread);
}

// All that the child may change of what the parent's thread is.
struct SavedThread {
  core::Context context;
  ThreadSignals signals;
  ClientActions actions = client_actions();
  uint64_t clear_tid, robust_list;
  const CallFilter* filters;
  bool strict;
  int id;
  std::vector<unsigned char> memory;

  explicit SavedThread(const Thread& thread)
      : context(thread.context), signals(thread.signals), clear_tid(thread.clear_tid),
        robust_list(thread.robust_list), filters(thread.filters), strict(thread.strict),
        id(thread.id), memory(core::thread_memory_size(thread.context)) {
    core::save_thread_memory(thread.context, memory.data());
  }
  void restore(Thread& thread) const {
    // What has to do with the memory that both share stays as the child left it.
    const ir::arena arena = thread.context.arena;
    const uint64_t pending = thread.context.pending & core::kChangesPending;
    thread.context = context;
    thread.context.arena = arena;
    thread.context.pending = pending;
    thread.context.last_exit = EXIT_NONE;
    thread.signals = signals;
    set_client_actions(actions);
    thread.clear_tid = clear_tid;
    thread.robust_list = robust_list;
    thread.filters = filters;
    thread.strict = strict;
    thread.id = id;
    thread.vfork_child = false;
    core::restore_thread_memory(thread.context, memory.data());
  }
};

int64_t vfork_process(Thread& parent, const CloneArguments& arguments, uint64_t mask) {
  const SavedThread saved(parent);
  VforkChild child = {&parent, &arguments, mask, false, {}};
  std::copy_n(parent.signals.actions->actions, std::size(child.actions.actions),
              child.actions.actions);
  constexpr uint64_t kKept = CLONE_VM | CLONE_VFORK;
  const uint64_t flags = kKept | static_cast<uint64_t>(arguments.exit_signal);
  // If the child's memory is a copy, no other thread will ever release a lock in it.
  lock_runtime();
  const int64_t id = os_vfork(flags, run_vfork_child, &child);
  bool forget = false;
  if (child.began) {
    forget = take_over(parent);
    lock_runtime();
  } else {
    can_borrow = id < 0;
  }
  saved.restore(parent);  // while nobody asks the thread to forget anything
  unlock_runtime();
  if (forget) {
    forget_everything(parent);
  }
  if (id > 0 && (arguments.flags & CLONE_PARENT_SETTID) != 0) {
    write_word(arguments.parent_tid, static_cast<int>(id));
  }
  return id;
}

}  // namespace

int64_t create_process(Thread& parent, const CloneArguments& arguments) {
  const uint64_t mask = set_kernel_mask(kAllSignals);
  if ((parent.context.pending & ~core::kChangesPending) != 0) {
    return kNotMade;
  }
  const bool borrow =
      can_borrow && (arguments.flags & CLONE_VM) != 0 && (arguments.flags & ~kOwnFlags) == 0;
  const int64_t result =
      borrow ? vfork_process(parent, arguments, mask) : fork_process(parent, arguments);
  if (result > 0 && arguments.pidfd != 0) {
    // Nobody has waited for the child yet, so the number is still its own.
    write_word(arguments.pidfd, static_cast<int>(syscall(SYS_pidfd_open, result, 0)));
  }
  set_kernel_mask(mask);
  return result;
}

int64_t sys_clone(Thread& thread, const Call& call) {
  const uint64_t flags = call.arguments[0] & 0xffffffff;
  const bool pidfd = (flags & CLONE_PIDFD) != 0;
  return clone_any(thread, {
                               .flags = flags & ~uint64_t{CSIGNAL},
                               .exit_signal = static_cast<int>(flags & CSIGNAL),
                               .stack = call.arguments[1],
                               .parent_tid = call.arguments[2],
                               .child_tid = call.arguments[4],
                               .tls = call.arguments[3],
                               .pidfd = pidfd ? call.arguments[2] : 0,
                           });
}

int64_t sys_clone3(Thread& thread, const Call& call) {
  clone_args given = {};
  const uint64_t size = call.arguments[1];
  if (size < CLONE_ARGS_SIZE_VER0) {
    return -EINVAL;
  }
  if (core_copy(&given, reinterpret_cast<const void*>(call.arguments[0]),
                std::min<uint64_t>(size, sizeof given)) != 0) {
    return -EFAULT;
  }
  // Chosen ids and cgroups: whoever asks for them has to live without.
  if (given.set_tid_size != 0 || (given.flags & CLONE_INTO_CGROUP) != 0) {
    return -ENOSYS;
  }
  return clone_any(thread, {
                               .flags = given.flags,
                               .exit_signal = static_cast<int>(given.exit_signal),
                               .stack = given.stack != 0 ? given.stack + given.stack_size : 0,
                               .parent_tid = given.parent_tid,
                               .child_tid = given.child_tid,
                               .tls = given.tls,
                               .pidfd = given.pidfd,
                           });
}

}  // namespace os
