// From operands to words.
#include "runtime/ir/encode.h"

#include <cstdio>
#include <cstdlib>

#include "runtime/ir/ir.h"

namespace ir {

void cannot_encode(const char* form) {
  std::fprintf(stderr, "tavok: cannot encode: %s\n", form);
  std::abort();
}

namespace {

void require(bool condition, const char* form) {
  if (!condition) {
    cannot_encode(form);
  }
}

enum class slot31 { none, stack_pointer, zero };

// The number of an X register, where 31 may stand for what `allowed` says.
unsigned x_register(const opnd_t& opnd, slot31 allowed, const char* form) {
  require(opnd.kind == OPND_REG, form);
  const bool plain = opnd.reg >= DR_REG_X0 && opnd.reg <= DR_REG_X30;
  require(plain || (opnd.reg == DR_REG_XSP && allowed == slot31::stack_pointer) ||
              (opnd.reg == DR_REG_XZR && allowed == slot31::zero),
          form);
  return register_number(opnd.reg);
}

unsigned base_register(const opnd_t& memory, opnd_size_t size, const char* form) {
  require(memory.kind == OPND_BASE_DISP && memory.size == size, form);
  return x_register(opnd_create_reg(memory.reg), slot31::stack_pointer, form);
}

shift shift_kind(const opnd_t& opnd, const char* form) {
  require(opnd.kind == OPND_IMMED_INT && (opnd.flags & DR_OPND_IS_SHIFT) != 0 &&
              opnd.value >= DR_SHIFT_LSL && opnd.value <= DR_SHIFT_ROR,
          form);
  return static_cast<shift>(opnd.value);
}

std::int64_t immediate(const opnd_t& opnd, const char* form) {
  require(opnd.kind == OPND_IMMED_INT, form);
  return opnd.value;
}

unsigned named_system_register(const opnd_t& opnd, const char* form) {
  require(opnd.kind == OPND_REG, form);
  switch (opnd.reg) {
  case DR_REG_NZCV:
    return sys_nzcv;
  case DR_REG_FPCR:
    return sys_fpcr;
  case DR_REG_FPSR:
    return sys_fpsr;
  default:
    cannot_encode(form);
  }
}

std::uint32_t encode_add(const opnd_t* o) {
  constexpr auto form = "add dst, src, immediate, shift, amount";
  const std::int64_t amount = immediate(o[4], form);
  require(shift_kind(o[3], form) == shift::lsl && (amount == 0 || amount == 12), form);
  return enc::add_imm(x_register(o[0], slot31::stack_pointer, form),
                      x_register(o[1], slot31::stack_pointer, form), immediate(o[2], form),
                      amount == 12);
}

std::uint32_t encode_and(const opnd_t* o) {
  constexpr auto form = "and dst, src, src, shift, amount";
  require((o[2].flags & DR_OPND_SHIFTED) != 0, form);
  const std::int64_t amount = immediate(o[4], form);
  require(amount >= 0 && amount < 64, form);
  return enc::and_reg(x_register(o[0], slot31::zero, form), x_register(o[1], slot31::zero, form),
                      x_register(o[2], slot31::zero, form), shift_kind(o[3], form),
                      static_cast<unsigned>(amount));
}

// LDR and STR by the view of their register: 4, 8 or 16 bytes.
std::uint32_t encode_single(const opnd_t& data, const opnd_t& memory, bool load) {
  constexpr auto form = "ldr or str of a register and base + displacement";
  require(data.kind == OPND_REG && data.reg != DR_REG_XSP && data.reg != DR_REG_WSP, form);
  const opnd_size_t size = opnd_get_size(opnd_create_reg(data.reg));
  const unsigned rt = register_number(data.reg);
  const unsigned rn = base_register(memory, size, form);
  switch (size) {
  case OPSZ_4:
    return load ? enc::ldr_w(rt, rn, memory.value) : enc::str_w(rt, rn, memory.value);
  case OPSZ_16:
    return load ? enc::ldr_q(rt, rn, memory.value) : enc::str_q(rt, rn, memory.value);
  default:
    return load ? enc::ldr_x(rt, rn, memory.value) : enc::str_x(rt, rn, memory.value);
  }
}

std::uint32_t encode_pair(const opnd_t& first, const opnd_t& second, const opnd_t& memory,
                          bool load) {
  constexpr auto form = "ldp or stp of two X registers and base + displacement";
  const unsigned rt = x_register(first, slot31::zero, form);
  const unsigned rt2 = x_register(second, slot31::zero, form);
  const unsigned rn = base_register(memory, OPSZ_16, form);
  return load ? enc::ldp_x(rt, rt2, rn, memory.value) : enc::stp_x(rt, rt2, rn, memory.value);
}

std::uint32_t encode_mrs(const opnd_t* o) {
  constexpr auto form = "mrs dst, system register";
  return enc::mrs(x_register(o[0], slot31::zero, form), named_system_register(o[1], form));
}

std::uint32_t encode_msr(const opnd_t* o) {
  constexpr auto form = "msr system register, src";
  return enc::msr(named_system_register(o[0], form), x_register(o[1], slot31::zero, form));
}

}  // namespace

std::uint32_t encode(int opcode, const opnd_t* operands, unsigned count) {
  const bool two = count == 2;
  const bool three = count == 3;
  const bool five = count == 5;
  switch (opcode) {
  case OP_add:
    require(five, "add");
    return encode_add(operands);
  case OP_and:
    require(five, "and");
    return encode_and(operands);
  case OP_ldr:
    require(two, "ldr");
    return encode_single(operands[0], operands[1], true);
  case OP_str:
    require(two, "str");
    return encode_single(operands[1], operands[0], false);
  case OP_ldp:
    require(three, "ldp");
    return encode_pair(operands[0], operands[1], operands[2], true);
  case OP_stp:
    require(three, "stp");
    return encode_pair(operands[1], operands[2], operands[0], false);
  case OP_mrs:
    require(two, "mrs");
    return encode_mrs(operands);
  case OP_msr:
    require(two, "msr");
    return encode_msr(operands);
  default:
    cannot_encode("opcode");
  }
}

}  // namespace ir
