// Blocks before the passes and behind them: they must do the same.
#include <vector>

#include "tests/fuzz/target.h"
#include "tests/runtime/block_maker.h"

namespace {

using namespace small_machine;

constexpr unsigned inserted_kinds = 18;  // of block_maker::anything_inserted

uint64_t blocks = 0, loops = 0, short_ways = 0;

struct Maker : block_maker {
  explicit Maker(Input& given) : input(given) {}

  Input& input;

  unsigned any(unsigned below) { return input() % below; }

  void any_instructions(bool opaque, unsigned most) {
    for (unsigned count = any(most + 1); count > 0; count--) {
      uint32_t word = instructions[any(std::size(instructions))].word;
      if (any(2) == 0)
        word ^= 1u << any(32) | 1u << any(32);
      if (ordinary_of(word).opaque ? opaque : !is_inserted_form(word))
        ordinary_instruction(word);
    }
  }
  void any_inserted(unsigned most, unsigned first) {
    for (unsigned count = any(most + 1); count > 0; count--)
      anything_inserted(input, first + any(inserted_kinds - first));
  }

  // The client's exchange around emulated instructions, between any others.
  void block() {
    for (unsigned length = 1 + any(7); length > 0; length--)
      if (any(5) < 3)
        emulated_instruction(any(1000));
      else
        any_instructions(true, 1);
    expect_the_same(any(1000));
  }
  // Any order of the words that inserted code consists of.
  void block_of_words() {
    record_address_to_base();
    any_inserted(30, 0);
    expect_the_same(any(1000));
  }

  void end_loop(uint64_t start, unsigned first_register, unsigned registers) {
    const bool flags = any(2) == 0;
    const unsigned reg = first_register + any(registers);
    branch(start, flags, reg);
    loops++;
    short_ways += expect_the_same_rounds(any(1000), start, flags, reg) ? 1 : 0;
  }
  void loop() {
    const uint64_t start = pc;
    const unsigned kind = any(8);
    any_instructions(kind == 0, 2);
    for (unsigned length = 1 + any(4); length > 0; length--) {
      emulated_instruction(any(1000));
      any_instructions(length > 1 || kind == 1, 2);
    }
    end_loop(start, 0, 12);
  }
  void loop_of_words() {
    const uint64_t start = pc;
    record_address_to_base();
    any_inserted(8, 2);
    call(any(1000));
    record_address_to_base();
    any_inserted(6, 0);
    call(any(1000));
    any_inserted(1, 2);
    record_address_to_base();
    any_inserted(8, 2);
    created(enc::ldr_x(transfer, base, 24));
    end_loop(start, 20, 4);
  }

  // Any words of the application's at all: each stays, as it is and where it is.
  void block_of_any_words() {
    std::vector<uint32_t> expected, found;
    const uint64_t start = pc;
    do {
      expected.push_back(input.take<uint32_t>());
      ordinary_instruction(expected.back());
      if (any(3) == 0)
        emulated_instruction(any(1000));
    } while (!input.empty());
    core::optimise_block(memory, list, context_address);
    core::find_loop(list, start, context_address);
    for (const instr_t* instr = list.first; instr != nullptr; instr = instr->next)
      if (instr->kind == ir::kind::original)
        found.push_back(instr->word);
    REQUIRE(expected == found);
    ir::clear(memory, list);
  }
};

}  // namespace

int LLVMFuzzerInitialize(int* argc, char*** argv) {
  testing::InitGoogleTest(argc, *argv);
  GTEST_FLAG_SET(throw_on_failure, true);  // which nobody catches
  return 0;
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  constexpr void (Maker::*makers[])() = {&Maker::block, &Maker::block_of_words, &Maker::loop,
                                         &Maker::loop_of_words, &Maker::block_of_any_words};
  Input input(data, size);
  const auto make = makers[input.take<uint8_t>() % std::size(makers)];
  Maker maker(input);
  (maker.*make)();
  blocks++;
  return 0;
}

const char* fuzz_missed() {
  return short_ways < loops / 4 || loops < blocks / 8 ? "was a loop with a short way often enough"
                                                      : "";
}
