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

// More addresses than are kept at hand, and those that share a place there.
TEST_F(Statistics, CountManySites) {
  constexpr int sites = 5000;
  std::vector<uint32_t> code(sites, add_z0_p0_z0);
  for (int round = 1; round <= 3; round++)
    for (int i = 0; i < sites; i += round)
      update_sve_stats(&code[i], code[i]);
  ASSERT_EQ(icounts.size(), size_t{sites});
  for (int i = 0; i < sites; i++)
    ASSERT_EQ(icounts.at(&code[i]).count, 1u + (i % 2 == 0) + (i % 3 == 0)) << i;
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
