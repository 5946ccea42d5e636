// Counts of emulated instructions.
#include "sve/client/statistics.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#include <vector>

#include "sve/client/dispatch.h"
#include "tests/core/child_process.h"

namespace {

constexpr uint32_t add_z0_p0_z0 = 0x04000000;  // ADD Z0.B, P0/M, Z0.B, Z0.B

class Statistics : public testing::Test {
protected:
  void SetUp() override {
    icounts.clear();
    sve_instr_count = 0;
  }

  static void execute(uint32_t* site, int times) {
    cpu_state state = {};
    for (int i = 0; i < times; i++) {
      state.pc = reinterpret_cast<uint64_t>(site);
      ASSERT_EQ(execute_sve_instruction(&state), aarch64_decode_ok);
    }
  }

  static std::string dump() {
    return run_in_child([] { dump_sve_stats(); }).errors;
  }

  static std::string line(const void* site, uint32_t word, int count) {
    char text[80];
    snprintf(text, sizeof text, "%p: 0x%08x %d\n", site, word, count);
    return text;
  }
};

TEST_F(Statistics, StartEmpty) { EXPECT_EQ(dump(), ""); }

TEST_F(Statistics, CountBySite) {
  uint32_t sites[] = {add_z0_p0_z0, add_z0_p0_z0, add_z0_p0_z0 | 1 << 5, 0};
  execute(&sites[2], 1000);
  execute(&sites[0], 7);
  execute(&sites[1], 1);
  EXPECT_EQ(sve_instr_count, 1008u);
  EXPECT_EQ(icounts.size(), 3u);
  EXPECT_EQ(dump(), line(&sites[0], add_z0_p0_z0, 7) + line(&sites[1], add_z0_p0_z0, 1) +
                        line(&sites[2], sites[2], 1000));
  cpu_state state = {};
  state.pc = reinterpret_cast<uint64_t>(&sites[3]);  // no instruction there
  EXPECT_EQ(execute_sve_instruction(&state), aarch64_decode_unimplemented);
  EXPECT_EQ(sve_instr_count, 1008u);
  EXPECT_EQ(icounts.size(), 3u);
}

TEST_F(Statistics, KeepASitesFirstWord) {
  uint32_t site = 0;
  update_sve_stats(&site, 0x04000000);
  update_sve_stats(&site, 0x25289000);
  EXPECT_EQ(dump(), line(&site, 0x04000000, 2));
}

TEST_F(Statistics, CountAllThreads) {
  constexpr int threads = 4, times = 100'000 / TEST_SLOWDOWN;
  uint32_t sites[threads + 1];
  for (uint32_t& site : sites)
    site = add_z0_p0_z0;
  std::vector<std::thread> running;
  for (int t = 0; t < threads; t++)
    running.emplace_back([&, t] {
      execute(&sites[t], times);
      execute(&sites[threads], times);  // shared by all
    });
  for (std::thread& thread : running)
    thread.join();
  EXPECT_EQ(sve_instr_count, 2u * threads * times);
  std::string expected;
  for (int t = 0; t < threads; t++)
    expected += line(&sites[t], add_z0_p0_z0, times);
  EXPECT_EQ(dump(), expected + line(&sites[threads], add_z0_p0_z0, threads * times));
}

// Counting takes the mutex without its functions: whoever uses these must exclude it nevertheless.
TEST_F(Statistics, ShareTheLockWithItsOwnFunctions) {
  constexpr int threads = 3, times = 60'000 / TEST_SLOWDOWN;
  uint32_t sites[threads];
  uint64_t total = 0;  // of the mutex's other users
  bool changed = false;
  std::vector<std::thread> running;
  for (int t = 0; t < threads; t++)
    running.emplace_back([&, t] {
      for (int i = 0; i < times; i++) {
        update_sve_stats(&sites[t], add_z0_p0_z0);
        const std::lock_guard lock(icounts_mutex);
        const uint64_t before = sve_instr_count;
        total++;
        changed = changed || sve_instr_count != before;
      }
    });
  for (std::thread& thread : running)
    thread.join();
  EXPECT_FALSE(changed);
  EXPECT_EQ(total, uint64_t{threads} * times);
  EXPECT_EQ(sve_instr_count, uint64_t{threads} * times);
  EXPECT_TRUE(icounts_mutex.try_lock());
  icounts_mutex.unlock();
}

TEST_F(Statistics, WaitForWhoeverHoldsTheLock) {
  uint32_t site = 0;
  icounts_mutex.lock();
  std::thread counting([&] { update_sve_stats(&site, add_z0_p0_z0); });
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_EQ(sve_instr_count, 0u);
  icounts_mutex.unlock();
  counting.join();
  EXPECT_EQ(sve_instr_count, 1u);
}

// The thread's own counts have to be given back before its end, which a test's main thread never
// has.
struct OwnCounts {
  OwnCounts() { begin_thread_counts(); }
  ~OwnCounts() { end_thread_counts(); }
};

// More addresses than a thread has places for, and those that share one.
TEST_F(Statistics, CountManySites) {
  constexpr int sites = 3 * thread_counts::places_size;
  std::vector<uint32_t> code(sites, add_z0_p0_z0);
  std::string expected;
  {
    const OwnCounts counts;
    for (int round = 1; round <= 3; round++)
      for (int i = 0; i < sites; i += round)
        update_sve_stats(&code[i], code[i]);
    for (int i = 0; i < sites; i++)
      expected += line(&code[i], code[i], 1 + (i % 2 == 0) + (i % 3 == 0));
    EXPECT_EQ(dump(), expected);
  }
  EXPECT_EQ(dump(), expected);
  ASSERT_EQ(icounts.size(), size_t{sites});
  for (int i = 0; i < sites; i++)
    ASSERT_EQ(icounts.at(&code[i]).count, 1u + (i % 2 == 0) + (i % 3 == 0)) << i;
}

// More threads than have counts of their own, and some that leave the total behind.
TEST_F(Statistics, SumUpWhatThreadsCount) {
  constexpr int threads = counting_threads + 6, times = 300;
  uint32_t sites[3] = {add_z0_p0_z0, add_z0_p0_z0 + 1, add_z0_p0_z0 + 2};
  std::atomic<int> ready = 0;
  std::atomic<bool> over = false;
  std::vector<std::thread> running;
  for (int t = 0; t < threads; t++)
    running.emplace_back([&] {
      const OwnCounts counts;
      for (int i = 0; i < times; i++) {
        update_sve_stats(&sites[0], sites[0]);
        leave_to_update_sve_stats(&sites[1], sites[1]);
      }
      for (int i = 0; i < 2; i++)  // the first execution of an address is counted at once
        leave_to_update_sve_stats(&sites[2], sites[2]);
      ready++;
      while (!over)
        std::this_thread::yield();
    });
  while (ready != threads)
    std::this_thread::yield();
  const std::string expected = line(&sites[0], sites[0], threads * times) +
                               line(&sites[1], sites[1], threads * times) +
                               line(&sites[2], sites[2], threads * 2);
  constexpr uint64_t total = uint64_t{threads} * (2 * times + 2);
  EXPECT_EQ(executed_sve_instructions(), total);
  EXPECT_LT(sve_instr_count, total);
  EXPECT_EQ(dump(), expected);
  const child_result child = run_in_child([] {
    fprintf(stderr, "%lu %lu\n", sve_instr_count.load(), executed_sve_instructions());
    dump_sve_stats();
  });
  EXPECT_EQ(child.errors, std::to_string(total) + " " + std::to_string(total) + "\n" + expected);
  over = true;
  for (std::thread& thread : running)
    thread.join();
  EXPECT_EQ(sve_instr_count, total);
  EXPECT_EQ(dump(), expected);
}

// Who reads while threads count gets no less than was counted before, and no more than at last.
TEST_F(Statistics, ReadWhileThreadsCount) {
  constexpr int threads = 3, times = 60'000 / TEST_SLOWDOWN;
  uint32_t sites[threads];
  std::atomic<uint64_t> counted = 0;
  std::vector<std::thread> running;
  for (int t = 0; t < threads; t++)
    running.emplace_back([&, t] {
      const OwnCounts counts;
      for (int i = 0; i < times; i++) {
        leave_to_update_sve_stats(&sites[t], add_z0_p0_z0);
        update_sve_stats(&sites[t], add_z0_p0_z0);
        counted += 2;
      }
    });
  for (uint64_t before = 0; before < 2ul * threads * times;) {
    before = counted;
    const uint64_t read = executed_sve_instructions();
    ASSERT_GE(read, before);
    ASSERT_LE(read, counted + 2 * threads);
  }
  for (std::thread& thread : running)
    thread.join();
}

// The lock may be another thread's at the moment of a fork; the child must be able to count on.
TEST_F(Statistics, CountInAForkedChild) {
  uint32_t site = add_z0_p0_z0;
  std::atomic<bool> stop = false;
  std::thread counting([&] {
    while (!stop)
      update_sve_stats(&site, site);
  });
  for (int i = 0; i < 50; i++) {
    const child_result result = run_in_child([&] {
      alarm(5);  // against a lock that nobody releases
      update_sve_stats(&site, site);
    });
    EXPECT_TRUE(result.exited_with(0)) << i;
  }
  stop = true;
  counting.join();
}

}  // namespace
