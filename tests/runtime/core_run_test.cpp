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
#include "runtime/ir/decode.h"
#include "runtime/ir/encode.h"
#include "runtime/linux/position.h"

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

TEST(Run, ForgetsOnRequest) {
  Program program;
  check_blocks(program, 1);
  core::request_forgetting(*program.context, 0, UINT64_MAX);
  check_blocks(program, 1);
  EXPECT_LE(program.context->cache->fragments.size(), kBlocks + 10);
}

// A function that is rewritten under a call that knows it, wherever its new fragment comes to lie,
// whether the owner of the cache heard the bell or not, and however often.
TEST(Run, ForgetsWhatWasWritten) {
  struct Case {
    uint32_t distance;  // between fragments
    bool bell;
    unsigned rounds;
  };
  constexpr unsigned function = 1024;  // far enough not to be forgotten with it
  for (const Case& c : {Case{0, true, 3}, {2 << 20, true, 5}, {0, false, 3}, {0, true, 20000}}) {
    Program program;
    core::Cache& cache = *program.context->cache;
    const auto at = reinterpret_cast<uint64_t>(program.code + function);
    program.words.assign(function + 2, enc::nop());
    program.words[0] = enc::adr(9, function * 4);
    program.words[1] = enc::blr(9);
    program.words[2] = enc::svc(0);
    program.words[function + 1] = enc::ret(30);
    for (unsigned i = 0; i < c.rounds; ++i) {
      program.words[function] = enc::movz(0, i & 0xffff);
      core::request_forgetting(*program.context, at, at + 8);
      if (!c.bell) {
        core::remove_pending(*program.context, core::kChangesPending);
      }
      cache.cursor += c.distance;
      for (int call = 0; call < 2; ++call) {
        ASSERT_EQ(program.run(), core::Event::system_call);
        ASSERT_EQ(program.context->x[0], i & 0xffff) << c.distance << " " << call;
      }
    }
    EXPECT_LT(cache.fragments.size(), 10000u);
    for (unsigned i = 0; i < 1000; ++i) {
      core::request_forgetting(*program.context, at, at + 8);
    }
    EXPECT_LT(cache.changes.size(), 100u);
  }
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

// ---- the state in the midst of an indirect branch -----------------------------------------------

// Goes through emitted code as a processor would, up to a word that none of the forms covers.
struct Walker {
  core::Cache& cache;
  uint64_t x[31];
  uint32_t offset;

  bool step() {
    const uint32_t word = *core::code_at(cache, offset);
    const unsigned d = ir::field_t(word), n = ir::field_n(word), m = ir::field_m(word);
    const uint64_t immediate = word >> 10 & 0xfff;
    const auto target = static_cast<uint32_t>(
        offset + (ir::control_of(word) != ir::control::none ? ir::branch_offset(word) : 4));
    uint32_t next = offset + 4;
    if (word >> 24 == 0x58) {
      const auto from = static_cast<uint32_t>(ir::pc_relative_target(word, offset));
      std::memcpy(&x[d], core::code_at(cache, from), sizeof x[d]);
    } else if (word >> 24 == 0xcb) {
      x[d] = x[n] - x[m];
    } else if (word >> 22 == 0x91 << 2) {
      x[d] = x[n] + immediate;
    } else if (word >> 22 == 0xd1 << 2) {
      x[d] = x[n] - immediate;
    } else if (word >> 24 == 0xb4) {
      next = x[d] == 0 ? target : next;
    } else if (word >> 26 == 5) {
      next = target;
    } else {
      return false;
    }
    offset = next;
    return true;
  }
};

// The application address where the walker stands, 0 within a fragment.
uint64_t arrived(core::Cache& cache, uint32_t offset) {
  for (const core::Fragment& fragment : cache.fragments) {
    if (fragment.begin + core::kHeadSize == offset && fragment.branched != offset) {
      return fragment.tag;
    }
  }
  return 0;
}

// Walks from the fragment's indirect branch to `target`, and asks at each step what a signal's
// handler would be told. Either the branch has not been made, or it has.
void walk(core::Context& context, const core::Fragment from, uint64_t target, unsigned& steps) {
  core::Cache& cache = *context.cache;
  const core::Place& last = cache.places[from.first_place + from.place_count - 1];
  const uint64_t branch = from.tag + uint64_t{last.app_word} * 4;
  const bool call =
      ir::control_of(*reinterpret_cast<uint32_t*>(branch)) == ir::control::call_register;
  Walker walker{cache, {}, from.begin + last.code_word * 4U};
  for (unsigned i = 0; i < 31; ++i) {
    walker.x[i] = 0x5000 + i;
  }
  walker.x[from.target_register] = target;
  uint64_t before[31];
  std::copy_n(walker.x, 31, before);
  uint64_t behind[31];
  std::copy_n(before, 31, behind);
  behind[30] = call ? branch + 4 : before[30];
  context.x[28] = before[28] = behind[28] = 0x2828;
  do {
    mcontext_t machine = {};
    std::copy_n(walker.x, 31, machine.regs);
    machine.pc = reinterpret_cast<uint64_t>(cache.base) + walker.offset;
    ASSERT_TRUE(os::load_exact_state(context, machine)) << "at step " << steps;
    const bool made = context.pc == target;
    EXPECT_TRUE(made || context.pc == branch);
    EXPECT_TRUE(std::equal(context.x, context.x + 31, made ? behind : before));
    ++steps;
  } while (walker.step() && arrived(cache, walker.offset) == 0);
  // Otherwise in a stub, or in the look-up.
  const uint64_t body = arrived(cache, walker.offset);
  EXPECT_TRUE(body == 0 || body == target);
  EXPECT_EQ(walker.x[from.target_register], target);
}

// A call site that meets 1 to 5 functions, of which some are leaves, and their returns.
void write_calls(Program& program, unsigned functions) {
  constexpr unsigned kFunctionWords = 4, kRounds = 6;
  std::vector<uint32_t>& words = program.words;
  words = {enc::movz(19, kRounds), 0, enc::mov_reg(9, 20), enc::movz(21, functions)};
  const uint32_t loop[] = {enc::blr(9),
                           enc::add_imm(9, 9, 4 * kFunctionWords),
                           enc::sub_imm(21, 21, 1),
                           enc::cbnz_x(21, -12),
                           enc::sub_imm(19, 19, 1),
                           enc::cbnz_x(19, -28),
                           enc::svc(0)};
  words.insert(words.end(), std::begin(loop), std::end(loop));
  words[1] = enc::adr(20, static_cast<int64_t>(words.size() - 1) * 4);
  for (unsigned i = 0; i < functions; ++i) {
    const uint32_t first = i % 2 == 0 ? enc::add_imm(0, 0, i) : enc::mov_reg(30, 30);
    for (const uint32_t word : {first, enc::add_imm(1, 1, 1), enc::ret(30), enc::nop()}) {
      words.push_back(word);
    }
  }
}

TEST(Run, KnowsTheStateInIndirectBranches) {
  for (unsigned functions = 1; functions <= 5; ++functions) {
    Program program;
    write_calls(program, functions);
    ASSERT_EQ(program.run(), core::Event::system_call);
    EXPECT_EQ(program.context->x[1], 6 * functions);
    core::Cache& cache = *program.context->cache;
    unsigned steps = 0;
    for (size_t i = 0; i < cache.fragments.size(); ++i) {
      const core::Fragment& fragment = cache.fragments[i];
      if (fragment.branched == 0 || fragment.hidden) {
        continue;
      }
      walk(*program.context, fragment, 0x1230, steps);
      const core::Prediction& known = cache.predictions[fragment.first_prediction];
      for (unsigned target = 0; target < known.count; ++target) {
        walk(*program.context, fragment, known.targets[target], steps);
      }
    }
    EXPECT_GT(steps, 20u);
    core::request_forgetting(*program.context, 0, UINT64_MAX);
    EXPECT_EQ(program.run(), core::Event::system_call);
  }
}

// No block overlaps another, whatever was given back meanwhile.
TEST(Heap, KeepsBlocksApart) {
  struct Block {
    std::unique_ptr<unsigned char[]> bytes;
    size_t size;
  };
  std::vector<Block> blocks(300);
  uint32_t random = 1;
  for (unsigned i = 0; i < 20000; ++i) {
    random = random * 1103515245 + 12345;
    Block& block = blocks[random >> 8 & 0xff];
    const auto mark = static_cast<unsigned char>(&block - blocks.data());
    for (size_t k = 0; k < block.size; ++k) {
      ASSERT_EQ(block.bytes[k], mark);
    }
    block.size = (random >> 20) >> (random >> 4 & 15) << (random & 3);
    block.bytes.reset(new unsigned char[block.size]);
    ASSERT_EQ(reinterpret_cast<uintptr_t>(block.bytes.get()) % 16, 0u);
    std::memset(block.bytes.get(), mark, block.size);
  }
}

}  // namespace
