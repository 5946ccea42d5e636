// What the decoder says of any word: it must agree with itself.
#include "runtime/ir/decode.h"

#include <bit>
#include <cstdlib>

#include "runtime/core/effects.h"
#include "runtime/ir/extensions.h"
#include "runtime/ir/ir.h"
#include "tests/fuzz/target.h"

namespace {

using ir::control;
using ir::stolen_register;

// By the architecture's groups of encodings, which have these branches each to themselves.
control branch_to_offset(uint32_t word) {
  const uint32_t group = word >> 24;
  if ((group & 0x7c) == 0x14)
    return group < 0x80 ? control::jump : control::call;
  if (group == 0x54)
    return (word & 14) == 14 ? control::jump : control::conditional;
  return (group & 0x7c) == 0x34 ? control::conditional : control::none;
}

void check_branch(uint32_t word, control what) {
  const uint32_t group = word >> 24;
  const bool has_offset =
      what == control::jump || what == control::call || what == control::conditional;
  REQUIRE((has_offset ? what : control::none) == branch_to_offset(word));
  REQUIRE(group != 0xd4 || what == control::system_call || what == control::exception);
  REQUIRE((group & 0xfe) != 0xd6 || what != control::none);
  if (has_offset) {
    const int64_t offset = ir::branch_offset(word);
    REQUIRE(offset % 4 == 0 && std::abs(offset) <= 1 << 27);
  }
  if (what == control::conditional) {
    const int64_t offset = ir::branch_offset(word);
    const uint32_t inverted = ir::inverted_branch(word, 8);
    REQUIRE(ir::branch_reaches(word, offset) && ir::redirected_branch(word, offset) == word);
    REQUIRE(ir::control_of(inverted) == what && ir::branch_offset(inverted) == 8);
    REQUIRE(ir::inverted_branch(inverted, offset) == word);
    REQUIRE(ir::named_registers(inverted) == ir::named_registers(word));
  }
  if (what == control::jump_register || what == control::call_register || what == control::ret) {
    REQUIRE((group & 0xfe) == 0xd6);
    const unsigned target = ir::branch_register(word);
    const uint32_t authentication = ir::authentication(word, 9);
    REQUIRE(target < 32);
    if (authentication != 0)
      REQUIRE(ir::control_of(authentication) == control::none && ir::uses_reg(authentication, 9));
  }
}

void check_relative(uint32_t word) {
  const uint64_t pc = 0x555500001234;
  const ir::pc_relative what = ir::pc_relative_of(word);
  if (what == ir::pc_relative::none)
    return;
  const auto distance = static_cast<int64_t>(ir::pc_relative_target(word, pc) - pc);
  REQUIRE(std::abs(distance) <=
          (what == ir::pc_relative::adrp ? (int64_t{1} << 32) + 4096 : int64_t{1} << 20));
  REQUIRE(ir::control_of(word) == control::none);
  if (what == ir::pc_relative::load) {
    const uint32_t load = ir::literal_load_from(word, 9);
    REQUIRE(ir::pc_relative_of(load) == ir::pc_relative::none);
    REQUIRE(ir::named_registers(load) == (ir::named_registers(word) | 1u << 9));
  }
}

void check_registers(uint32_t word, control what) {
  const uint32_t named = ir::named_registers(word);
  for (unsigned number = 0; number < 32; number++)
    REQUIRE(ir::uses_reg(word, number) == ((named >> number & 1) != 0));
  if (ir::is_casp(word) && ((ir::field_t(word) | ir::field_m(word)) & 1) != 0)
    return;  // no instruction
  const unsigned scratch = ir::lowest_unused_reg(word);
  REQUIRE(scratch <= 8 && (named >> scratch & (ir::is_casp(word) ? 3 : 1)) == 0);
  if ((named >> stolen_register & 1) == 0)
    return;
  const uint32_t replaced = ir::replace_reg(word, stolen_register, scratch);
  REQUIRE(!ir::uses_reg(replaced, stolen_register) && ir::uses_reg(replaced, scratch));
  REQUIRE(ir::replace_reg(replaced, scratch, stolen_register) == word);
  REQUIRE(ir::general_fields(replaced) == ir::general_fields(word));
  REQUIRE(ir::control_of(replaced) == what);
  REQUIRE(ir::pc_relative_of(replaced) == ir::pc_relative_of(word));
  REQUIRE(ir::is_streaming(replaced) == ir::is_streaming(word));
  REQUIRE(ir::extension_of(replaced) == ir::extension_of(word));
}

// What the passes over a block take the application's instruction for.
void check_effect(uint32_t word) {
  instr_t instr = {};
  instr.word = word;
  instr.kind = ir::kind::original;
  const core::Effect effect = core::effect_of(instr);
  if (effect.action == core::Action::unknown)
    return;
  const uint32_t named = ir::named_registers(word);
  REQUIRE(effect.action == core::Action::compute);
  REQUIRE((effect.reads.general & ~named) == 0 && (effect.writes.general & ~named) == 0);
  REQUIRE(std::popcount(effect.writes.general) <= 1);
  REQUIRE(effect.reads.vector == 0 && effect.writes.vector == 0);
  REQUIRE(ir::control_of(word) == control::none && !ir::is_scalable(word));
}

void check(uint32_t word) {
  const control what = ir::control_of(word);
  check_branch(word, what);
  check_relative(word);
  check_registers(word, what);
  check_effect(word);
  REQUIRE(!ir::is_load_exclusive(word) || !ir::is_store_exclusive(word));
  const char* const extension = ir::extension_of(word);
  REQUIRE(extension == nullptr || (*extension != '\0' && !ir::is_scalable(word)));
  if (ir::is_plain_without(word, stolen_register))
    REQUIRE(what == control::none && ir::pc_relative_of(word) == ir::pc_relative::none &&
            !ir::is_mrs(word) && !ir::is_msr_register(word) && !ir::is_scalable(word) &&
            !ir::uses_reg(word, stolen_register));
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  while (!input.empty())
    check(input.take<uint32_t>());
  return 0;
}
