// What the passes over a finished block leave of it, exactly, so that a loss is noticed. That the
// block does the same is tests/fuzz/passes_fuzz.cpp's to show.
#include <gtest/gtest.h>

#include <vector>

#include "tests/runtime/block_maker.h"

namespace {

using namespace small_machine;

struct passes_test : testing::Test, block_maker {};

// What a round costs beside its calls.
TEST_F(passes_test, what_remains_between_two_rounds) {
  constexpr std::uint32_t compare = 0x7100043f, add = 0x91000420;
  const auto words_between = [&](bool flags, std::vector<std::uint32_t> in_front,
                                 std::vector<std::uint32_t> behind) {
    const std::uint64_t start = pc;
    for (const std::uint32_t word : in_front)
      ordinary_instruction(word);
    emulated_instruction(1);
    for (const std::uint32_t word : behind)
      ordinary_instruction(word);
    branch(start, flags, 3);
    core::optimise_block(memory, list, context_address);
    const core::Loop loop = core::find_loop(list, start, context_address);
    ir::clear(memory, list);
    return loop.body != nullptr ? loop.decide.size() + loop.again.size() : 0;
  };
  constexpr unsigned status = 11, flags = 2, pair = 1;
  EXPECT_EQ(words_between(true, {}, {}), flags + status);
  EXPECT_EQ(words_between(false, {}, {}), pair + status);
  // The flags that the memory gets are the comparison's.
  EXPECT_EQ(words_between(true, {}, {compare}), pair + 1 + status - 1 + pair + 1);
  // They go through the register for once.
  EXPECT_EQ(words_between(true, {add}, {}), flags + status + 1 + pair + 1 + pair);
  // What may fault, or stands for its place, ends the short way.
  EXPECT_EQ(words_between(true, {0xf9400020}, {}), 0u);
  EXPECT_EQ(words_between(true, {0x1000001b}, {}), 0u);
  EXPECT_EQ(words_between(true, {}, {0xf9400020}), 0u);
}

// What is gained, in instructions without those of the call.
TEST_F(passes_test, what_remains_of_an_exchange) {
  constexpr std::uint32_t nothing = 0, add = 0x91000420, nop = 0xd503201f;
  const auto length = [&](unsigned count, std::uint32_t between) {
    for (unsigned i = 0; i < count; ++i) {
      if (i != 0 && between != nothing)
        ordinary_instruction(between);
      emulated_instruction(i);
    }
    return expect_the_same(count);
  };
  constexpr unsigned address = 2;                 // instructions that load the record's address
  constexpr unsigned status = 12;                 // both ways
  constexpr unsigned general = 14, vectors = 16;  // pairs
  constexpr unsigned stack = 4, slots_and_stolen = 8;  // beyond a pair's reach
  constexpr unsigned alone =
      1 + address + status + 2 * (general + vectors) + stack + slots_and_stolen;
  EXPECT_EQ(length(1, nothing), alone);
  // The flags are masked, and not set.
  EXPECT_EQ(length(5, nothing), alone + 4 * (1 + status - 1));
  // X0 and X1 cross, since the instruction between names them.
  EXPECT_EQ(length(2, add), alone + 1 + status + 3);
  EXPECT_EQ(length(2, nop), 2 * alone + 1);
}

}  // namespace
