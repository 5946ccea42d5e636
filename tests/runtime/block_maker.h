// Blocks of inserted code and instructions of the application, made by choice or by chance, and run
// on the small machine before the passes and behind them.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "runtime/core/loop.h"
#include "runtime/core/optimise.h"
#include "runtime/ir/encode.h"
#include "runtime/ir/ir.h"
#include "tests/runtime/small_machine.h"

namespace small_machine {

struct block_maker {
  ir::arena memory;
  instrlist_t list;
  std::uint64_t pc = 0x400000;

  ~block_maker() { ir::dispose(memory); }

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
  template <class Random> void anything_inserted(Random& random, unsigned kind) {
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

}  // namespace small_machine
