#include "runtime/linux/threads.h"

#include <linux/futex.h>
#include <pthread.h>
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstring>

#include "runtime/core/entry.h"
#include "runtime/linux/process.h"
#include "runtime/linux/signals.h"
#include "runtime/linux/syscalls.h"

namespace os {
namespace {

// The runtime's own stack of a thread: clean calls run on it.
constexpr size_t kRuntimeStack = 512U << 10;

struct Birth {
  Thread* thread;
  const Thread* parent;
  const CloneArguments* arguments;
  ClientActions client_actions;
  std::atomic<int> id;  // 0 until the thread has begun
};

// All signals are blocked from before the thread's beginning until its mask is applied.
void* thread_main(void* argument) {
  auto* birth = static_cast<Birth*>(argument);
  Thread* thread = birth->thread;
  set_client_actions(birth->client_actions);
  begin_thread(*thread);
  core::inherit_thread_memory(thread->context, birth->parent->context);
  write_ids(*birth->arguments, thread->id);
  // The parent goes on, and `birth` with it.
  birth->id.store(thread->id);
  syscall(SYS_futex, &birth->id, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
  apply_mask(*thread);
  run_application(*thread);
  core::set_current_context(nullptr);
  delete_thread(thread);
  return nullptr;
}

bool start_pthread(Birth& birth) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
  pthread_attr_setstacksize(&attributes, kRuntimeStack);
  pthread_t ignored;
  const int error = pthread_create(&ignored, &attributes, thread_main, &birth);
  pthread_attr_destroy(&attributes);
  return error == 0;
}

// With its first thread this C library takes the signal by which it would change the user in all
// threads. It is the application's library that does so, by the same signal.
void renew_setxid_action() {
  constexpr int kSetxid = 33;
  static constinit std::atomic_flag renewed = {};
  if (!renewed.test_and_set()) {
    renew_action(kSetxid);
  }
}

// ---- robust mutexes -----------------------------------------------------------------------------

constexpr unsigned kMostRobustMutexes = 2048;  // as in the kernel, against a circle

// The kernel's handle_futex_death.
void release_futex(uint64_t address, int id) {
  uint32_t word;
  auto* futex = reinterpret_cast<uint32_t*>(address);
  if (address % sizeof word != 0 || core_copy(&word, futex, sizeof word) != 0) {
    return;
  }
  bool released = false;
  while (!released && (word & FUTEX_TID_MASK) == static_cast<uint32_t>(id)) {
    // A waiter may add its bit meanwhile.
    const uint32_t dead = (word & FUTEX_WAITERS) | FUTEX_OWNER_DIED;
    released =
        __atomic_compare_exchange_n(futex, &word, dead, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
  }
  if (released && (word & FUTEX_WAITERS) != 0) {
    syscall(SYS_futex, futex, FUTEX_WAKE, 1, nullptr, nullptr, 0);
  }
}

// The list's head: the first entry, the futex's place in an entry, and an entry in the making. The
// lowest bit of a link tells of priority inheritance.
void release_robust_mutexes(const Thread& thread) {
  constexpr uint64_t kInherits = 1;
  uint64_t head[3];
  if (thread.robust_list == 0 ||
      core_copy(head, reinterpret_cast<const void*>(thread.robust_list), sizeof head) != 0) {
    return;
  }
  uint64_t entry = head[0] & ~kInherits;
  const uint64_t in_the_making = head[2] & ~kInherits;
  for (unsigned i = 0; i < kMostRobustMutexes && entry != thread.robust_list; ++i) {
    uint64_t next;
    if (core_copy(&next, reinterpret_cast<const void*>(entry), sizeof next) != 0) {
      return;
    }
    if (entry != in_the_making) {
      release_futex(entry + head[1], thread.id);
    }
    entry = next & ~kInherits;
  }
  if (in_the_making != 0) {
    release_futex(in_the_making + head[1], thread.id);
  }
}

}  // namespace

void inherit(const Thread& parent, const CloneArguments& arguments, Thread& child) {
  const core::Context& from = parent.context;
  core::Context& to = child.context;
  std::copy_n(from.x, std::size(from.x), to.x);
  std::memcpy(to.q, from.q, sizeof to.q);
  to.pc = from.pc;
  to.nzcv = from.nzcv;
  to.fpsr = from.fpsr;
  to.fpcr = from.fpcr;
  to.sp = arguments.stack != 0 ? arguments.stack : from.sp;
  to.tpidr = (arguments.flags & CLONE_SETTLS) != 0 ? arguments.tls : from.tpidr;
  to.x[0] = 0;
  child.keeps_vector_length = parent.keeps_vector_length;
  child.signals.mask = parent.signals.mask;
  child.filters = parent.filters;
  child.clear_tid = (arguments.flags & CLONE_CHILD_CLEARTID) != 0 ? arguments.child_tid : 0;
}

void write_ids(const CloneArguments& arguments, int id) {
  if ((arguments.flags & CLONE_PARENT_SETTID) != 0) {
    write_word(arguments.parent_tid, id);
  }
  if ((arguments.flags & CLONE_CHILD_SETTID) != 0) {
    write_word(arguments.child_tid, id);
  }
}

int64_t create_thread(Thread& parent, const CloneArguments& arguments) {
  const uint64_t mask = set_kernel_mask(kAllSignals);
  if ((parent.context.pending & ~core::kChangesPending) != 0) {
    return kNotMade;
  }
  Thread* child = new_thread();
  inherit(parent, arguments, *child);
  Birth birth = {child, &parent, &arguments, client_actions(), {0}};
  int64_t result = -EAGAIN;
  if (start_pthread(birth)) {
    renew_setxid_action();
    while (birth.id.load() == 0) {
      syscall(SYS_futex, &birth.id, FUTEX_WAIT_PRIVATE, 0, nullptr, nullptr, 0);
    }
    result = birth.id.load();
  } else {
    leave_process();
    delete_thread(child);
  }
  set_kernel_mask(mask);
  return result;
}

bool write_word(uint64_t address, int value) {
  return core_copy(reinterpret_cast<void*>(address), &value, sizeof value) == 0;
}

void tell_thread_end(Thread& thread) {
  release_robust_mutexes(thread);
  // The kernel must not walk the list again: its memory may be gone by then.
  static constinit uint64_t empty[3] = {};
  empty[0] = reinterpret_cast<uint64_t>(empty);
  syscall(SYS_set_robust_list, empty, sizeof empty);
  if (thread.clear_tid != 0 && write_word(thread.clear_tid, 0)) {
    syscall(SYS_futex, thread.clear_tid, FUTEX_WAKE, 1, nullptr, nullptr, 0);
  }
}

int64_t sys_set_tid_address(Thread& thread, const Call& call) {
  thread.clear_tid = call.arguments[0];
  return thread.id;
}

// The list is walked here, so it need not be known to a host that has no such lists.
int64_t sys_set_robust_list(Thread& thread, const Call& call) {
  const int64_t result = pass_on(thread, call);
  if (result == 0 || result == -ENOSYS) {
    thread.robust_list = call.arguments[0];
    return 0;
  }
  return result;
}

}  // namespace os
