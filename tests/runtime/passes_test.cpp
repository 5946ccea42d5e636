// The passes over a finished block: run before and after on a small machine, the block must do the
// same.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "runtime/core/loop.h"
#include "runtime/core/optimise.h"
#include "runtime/ir/encode.h"
#include "runtime/ir/ir.h"
#include "tests/runtime/small_machine.h"

namespace {

using namespace small_machine;

struct passes_test : testing::Test {
  ir::arena memory;
  instrlist_t list;
  std::uint64_t pc = 0x400000;

  ~passes_test() override { ir::dispose(memory); }

  app_pc here() const { return reinterpret_cast<app_pc>(pc); }
  void created(std::uint32_t word) {
    instr_t* const instr = ir::new_meta(memory, word, here());
    instr->kind = ir::kind::created;
    ir::append(list, instr);
  }
  void save(unsigned reg, unsigned slot) {
    dr_save_reg(&memory, &list, nullptr, DR_REG_X0 + reg, static_cast<dr_spill_slot_t>(slot));
  }
  void restore(unsigned reg, unsigned slot) {
    dr_restore_reg(&memory, &list, nullptr, DR_REG_X0 + reg, static_cast<dr_spill_slot_t>(slot));
  }
  void record_address_to_base() {
    instrlist_insert_mov_immed_ptrsz(&memory, record_address, opnd_create_reg(DR_REG_X27), &list,
                                     nullptr, nullptr, nullptr);
  }
  void ordinary_instruction(std::uint32_t word) {
    ir::append(list, ir::new_original(memory, word, here()));
    pc += 4;
  }
  void call(unsigned number) {
    dr_insert_call_tavok(&memory, &list, nullptr, here(), &memory, 1,
                         opnd_create_immed_int(number, OPSZ_4));
  }

  void saving_half() {
    save(26, 1), save(27, 2);
    dr_insert_get_stolen_reg_value(&memory, &list, nullptr, DR_REG_X27);
    save(27, 3);
    record_address_to_base();
    created(enc::add_imm(transfer, ir::sp, 0)), created(enc::str_x(transfer, base, 31 * 8));
    for (unsigned n = 0; n < 26; n += 2)
      created(enc::stp_x(n, n + 1, base, n * 8));
    created(enc::stp_x(29, 30, base, 29 * 8));
    for (unsigned n = 0; n < 32; ++n)
      created(enc::str_q(n, base, z_field + n * 16));
    created(enc::mrs(transfer, ir::sys_nzcv)), created(enc::str_x(transfer, base, nzcv_field));
    created(enc::mrs(transfer, ir::sys_fpsr)), created(enc::str_w(transfer, base, fpsr_field));
    created(enc::mrs(transfer, ir::sys_fpcr)), created(enc::str_w(transfer, base, fpcr_field));
  }
  void restoring_half() {
    record_address_to_base();
    created(enc::ldr_w(transfer, base, fpcr_field)), created(enc::msr(ir::sys_fpcr, transfer));
    created(enc::ldr_w(transfer, base, fpsr_field)), created(enc::msr(ir::sys_fpsr, transfer));
    created(enc::ldr_x(transfer, base, nzcv_field)), created(enc::msr(ir::sys_nzcv, transfer));
    for (unsigned n = 0; n < 32; ++n)
      created(enc::ldr_q(n, base, z_field + n * 16));
    for (unsigned n = 0; n < 26; n += 2)
      created(enc::ldp_x(n, n + 1, base, n * 8));
    created(enc::ldp_x(29, 30, base, 29 * 8));
    created(enc::ldr_x(transfer, base, 31 * 8)), created(enc::add_imm(ir::sp, transfer, 0));
    restore(27, 3);
    dr_insert_set_stolen_reg_value(&memory, &list, nullptr, DR_REG_X27);
    restore(27, 2), restore(26, 1);
  }
  void emulated_instruction(unsigned number) {
    saving_half();
    call(number);
    restoring_half();
    pc += 4;
  }

  // One thing of those that inserted code consists of: 0 and 1 are a call and an instruction of the
  // application, the others stay within the inserted code.
  void anything_inserted(std::mt19937& random, unsigned kind) {
    const auto any = [&] { return random() % 5 == 0 ? transfer : 20 + random() % 4; };
    const unsigned a = any(), b = any(), at = random() % 4;
    switch (kind) {
    case 0:
      call(random() % 100), record_address_to_base();
      break;
    case 1:
      ordinary_instruction(instructions[random() % std::size(instructions)].word);
      record_address_to_base();
      break;
    case 2:
      created(enc::str_x(a, base, at * 8));
      break;
    case 3:
      created(enc::ldr_x(a, base, at * 8));
      break;
    case 4:
      created(enc::str_w(a, base, at * 4));
      break;
    case 5:
      created(enc::ldr_w(a, base, at * 4));
      break;
    case 6:
      created(enc::stp_x(a, b, base, at * 8));
      break;
    case 7:
      if (a != b)
        created(enc::ldp_x(a, b, base, at * 8));
      break;
    case 8:
      created(enc::str_q(a, base, at * 16));
      break;
    case 9:
      created(enc::ldr_q(a, base, at * 16));
      break;
    case 10:
      created(enc::add_imm(random() % 3 == 0 ? ir::sp : a, b, 0));
      break;
    case 11:
      created(enc::add_imm(a, ir::sp, 0));
      break;
    case 12:
      created(enc::mrs(a, random() % 2 != 0 ? ir::sys_fpsr : ir::sys_nzcv));
      break;
    case 13:
      created(enc::msr(random() % 2 != 0 ? ir::sys_fpsr : ir::sys_nzcv, a));
      break;
    case 14:
      save(a, 1 + at % 3);
      break;
    case 15:
      restore(a, 1 + at % 3);
      break;
    case 16:
      dr_insert_get_stolen_reg_value(&memory, &list, nullptr, DR_REG_X0 + a);
      break;
    case 17:
      dr_insert_set_stolen_reg_value(&memory, &list, nullptr, DR_REG_X0 + a);
      break;
    }
  }

  // The list before and after the passes, from the same state. Returns how many instructions run.
  unsigned expect_the_same(unsigned seed) {
    machine before(seed), after(seed);
    before.run(list.first, nullptr);
    core::optimise_block(memory, list, context_address);
    after.run(list.first, nullptr);
    EXPECT_EQ(before.seen, after.seen);
    EXPECT_EQ(before.digest_of_all(), after.digest_of_all());
    for (unsigned i = 0; i < 32; ++i) {
      EXPECT_EQ(before.x[i], after.x[i]) << i;
    }
    ir::clear(memory, list);
    return after.executed;
  }
};

struct loop_test : passes_test {
  static constexpr unsigned most_rounds = 4;

  // Ends the block with a branch to `start`: B.NE, or CBNZ of a register.
  void branch(std::uint64_t start, bool flags, unsigned reg) {
    const auto offset = static_cast<std::uint32_t>((start - pc) >> 2 & 0x7ffff) << 5;
    ordinary_instruction(flags ? 0x54000001 | offset : 0xb5000000 | offset | reg);
  }

  // The block, as often as it is, before the passes; and after them with the short way between the
  // rounds. After each round, what decides is the same, and all is if the loop ends there. Returns
  // whether there is a short way.
  bool expect_the_same_rounds(unsigned seed, std::uint64_t start, bool flags, unsigned reg) {
    std::vector<machine> whole(1, machine(seed));
    for (unsigned round = 0; round < most_rounds; ++round) {
      whole.push_back(whole.back());
      whole.back().run(list.first, nullptr);
    }
    core::optimise_block(memory, list, context_address);
    const core::Loop loop = core::find_loop(list, start, context_address);
    if (loop.body != nullptr) {
      machine going(seed);
      going.run(list.first, loop.body);
      for (unsigned round = 1; round <= most_rounds; ++round) {
        going.run(loop.body, loop.out);
        going.run(loop.decide);
        EXPECT_EQ(flags ? whole[round].nzcv : whole[round].x[reg],
                  flags ? going.nzcv : going.x[reg]);
        going.x[core::kPendingRegister] = seed;
        machine ending = going;
        ending.run(loop.out, nullptr);
        EXPECT_EQ(whole[round].seen, ending.seen) << "seed " << seed << " round " << round;
        EXPECT_EQ(whole[round].digest_of_all(), ending.digest_of_all()) << "seed " << seed;
        going.run(loop.again);
      }
    }
    ir::clear(memory, list);
    return loop.body != nullptr;
  }
};

TEST_F(loop_test, random_loops_do_the_same) {
  std::mt19937 random(7);
  const auto ordinary_ones = [&](bool opaque, unsigned most) {
    for (unsigned count = random() % (most + 1); count > 0; --count) {
      const ordinary& chosen = instructions[random() % std::size(instructions)];
      if (!chosen.opaque || opaque)
        ordinary_instruction(chosen.word);
    }
  };
  unsigned found = 0;
  for (unsigned seed = 0; seed < 400 && !HasFailure(); ++seed) {
    const std::uint64_t start = pc;
    const bool flags = random() % 3 != 0;
    const auto reg = static_cast<unsigned>(random() % 12);
    ordinary_ones(seed % 8 == 0, 2);
    for (unsigned length = 1 + random() % 4; length > 0; --length) {
      emulated_instruction(random() % 1000);
      ordinary_ones(length > 1 || seed % 8 == 1, 2);
    }
    branch(start, flags, reg);
    found += expect_the_same_rounds(seed, start, flags, reg) ? 1 : 0;
  }
  EXPECT_GT(found, 150u);
}

TEST_F(loop_test, random_inserted_loops_do_the_same) {
  std::mt19937 random(8);
  constexpr unsigned kinds = 18;
  const auto inserted = [&](unsigned most, unsigned first) {
    for (unsigned count = random() % (most + 1); count > 0; --count)
      anything_inserted(random, first + random() % (kinds - first));
  };
  unsigned found = 0;
  for (unsigned seed = 0; seed < 8000 && !HasFailure(); ++seed) {
    const std::uint64_t start = pc;
    const bool flags = random() % 2 != 0;
    const auto reg = static_cast<unsigned>(20 + random() % 4);
    record_address_to_base();
    inserted(8, 2);
    call(seed);
    record_address_to_base();
    inserted(6, 0);
    call(seed + 1);
    inserted(1, 2);
    record_address_to_base();
    inserted(8, 2);
    created(enc::ldr_x(transfer, base, 24));
    branch(start, flags, reg);
    found += expect_the_same_rounds(seed, start, flags, reg) ? 1 : 0;
  }
  EXPECT_GT(found, 4000u);
}

// What a round costs beside its calls: exact, so that a loss is noticed.
TEST_F(loop_test, what_remains_between_two_rounds) {
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

TEST_F(passes_test, random_blocks_do_the_same) {
  std::mt19937 random(5);
  for (unsigned round = 0; round < 400 && !HasFailure(); ++round) {
    for (unsigned length = 1 + random() % 7; length > 0; --length) {
      if (random() % 5 < 3) {
        emulated_instruction(random() % 1000);
      } else {
        ordinary_instruction(instructions[random() % std::size(instructions)].word);
      }
    }
    expect_the_same(round);
  }
}

// Any order of the words that inserted code consists of: not only the client's exchange.
TEST_F(passes_test, random_inserted_code_does_the_same) {
  std::mt19937 random(6);
  for (unsigned round = 0; round < 3000 && !HasFailure(); ++round) {
    record_address_to_base();
    for (unsigned length = 2 + random() % 30; length > 0; --length)
      anything_inserted(random, random() % 20);
    expect_the_same(round);
  }
}

// What is gained, in instructions without those of the call: exact, so that a loss is noticed.
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
