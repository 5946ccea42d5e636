// Counts of emulated instructions.
#include "sve/stats/statistics.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include "sve/decode/dispatch.h"
#include "tests/core/child_process.h"

namespace {

constexpr uint32_t add_z0_p0_z0 = 0x04000000;  // ADD Z0.B, P0/M, Z0.B, Z0.B

class Statistics : public testing::Test {
protected:
  void SetUp() override {
    icounts.clear();
    sve_instr_count = 0;
    for (thread_counts* share = sve_thread_counts; share != nullptr; share = share->next)
      share->step = short_lock::step_for(sve_instr_count, icounts_mutex);
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

// The main thread's share has to be given back, which its end does elsewhere.
struct Share {
  Share() { begin_thread_counts(); }
  ~Share() { end_thread_counts(); }
};

size_t number_of_shares() {
  size_t number = 0;
  for (const thread_counts* share = sve_thread_counts; share != nullptr; share = share->next)
    number++;
  return number;
}

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

// All ways to count in the total that can be had here.
std::vector<short_lock::one_step> steps() {
  using short_lock::one_step;
  switch (short_lock::step_for(sve_instr_count, icounts_mutex)) {
  case one_step::swap:
    return {one_step::swap, one_step::exclusive, one_step::none};
  case one_step::exclusive:
    return {one_step::exclusive, one_step::none};
  default:
    return {one_step::none};
  }
}

// By each of these ways, on threads with a share and one without.
TEST_F(Statistics, CountAllThreads) {
  constexpr int threads = 4, times = 100'000 / TEST_SLOWDOWN;
  const int rounds = static_cast<int>(steps().size());
  uint32_t sites[threads + 1];
  for (uint32_t& site : sites)
    site = add_z0_p0_z0;
  for (const short_lock::one_step step : steps()) {
    for (thread_counts* share = sve_thread_counts; share != nullptr; share = share->next)
      share->step = step;
    std::vector<std::thread> running;
    for (int t = 0; t < threads; t++)
      running.emplace_back([&, t] {
        const auto share = t == 0 ? nullptr : std::make_unique<Share>();
        execute(&sites[t], times);
        execute(&sites[threads], times);  // shared by all
      });
    for (std::thread& thread : running)
      thread.join();
  }
  EXPECT_EQ(sve_instr_count, uint64_t{2} * rounds * threads * times);
  std::string expected;
  for (int t = 0; t < threads; t++)
    expected += line(&sites[t], add_z0_p0_z0, rounds * times);
  EXPECT_EQ(dump(), expected + line(&sites[threads], add_z0_p0_z0, rounds * threads * times));
  EXPECT_LE(number_of_shares(), size_t{threads});
}

TEST_F(Statistics, HaveAStepOnThisProcessor) {
#ifdef __aarch64__
  EXPECT_NE(steps().front(), short_lock::one_step::none);
#else
  EXPECT_EQ(steps().front(), short_lock::one_step::none);
#endif
  static std::atomic<uint64_t> moved;  // as if into the program's data
  EXPECT_EQ(short_lock::step_for(moved, icounts_mutex), short_lock::one_step::none);
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
      const Share share;
      for (int i = 0; i < times; i++) {
        update_sve_stats(&sites[t], add_z0_p0_z0);
        if (i % 4 != 0)  // so that others find it free, too
          continue;
        const std::lock_guard lock(icounts_mutex);
        const uint64_t before = sve_instr_count;
        total++;
        changed = changed || sve_instr_count != before;
      }
    });
  for (std::thread& thread : running)
    thread.join();
  EXPECT_FALSE(changed);
  EXPECT_EQ(total, uint64_t{threads} * times / 4);
  EXPECT_EQ(sve_instr_count, uint64_t{threads} * times);
  EXPECT_TRUE(icounts_mutex.try_lock());
  icounts_mutex.unlock();
}

TEST_F(Statistics, WaitForWhoeverHoldsTheLock) {
  for (const int executed_before : {0, 1}) {
    uint32_t site = add_z0_p0_z0;
    sve_instr_count = 0;
    std::atomic<bool> ready = false, locked = false, counted = false;
    std::thread counting([&] {
      const Share share;
      execute(&site, executed_before);
      ready = true;
      while (!locked)
        std::this_thread::yield();
      execute(&site, 1);
      counted = true;
    });
    while (!ready)
      std::this_thread::yield();
    icounts_mutex.lock();
    locked = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(sve_instr_count, executed_before + 0u);
    EXPECT_FALSE(counted);
    icounts_mutex.unlock();
    counting.join();
    EXPECT_EQ(sve_instr_count, executed_before + 1u);
    EXPECT_EQ(executions(*icounts.find(&site)), executed_before + 1u);
    icounts.clear();
  }
}

// More addresses than a share has places, and those that share one.
TEST_F(Statistics, CountManySites) {
  constexpr int sites = 5 * thread_counts::places_size;
  std::vector<uint32_t> code(sites, add_z0_p0_z0);
  const Share share;
  for (int round = 1; round <= 3; round++)
    for (int i = 0; i < sites; i += round)
      update_sve_stats(&code[i], code[i]);
  std::string expected;
  for (int i = 0; i < sites; i++)
    expected += line(&code[i], code[i], 1 + (i % 2 == 0) + (i % 3 == 0));
  EXPECT_EQ(dump(), expected);
}

// The lock may be another thread's at the moment of a fork, or its count half done; the child has
// exact counts and must be able to count on.
TEST_F(Statistics, CountInAForkedChild) {
  constexpr int forks = 200;
  uint32_t sites[] = {add_z0_p0_z0, add_z0_p0_z0, add_z0_p0_z0};
  std::atomic<bool> stop = false;
  std::vector<std::thread> counting;
  for (uint32_t* site : {&sites[0], &sites[1]})
    counting.emplace_back([&, site] {
      const Share share;
      while (!stop) {
        update_sve_stats(site, *site);
        update_sve_stats(&sites[2], sites[2]);
      }
    });
  const auto sum_of_places = [] {
    uint64_t sum = 0;
    for (const auto& place : icounts)
      sum += executions(place);
    return sum;
  };
  const Share share;
  update_sve_stats(&sites[2], sites[2]);  // all places are known from now on
  for (int i = 0; i < forks; i++) {
    update_sve_stats(&sites[2], sites[2]);
    const uint64_t before = sum_of_places();
    const child_result result = run_in_child([&] {
      alarm(5);  // against a lock that nobody releases
      update_sve_stats(&sites[2], sites[2]);
      const uint64_t sum = sum_of_places();
      if (sum != sve_instr_count || sum <= before)
        fprintf(stderr, "%lu before, %lu by address, %lu in total\n", before, sum,
                sve_instr_count.load());
    });
    EXPECT_TRUE(result.exited_with(0)) << i;
    EXPECT_EQ(result.errors, "");
  }
  stop = true;
  for (std::thread& thread : counting)
    thread.join();
}

// So may it be the forking thread's own, which then has it in the child and in that one's child; or
// that of a thread which the forking one could wait for in vain.
TEST_F(Statistics, CountInAChildForkedUnderTheLock) {
  for (const bool own : {false, true}) {
    uint32_t site = add_z0_p0_z0;
    std::atomic<bool> locked = false, forked = false;
    std::thread holder([&] {
      if (!own)
        icounts_mutex.lock();
      locked = true;
      while (!forked)
        std::this_thread::yield();
      if (!own)
        icounts_mutex.unlock();
    });
    while (!locked)
      std::this_thread::yield();
    if (own)
      icounts_mutex.lock();
    const auto count = [&] {
      if (own && icounts_mutex.try_lock())
        fputs("the lock is free", stderr);
      if (own)
        icounts_mutex.unlock();
      for (int i = 0; i < 2; i++)
        update_sve_stats(&site, site);
      if (sve_instr_count != 2 || !icounts_mutex.try_lock())
        fputs("wrong count, or the lock is not free", stderr);
    };
    const child_result result = run_in_child([&] {
      const child_result again = run_in_child(count);
      fprintf(stderr, "%s%s", again.exited_with(0) ? "" : "the second child failed",
              again.errors.c_str());
      count();
    });
    forked = true;
    if (own)
      icounts_mutex.unlock();
    holder.join();
    EXPECT_TRUE(result.exited_with(0)) << result.status;
    EXPECT_EQ(result.errors, "");
  }
}

}  // namespace
