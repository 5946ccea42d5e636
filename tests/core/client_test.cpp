// The client's life: start, threads, exit and report.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "dr_api.h"
#include "sve/client/thread_records.h"
#include "sve/state/cpu_state.h"
#include "sve/state/switches.h"
#include "sve/stats/statistics.h"
#include "tests/core/captured_stderr.h"
#include "tests/core/fake_runtime.h"

extern "C" const int32_t _USES_DR_VERSION_;
extern "C" module_data_t* exe;

namespace {

using fake::runtime;
using Calls = std::vector<std::string>;

byte application[64];

class Client : public testing::Test {
protected:
  void SetUp() override {
    runtime = {};
    runtime.modules = {{application, application + sizeof application, nullptr, "/a/b/prog"}};
  }
  void TearDown() override {
    if (exe != nullptr)
      dr_free_module_data(exe);
    exe = nullptr;
    EXPECT_EQ(runtime.modules_held, 0);
  }

  void reset() {
    TearDown();
    SetUp();
  }

  static void start(std::vector<const char*> arguments = {"client"}) {
    dr_client_main(0, static_cast<int>(arguments.size()), arguments.data());
  }

  static std::string report() {
    return captured_stderr([] { runtime.exit(); });
  }

  static bool has_assertion(const char* expression) {
    return fake::is_assertion(runtime.errors, expression) && runtime.calls.back() == "dr_abort";
  }
};

const Calls start_calls = {"dr_set_client_name Kestrin SVE emulation client",
                           "drmgr_init",
                           "drreg_init",
                           "dr_get_main_module",
                           "drmgr_register_thread_init_event",
                           "drmgr_register_thread_exit_event",
                           "dr_register_exit_event",
                           "drmgr_register_bb_app2app_event",
                           "drmgr_register_tls_field",
                           "dr_log 1 16777215 1 SVE client initializing\n"};

// The first calls of a start, and the end of the process.
Calls start_until(const std::string& last) {
  Calls calls;
  for (const std::string& call : start_calls) {
    calls.push_back(call);
    if (call == last)
      break;
  }
  calls.push_back("dr_abort");
  return calls;
}

TEST_F(Client, Starts) {
  sve_instr_count = 5;
  start();
  EXPECT_EQ(runtime.calls, start_calls);
  EXPECT_EQ(runtime.errors, "");
  EXPECT_EQ(sve_instr_count, 0u);
  ASSERT_NE(exe, nullptr);
  EXPECT_EQ(exe->start, application);
  EXPECT_EQ(_USES_DR_VERSION_, 602);
}

TEST_F(Client, TakesNoArguments) {
  start({"client", "--"});
  EXPECT_EQ(runtime.calls, start_calls);
  reset();
  start({"client", "--", "foo"});
  EXPECT_EQ(runtime.calls, start_calls);
  reset();
  EXPECT_THROW(start({"client", "-foo"}), fake::aborted);
  EXPECT_EQ(runtime.errors, "Usage error: Unknown option: -foo\n");
  EXPECT_EQ(runtime.calls, start_until(start_calls[0]));
  reset();
  EXPECT_THROW(start({"client", "", "--"}), fake::aborted);
  EXPECT_EQ(runtime.errors, "Usage error: Unknown option: \n");
}

TEST_F(Client, AssertsItsStart) {
  runtime.drmgr_init_result = false;
  EXPECT_THROW(start(), fake::aborted);
  EXPECT_TRUE(has_assertion("false")) << runtime.errors;
  EXPECT_EQ(runtime.calls, start_until("drmgr_init"));
  reset();
  runtime.drreg_init_result = DRREG_ERROR;
  EXPECT_THROW(start(), fake::aborted);
  EXPECT_TRUE(has_assertion("false")) << runtime.errors;
  EXPECT_EQ(runtime.calls, start_until("drreg_init"));
  reset();
  runtime.register_block_result = false;
  EXPECT_THROW(start(), fake::aborted);
  EXPECT_TRUE(has_assertion("false")) << runtime.errors;
  EXPECT_EQ(runtime.calls, start_until("drmgr_register_bb_app2app_event"));
}

TEST_F(Client, KeepsARecordForEachThread) {
  start();
  runtime.thread_init(&runtime.thread);
  EXPECT_EQ(runtime.thread.allocated, sizeof(cpu_state));
  EXPECT_NE(runtime.thread.field, nullptr);
  runtime.thread_exit(&runtime.thread);
  EXPECT_EQ(runtime.thread.allocated, 0u);

  runtime.thread.field = nullptr;
  EXPECT_THROW(runtime.thread_exit(&runtime.thread), fake::aborted);
  EXPECT_TRUE(has_assertion("data != __null")) << runtime.errors;
}

TEST_F(Client, ReportsAtExit) {
  start();
  sve_instr_count = 12'345'678'901;
  runtime.calls.clear();
  EXPECT_EQ(report(), "prog: 12345678901 SVE instructions executed\n"
                      "prog: 0 Non-SVE AArch64 instructions executed\n");
  EXPECT_EQ(runtime.calls,
            (Calls{"dr_log 1 16777215 1 SVE client exiting\n", "drmgr_unregister_bb_app2app_event",
                   "drreg_exit", "drmgr_exit"}));
  EXPECT_EQ(runtime.modules_held, 0);
}

// Threads that begin, get their blocks rewritten and end, all at once.
TEST_F(Client, ServesManyThreads) {
  constexpr unsigned threads = 4, rounds = 50;
  static uint32_t code[] = {0xd503201f, 0x04000000, 0xd503201f};  // NOP, ADD Z0.B, P0/M, ..., NOP
  start();
  sve_in_libraries = true;
  std::atomic<unsigned> calls = 0;
  const auto live = [&] {
    for (unsigned round = 0; round < rounds; round++) {
      fake::Thread own;
      instrlist_t block;
      for (uint32_t& word : code)
        ir::append(block, ir::new_original(own.memory, word, reinterpret_cast<app_pc>(&word)));
      fake::Tag tag = {reinterpret_cast<app_pc>(code)};
      runtime.thread_init(&own);
      runtime.block(&own, &tag, &block, false, false);
      for (const instr_t* instr = block.first; instr != nullptr; instr = instr->next)
        calls += instr->kind == ir::kind::call;
      runtime.thread_exit(&own);
      ir::clear(own.memory, block);
      ir::dispose(own.memory);
    }
  };
  std::vector<std::thread> running;
  for (unsigned i = 0; i < threads; i++)
    running.emplace_back(live);
  for (std::thread& thread : running)
    thread.join();
  sve_in_libraries = false;
  EXPECT_EQ(calls, threads * rounds);
  EXPECT_EQ(sve_threads, nullptr);
  EXPECT_NE(report().find(" 400 Non-SVE"), std::string::npos);
}

TEST_F(Client, ReportsWithoutAModule) {
  runtime.has_main_module = false;
  start();
  EXPECT_EQ(exe, nullptr);
  EXPECT_EQ(report(), "tavok: 0 SVE instructions executed\n"
                      "tavok: 0 Non-SVE AArch64 instructions executed\n");
}

TEST_F(Client, AssertsItsExit) {
  start();
  runtime.unregister_block_result = false;
  captured_stderr([] { EXPECT_THROW(runtime.exit(), fake::aborted); });
  EXPECT_TRUE(has_assertion("false")) << runtime.errors;
  EXPECT_EQ(std::count(runtime.calls.begin(), runtime.calls.end(), "drreg_exit"), 0);
  reset();
  start();
  runtime.drreg_exit_result = DRREG_ERROR;
  captured_stderr([] { EXPECT_THROW(runtime.exit(), fake::aborted); });
  EXPECT_TRUE(has_assertion("false")) << runtime.errors;
  EXPECT_EQ(std::count(runtime.calls.begin(), runtime.calls.end(), "drmgr_exit"), 0);
}

}  // namespace
