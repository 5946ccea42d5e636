// Instructions: creation and what can be asked of them.
#include <initializer_list>
#include <iterator>

#include "runtime/ir/arena.h"
#include "runtime/ir/decode.h"
#include "runtime/ir/encode.h"
#include "runtime/ir/ir.h"

namespace {

instr_t* create(void* drcontext, int opcode, std::initializer_list<opnd_t> operands) {
  instr_t* const instr = ir::allocate(ir::arena_of(drcontext));
  instr->kind = ir::kind::created;
  instr->opcode = static_cast<std::uint8_t>(opcode);
  instr->word = ir::encode(opcode, std::data(operands), static_cast<unsigned>(std::size(operands)));
  return instr;
}

reg_id_t system_register_id(unsigned system) {
  switch (system) {
  case ir::sys_nzcv:
    return DR_REG_NZCV;
  case ir::sys_fpcr:
    return DR_REG_FPCR;
  case ir::sys_fpsr:
    return DR_REG_FPSR;
  default:
    return DR_REG_NULL;
  }
}

bool is_msr(const instr_t& instr) { return ir::is_app(instr) && ir::is_msr_register(instr.word); }

constexpr opnd_t no_operand{OPND_NULL, OPSZ_NA, DR_OPND_DEFAULT, DR_REG_NULL, 0};

}  // namespace

instr_t* instr_create_1dst_1src(void* drcontext, int opcode, opnd_t dst, opnd_t src) {
  return create(drcontext, opcode, {dst, src});
}

instr_t* instr_create_1dst_2src(void* drcontext, int opcode, opnd_t dst, opnd_t src1, opnd_t src2) {
  return create(drcontext, opcode, {dst, src1, src2});
}

instr_t* instr_create_2dst_1src(void* drcontext, int opcode, opnd_t dst1, opnd_t dst2, opnd_t src) {
  return create(drcontext, opcode, {dst1, dst2, src});
}

instr_t* instr_create_1dst_4src(void* drcontext, int opcode, opnd_t dst, opnd_t src1, opnd_t src2,
                                opnd_t src3, opnd_t src4) {
  return create(drcontext, opcode, {dst, src1, src2, src3, src4});
}

void instr_destroy(void* drcontext, instr_t* instr) { ir::release(ir::arena_of(drcontext), instr); }

instr_t* instr_set_translation(instr_t* instr, app_pc pc) {
  instr->pc = pc;
  return instr;
}

app_pc instr_get_app_pc(instr_t* instr) { return instr->pc; }

byte* instr_get_raw_bits(instr_t* instr) {
  return instr->kind == ir::kind::call ? nullptr : reinterpret_cast<byte*>(&instr->word);
}

int instr_get_opcode(instr_t* instr) {
  if (instr->kind == ir::kind::created) {
    return instr->opcode;
  }
  return is_msr(*instr) ? OP_msr : OP_other;
}

int instr_num_dsts(instr_t* instr) { return is_msr(*instr) ? 1 : 0; }

opnd_t instr_get_dst(instr_t* instr, uint index) {
  if (!is_msr(*instr) || index != 0) {
    return no_operand;
  }
  return opnd_create_reg(system_register_id(ir::system_register_of(instr->word)));
}

opnd_t instr_get_src(instr_t* instr, uint index) {
  if (!is_msr(*instr) || index != 0) {
    return no_operand;
  }
  return opnd_create_reg(static_cast<reg_id_t>(DR_REG_X0 + ir::field_t(instr->word)));
}

namespace ir {

instr_t* new_original(arena& memory, std::uint32_t word, app_pc pc) {
  instr_t* const instr = allocate(memory);
  instr->kind = kind::original;
  instr->plain = is_plain_without(word, stolen_register);
  instr->word = word;
  instr->pc = pc;
  return instr;
}

instr_t* new_meta(arena& memory, std::uint32_t word, app_pc pc) {
  instr_t* const instr = allocate(memory);
  instr->kind = kind::meta;
  instr->word = word;
  instr->pc = pc;
  return instr;
}

}  // namespace ir
