#include "sve/client/thread_records.h"

#include <pthread.h>
#include <unistd.h>

#include <mutex>

constinit sve_thread* sve_threads = nullptr;

namespace {

constinit std::mutex threads_mutex;
constinit long forking_thread = 0;

void before_fork() {
  threads_mutex.lock();
  forking_thread = gettid();
}

void after_fork_in_parent() { threads_mutex.unlock(); }

void after_fork_in_child() {
  sve_thread** link = &sve_threads;
  while (sve_thread* const thread = *link) {
    if (thread->id == forking_thread) {
      thread->id = gettid();
      link = &thread->next;
    } else {
      *link = thread->next;
      delete thread;
    }
  }
  threads_mutex.unlock();
}

}  // namespace

void list_thread_record(cpu_state* record) {
  const std::lock_guard lock(threads_mutex);
  sve_threads = new sve_thread{sve_threads, record, gettid()};
}

void unlist_thread_record(const cpu_state* record) {
  const std::lock_guard lock(threads_mutex);
  for (sve_thread** link = &sve_threads; *link != nullptr; link = &(*link)->next)
    if ((*link)->record == record) {
      sve_thread* const thread = *link;
      *link = thread->next;
      delete thread;
      return;
    }
}

void keep_thread_records_over_fork() {
  pthread_atfork(before_fork, after_fork_in_parent, after_fork_in_child);
}
