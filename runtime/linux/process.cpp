#include "runtime/linux/process.h"

#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <mutex>

#include "runtime/core/cache.h"
#include "runtime/core/client.h"
#include "runtime/core/code_map.h"
#include "runtime/core/decoded.h"
#include "runtime/core/dispatch.h"
#include "runtime/core/fatal.h"
#include "runtime/core/memory.h"
#include "runtime/linux/mappings.h"
#include "runtime/linux/messages.h"
#include "runtime/linux/modules.h"
#include "runtime/linux/profile.h"
#include "runtime/linux/seccomp.h"
#include "runtime/linux/signals.h"
#include "runtime/linux/syscalls.h"
#include "runtime/linux/threads.h"

namespace os {

ProcessPaths paths;
Options options;

namespace {

constinit core::Lock threads_mutex;
constinit Thread* threads = nullptr;
constinit int running = 0;  // of them, those that have not begun to end
constinit std::atomic_flag ending = {};
constinit int exit_status = 0;  // of the main thread, once it ended alone

// How long to wait for another thread to leave its cache: one that is stopped never does.
constexpr int kPatience = 100000;

void wait_until_left(const Thread& other) {
  for (int i = 0; i < kPatience && other.context.in_cache != 0 &&
                  (other.context.pending & core::kChangesPending) != 0;
       ++i) {
    sched_yield();
  }
}

void end_thread(Thread& thread) {
  for (const auto event : core::client_events().thread_exit) {
    event(&thread.context);
  }
}

void run_exit_events() {
  const ReportStream stream;
  for (const auto event : core::client_events().exit) {
    event();
  }
}

}  // namespace

Thread* new_thread() {
  auto* thread = new Thread{};
  thread->context.cache = core::create_cache();
  thread->context.last_exit = EXIT_NONE;
  thread->signals.actions = &process_actions;
  const std::lock_guard lock(threads_mutex);
  thread->next = threads;
  threads = thread;
  ++running;
  return thread;
}

void delete_thread(Thread* thread) {
  {
    const std::lock_guard lock(threads_mutex);
    Thread** link = &threads;
    while (*link != thread) {
      link = &(*link)->next;
    }
    *link = thread->next;
  }
  core::destroy_cache(thread->context.cache);
  core::free_all_thread_memory(thread->context);
  ir::dispose(thread->context.arena);
  delete thread;
}

bool leave_process() {
  const std::lock_guard lock(threads_mutex);
  return --running == 0;
}

Thread* find_thread(int id) {
  const std::lock_guard lock(threads_mutex);
  Thread* thread = threads;
  while (thread != nullptr && thread->id != id) {
    thread = thread->next;
  }
  return thread;
}

bool is_one_of_many() {
  const std::lock_guard lock(threads_mutex);
  return running > 1;
}

int give_filters_to_all(Thread& thread, const CallFilter* filters) {
  const std::lock_guard lock(threads_mutex);
  for (const Thread* other = threads; other != nullptr; other = other->next) {
    if (other->strict || !begins_with(thread.filters, other->filters)) {
      return other->id;
    }
  }
  for (Thread* other = threads; other != nullptr; other = other->next) {
    __atomic_store_n(&other->filters, filters, __ATOMIC_RELEASE);
  }
  return 0;
}

void keep_only(Thread& thread) {
  threads = &thread;
  thread.next = nullptr;
  thread.main = true;
  running = 1;
  ending.clear();
}

void begin_thread(Thread& thread) {
  if (!thread.main) {
    core::draw_lock_owner();
  }
  core::set_current_context(&thread.context);
  thread.id = static_cast<int>(syscall(SYS_gettid));
  prepare_thread_signals(thread);
  for (const auto event : core::client_events().thread_init) {
    event(&thread.context);
  }
}

void exit_process(Thread& thread, int status) {
  // A vfork child shares its memory with the parent, whose client goes on.
  if (!thread.vfork_child) {
    set_kernel_mask(kAllSignals);
    while (ending.test_and_set()) {
      pause();  // another thread ends the process
    }
    end_thread(thread);
    run_exit_events();
    write_profile();
  }
  syscall(SYS_exit_group, status);
  __builtin_unreachable();
}

namespace {

void forget_everywhere(Thread& thread, uint64_t begin, uint64_t end) {
  core::forget_own_fragments(thread.context, begin, end);
  const std::lock_guard lock(threads_mutex);
  for (Thread* other = threads; other != nullptr; other = other->next) {
    if (other != &thread) {
      core::request_forgetting(other->context, begin, end);
    }
  }
  for (Thread* other = threads; other != nullptr; other = other->next) {
    if (other != &thread) {
      wait_until_left(*other);
    }
  }
}

}  // namespace

void forget_everything(Thread& thread) { forget_everywhere(thread, 0, ~uint64_t{0}); }

void mapping_changed(Thread& thread, uint64_t begin, uint64_t end) {
  if (core::forget_decoded(begin, end)) {
    forget_everywhere(thread, begin, end);
  }
}

void code_written(Thread& thread, uint64_t begin, uint64_t end) {
  if (core::forget_rewritten(begin, end)) {
    forget_everywhere(thread, begin, end);
  }
}

namespace {

// In the order in which they are taken.
constinit core::Lock* const locks[] = {
    &mappings_mutex,           &threads_mutex,        &process_actions.mutex, &modules_mutex,
    &application_memory_mutex, &core::code_map_mutex, &core::decoded_mutex,   &core::memory_mutex};

}  // namespace

void lock_runtime() {
  for (core::Lock* lock : locks) {
    lock->lock();
  }
}

void unlock_runtime() {
  for (core::Lock* lock : locks) {
    lock->unlock();
  }
}

bool take_over(Thread& thread) {
  // Another's cache is held with the list of all threads only.
  for (Thread* other = threads_mutex.is_own() ? threads : nullptr; other != nullptr;
       other = other->next) {
    if (other != &thread && other->context.cache->mutex.unlock_own()) {
      core::make_executable(*other->context.cache);
    }
  }
  core::Cache& cache = *thread.context.cache;
  if (cache.mutex.is_own()) {
    core::renew_cache(cache);
    thread.context.arena = {};
    cache.mutex.unlock();
  }
  const bool decoding = core::decoded_mutex.is_own();
  if (decoding) {
    core::abandon_decoded();
  }
  for (core::Lock* lock : locks) {
    if (lock->unlock_own() && lock->changing) {
      core::fatal("a child was killed while it changed a table of its parent's");
    }
  }
  return decoding;
}

int64_t sys_exit_group(Thread& thread, const Call& call) {
  exit_process(thread, static_cast<int>(call.arguments[0]));
}

// One thread ends. The last one takes the process with it, whose status is the main thread's.
int64_t sys_exit(Thread& thread, const Call& call) {
  const int status = static_cast<int>(call.arguments[0]);
  // A signal for the whole process that has come to this thread would be lost with it.
  set_kernel_mask(kAllSignals);
  if ((thread.context.pending & ~core::kChangesPending) != 0) {
    return kNotMade;
  }
  if (thread.main) {
    exit_status = status;
  }
  if (thread.vfork_child || leave_process()) {
    exit_process(thread, thread.vfork_child ? status : exit_status);
  }
  end_thread(thread);
  tell_thread_end(thread);
  release_thread_signals(thread);
  thread.exiting = true;
  if (thread.main) {
    core::set_current_context(nullptr);
    delete_thread(&thread);
    syscall(SYS_exit, status);
  }
  return kNoResult;
}

}  // namespace os
