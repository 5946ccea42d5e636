// Operands.
#include "runtime/include/dr_api.h"
#include "runtime/ir/encode.h"
#include "runtime/ir/ir.h"

namespace {

opnd_size_t register_size(reg_id_t reg) {
  if (reg >= DR_REG_W0 && reg <= DR_REG_WSP) {
    return OPSZ_4;
  }
  return reg >= DR_REG_Q0 && reg <= DR_REG_Q31 ? OPSZ_16 : OPSZ_8;
}

}  // namespace

opnd_t opnd_create_reg(reg_id_t reg) {
  return opnd_create_reg_ex(reg, register_size(reg), DR_OPND_DEFAULT);
}

opnd_t opnd_create_reg_ex(reg_id_t reg, opnd_size_t size, dr_opnd_flags_t flags) {
  return {OPND_REG, size, flags, reg, 0};
}

opnd_t opnd_create_base_disp(reg_id_t base, reg_id_t index, int scale, int disp, opnd_size_t size) {
  if (index != DR_REG_NULL || scale != 0) {
    ir::cannot_encode("memory operand with an index");
  }
  return {OPND_BASE_DISP, size, DR_OPND_DEFAULT, base, disp};
}

opnd_t opnd_create_immed_int(ptr_int_t value, opnd_size_t size) {
  return {OPND_IMMED_INT, size, DR_OPND_DEFAULT, DR_REG_NULL, value};
}

opnd_t opnd_add_flags(opnd_t opnd, dr_opnd_flags_t flags) {
  opnd.flags |= flags;
  return opnd;
}

bool opnd_is_reg(opnd_t opnd) { return opnd.kind == OPND_REG; }

reg_id_t opnd_get_reg(opnd_t opnd) { return opnd_is_reg(opnd) ? opnd.reg : reg_id_t{DR_REG_NULL}; }

opnd_size_t opnd_get_size(opnd_t opnd) { return opnd.size; }

namespace ir {

unsigned register_number(reg_id_t reg) {
  if (reg == DR_REG_XSP || reg == DR_REG_WSP) {
    return sp;
  }
  if (reg >= DR_REG_X0 && reg <= DR_REG_XZR) {
    return reg - DR_REG_X0;
  }
  if (reg >= DR_REG_W0 && reg <= DR_REG_WZR) {
    return reg - DR_REG_W0;
  }
  if (reg >= DR_REG_Q0 && reg <= DR_REG_Q31) {
    return reg - DR_REG_Q0;
  }
  cannot_encode("register without a number");
}

}  // namespace ir
