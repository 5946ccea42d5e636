// The list by which a debugger finds the threads' records.
#include "sve/client/thread_records.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <map>
#include <thread>

namespace {

std::map<long, const cpu_state*> listed() {
  std::map<long, const cpu_state*> threads;
  for (const sve_thread* thread = sve_threads; thread != nullptr; thread = thread->next)
    threads[thread->id] = thread->record;
  return threads;
}

TEST(ThreadRecords, AreListedWhileTheThreadLives) {
  static cpu_state mine, others;
  using Threads = std::map<long, const cpu_state*>;
  list_thread_record(&mine);
  std::thread([] {
    list_thread_record(&others);
    EXPECT_EQ(listed(), (Threads{{getpid(), &mine}, {gettid(), &others}}));
    unlist_thread_record(&others);
    unlist_thread_record(&others);  // not listed any more: nothing happens
  }).join();
  EXPECT_EQ(listed(), (Threads{{getpid(), &mine}}));
  unlist_thread_record(&mine);
  EXPECT_EQ(listed(), Threads{});
}

// In the child only the forking thread is left, and its number is another one.
TEST(ThreadRecords, FollowAFork) {
  static cpu_state mine, others;
  keep_thread_records_over_fork();
  list_thread_record(&mine);
  std::thread([] {
    list_thread_record(&others);
    const pid_t child = fork();
    if (child == 0)
      _exit(listed() == std::map<long, const cpu_state*>{{gettid(), &others}} ? 0 : 1);
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(listed().size(), 2u);
    unlist_thread_record(&others);
  }).join();
  unlist_thread_record(&mine);
}

}  // namespace
