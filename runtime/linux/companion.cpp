// A process that runs beside its parent in the same memory, as a sanitizer's search for leaks
// starts one: it stops all threads, looks at them through ptrace, and ends. To the runtime it is
// one more thread of the application; to the kernel it is a process, so it has no pthread of the C
// library's.
#include <elf.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <iterator>
#include <mutex>

#include "runtime/core/entry.h"
#include "runtime/linux/process.h"
#include "runtime/linux/signals.h"
#include "runtime/linux/syscalls.h"
#include "runtime/linux/threads.h"

// The C library's, for the threads that it makes itself.
extern "C" void* _dl_allocate_tls(void* memory);
extern "C" void _dl_deallocate_tls(void* tls, bool with_memory);

namespace os {
namespace {

constexpr size_t kStack = 512U << 10;

struct Companion {
  Companion* next;
  Thread* thread;
  const Thread* parent;
  const CloneArguments* arguments;
  ClientActions client_actions;
  ActionTable actions;
  void* tls;
  void* stack;
  std::atomic<bool> began;
  int alive;  // the kernel clears it when the process is gone
};
constinit core::Lock companions_mutex;
constinit Companion* companions = nullptr;

int companion_main(void* argument) {
  auto& companion = *static_cast<Companion*>(argument);
  Thread& thread = *companion.thread;
  set_client_actions(companion.client_actions);
  begin_thread(thread);
  core::inherit_thread_memory(thread.context, companion.parent->context);
  write_ids(*companion.arguments, thread.id);
  companion.began.store(true);
  apply_mask(thread);
  run_application(thread);
  return 0;
}

void release(Companion& companion) {
  munmap(companion.stack, kStack);
  _dl_deallocate_tls(companion.tls, true);
  delete_thread(companion.thread);
  delete &companion;
}

// What processes have left that are gone.
void release_ended() {
  for (Companion** link = &companions; *link != nullptr;) {
    Companion& companion = **link;
    if (__atomic_load_n(&companion.alive, __ATOMIC_ACQUIRE) == 0) {
      *link = companion.next;
      release(companion);
    } else {
      link = &companion.next;
    }
  }
}

Companion* new_companion(Thread& parent, const CloneArguments& arguments) {
  void* const tls = _dl_allocate_tls(nullptr);
  void* const stack = mmap(nullptr, kStack, PROT_READ | PROT_WRITE,
                           MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (tls == nullptr || stack == MAP_FAILED) {
    return nullptr;
  }
  auto* const companion = new Companion{};
  companion->thread = new_thread();
  leave_process();  // it keeps nobody alive
  companion->parent = &parent;
  companion->arguments = &arguments;
  companion->client_actions = client_actions();
  companion->tls = tls;
  companion->stack = stack;
  companion->alive = 1;
  Thread& child = *companion->thread;
  inherit(parent, arguments, child);
  child.vfork_child = true;  // like one, it ends without its parent's report
  if ((arguments.flags & CLONE_SIGHAND) == 0) {
    std::copy_n(parent.signals.actions->actions, std::size(companion->actions.actions),
                companion->actions.actions);
    child.signals.actions = &companion->actions;
  }
  return companion;
}

// ---- what it looks at ---------------------------------------------------------------------------

// The registers of a stopped thread that shares this memory are what the application knows.
void show_registers(const core::Context& context, user_regs_struct& regs) {
  if (context.in_cache == 0) {
    std::copy_n(context.x, std::size(context.x), regs.regs);
    regs.sp = context.sp;
    regs.pc = context.pc;
  }
  regs.regs[core::kStolenRegister] = context.x[core::kStolenRegister];
}

int64_t get_registers(Thread& thread, const Call& call, Thread& stopped) {
  const int64_t result = pass_on(thread, call);
  iovec given;
  user_regs_struct regs;
  if (result == 0 &&
      core_copy(&given, reinterpret_cast<const void*>(call.arguments[3]), sizeof given) == 0 &&
      given.iov_len == sizeof regs && core_copy(&regs, given.iov_base, sizeof regs) == 0) {
    show_registers(stopped.context, regs);
    core_copy(given.iov_base, &regs, sizeof regs);
  }
  return result;
}

// It stops where it holds none of the runtime's locks, which the calling thread will want.
int64_t stop(Thread& thread, const Call& call, int id) {
  lock_runtime();
  const int64_t result = pass_on(thread, call);
  siginfo_t info;
  if (result == 0) {
    syscall(SYS_waitid, P_PID, id, &info, WSTOPPED | WNOWAIT | __WALL, nullptr);
  }
  unlock_runtime();
  return result;
}

}  // namespace

int64_t create_companion(Thread& parent, const CloneArguments& arguments) {
  const uint64_t mask = set_kernel_mask(kAllSignals);
  if ((parent.context.pending & ~core::kChangesPending) != 0) {
    return kNotMade;
  }
  const std::lock_guard lock(companions_mutex);
  release_ended();
  Companion* const companion = new_companion(parent, arguments);
  int64_t result = -EAGAIN;
  if (companion != nullptr) {
    constexpr uint64_t kOwn = CLONE_SETTLS | CLONE_PARENT_SETTID | CLONE_CHILD_SETTID;
    const uint64_t flags = (arguments.flags & ~kOwn) | CLONE_SETTLS | CLONE_CHILD_CLEARTID |
                           static_cast<uint64_t>(arguments.exit_signal);
    result = clone(companion_main, static_cast<char*>(companion->stack) + kStack,
                   static_cast<int>(flags), companion, nullptr, companion->tls, &companion->alive);
    result = result < 0 ? -errno : result;
  }
  if (result > 0) {
    companion->next = companions;
    companions = companion;
    while (!companion->began.load() && __atomic_load_n(&companion->alive, __ATOMIC_ACQUIRE) != 0) {
      sched_yield();
    }
  } else if (companion != nullptr) {
    release(*companion);
  }
  set_kernel_mask(mask);
  return result;
}

int64_t sys_ptrace(Thread& thread, const Call& call) {
  const auto id = static_cast<int>(call.arguments[1]);
  Thread* const other = find_thread(id);
  if (other == nullptr) {
    return pass_on(thread, call);
  }
  switch (call.arguments[0]) {
  case PTRACE_ATTACH:
    return stop(thread, call, id);
  case PTRACE_GETREGSET:
    return call.arguments[2] == NT_PRSTATUS ? get_registers(thread, call, *other)
                                            : pass_on(thread, call);
  default:
    return pass_on(thread, call);
  }
}

}  // namespace os
