// The core alone: code of this test runs from a cache that is too small for it, or that is never
// writable and executable at once.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstring>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "runtime/core/cache.h"
#include "runtime/core/code_map.h"
#include "runtime/core/dispatch.h"
#include "runtime/core/lock.h"
#include "runtime/ir/encode.h"

namespace {

namespace enc = ir::enc;

constexpr unsigned kBlocks = 3000;
constexpr uint32_t kSmallCache = 96 * 1024;
constexpr size_t kCodeBytes = 1 << 20;

struct DestroyCache {
  void operator()(core::Context* context) const {
    core::destroy_cache(context->cache);
    ir::dispose(context->arena);
    delete context;
  }
};

// A page of code that the "application" may execute, and a context that stands at its beginning.
struct Program {
  std::vector<uint32_t> words;
  uint32_t* code;
  std::unique_ptr<core::Context, DestroyCache> context{new core::Context{}};
  alignas(16) unsigned char stack[4096];

  Program() {
    code = static_cast<uint32_t*>(
        mmap(nullptr, kCodeBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    core::allow_execution(reinterpret_cast<uint64_t>(code),
                          reinterpret_cast<uint64_t>(code) + kCodeBytes);
    context->cache = core::create_cache();
    context->sp = reinterpret_cast<uint64_t>(stack + sizeof stack);
    context->last_exit = EXIT_NONE;
  }
  ~Program() {
    core::forbid_execution(reinterpret_cast<uint64_t>(code),
                           reinterpret_cast<uint64_t>(code) + kCodeBytes);
    munmap(code, kCodeBytes);
  }
  core::Event run() {
    std::memcpy(code, words.data(), words.size() * 4);
    context->pc = reinterpret_cast<uint64_t>(code);
    return core::run(*context);
  }
};

// Rounds through kBlocks blocks, each of which adds its number to X0 and goes on by a direct or an
// indirect branch, with X28 in the middle of it.
void write_blocks(Program& program, unsigned rounds) {
  std::vector<uint32_t>& words = program.words;
  words = {enc::movz(0, 0), enc::movz(1, rounds), enc::movz(28, 1)};
  const size_t loop = words.size();
  for (unsigned block = 0; block < kBlocks; ++block) {
    words.push_back(enc::add_imm(0, 0, block));
    words.push_back(enc::add_reg(0, 0, 28));
    if (block % 3 == 0) {
      words.push_back(enc::adr(2, 8));
      words.push_back(enc::br(2));
    } else {
      words.push_back(enc::b(4));
    }
  }
  words.push_back(enc::sub_imm(1, 1, 1));
  const auto here = static_cast<int64_t>(words.size());
  // Too far for a CBNZ of the test's own: over a branch.
  words.push_back(enc::cbz_x(1, 8));
  words.push_back(enc::b((static_cast<int64_t>(loop) - here - 1) * 4));
  words.push_back(enc::svc(0));
}

void check_blocks(Program& program, unsigned rounds) {
  write_blocks(program, rounds);
  ASSERT_EQ(program.run(), core::Event::system_call);
  const uint64_t one_round = uint64_t{kBlocks} * (kBlocks - 1) / 2 + kBlocks;
  EXPECT_EQ(program.context->x[0], rounds * one_round);
  EXPECT_EQ(program.context->x[28], 1u);
  EXPECT_EQ(program.context->pc,
            reinterpret_cast<uint64_t>(program.code) + program.words.size() * 4);
}

TEST(Run, GoesThroughManyBlocks) {
  Program program;
  check_blocks(program, 3);
  EXPECT_GE(program.context->cache->fragments.size(), kBlocks);
}

TEST(Run, FlushesAFullCache) {
  Program program;
  program.context->cache->size = kSmallCache;
  check_blocks(program, 3);
  EXPECT_LT(program.context->cache->fragments.size(), kBlocks);
  EXPECT_LE(program.context->cache->cursor, kSmallCache);
  program.context->cache->size = core::kCacheSize;
}

TEST(Run, WorksWithoutWritableCode) {
  Program program;
  core::Cache& cache = *program.context->cache;
  cache.toggles = true;
  mprotect(cache.base, cache.size, PROT_READ | PROT_EXEC);
  check_blocks(program, 1);
}

TEST(Run, FlushesOnRequest) {
  Program program;
  check_blocks(program, 1);
  core::request_flush(*program.context);
  check_blocks(program, 1);
  EXPECT_LE(program.context->cache->fragments.size(), kBlocks + 10);
}

TEST(Run, StopsWhereNoCodeIs) {
  Program program;
  program.words = {enc::movz(5, 77), enc::movz(6, 8), enc::br(6)};
  EXPECT_EQ(program.run(), core::Event::not_executable);
  EXPECT_EQ(program.context->pc, 8u);
  EXPECT_EQ(program.context->x[5], 77u);
}

// The vector registers, the flags and the floating-point registers go in and come out.
TEST(Run, CarriesAllState) {
  Program program;
  core::Context& context = *program.context;
  for (unsigned i = 0; i < 31; ++i) {
    context.x[i] = 0x1000 + i;
  }
  for (unsigned i = 0; i < sizeof context.q; ++i) {
    (&context.q[0][0])[i] = static_cast<unsigned char>(i * 7);
  }
  context.nzcv = 0xa0000000;
  context.fpcr = 0x00400000;
  context.fpsr = 0x11;
  const core::Context before = context;
  program.words = {enc::svc(0)};
  ASSERT_EQ(program.run(), core::Event::system_call);
  EXPECT_EQ(std::memcmp(context.x, before.x, sizeof before.x), 0);
  EXPECT_EQ(std::memcmp(context.q, before.q, sizeof before.q), 0);
  EXPECT_EQ(context.sp, before.sp);
  EXPECT_EQ(context.nzcv, before.nzcv);
  EXPECT_EQ(context.fpcr, before.fpcr);
  EXPECT_EQ(context.fpsr, before.fpsr);
  uint64_t none = 0;
  asm volatile("msr fpcr, %0" ::"r"(none));
}

// Most of the time somebody waits: a lost wake-up would hang, and a lost increment would show.
TEST(Lock, KeepsThreadsApart) {
  constexpr unsigned threads = 4, rounds = 20000;
  core::Lock lock;
  volatile unsigned count = 0;
  std::vector<std::thread> all;
  for (unsigned i = 0; i < threads; ++i) {
    all.emplace_back([&] {
      for (unsigned round = 0; round < rounds; ++round) {
        const std::lock_guard guard(lock);
        count = count + 1;
        if (round % 64 == 0) {
          std::this_thread::yield();
        }
      }
    });
  }
  for (std::thread& thread : all) {
    thread.join();
  }
  EXPECT_EQ(count, threads * rounds);
}

}  // namespace
