// A64 instruction words: one function for each form that the runtime emits.
//
// Registers are numbers 0 to 31, offsets are in bytes. A value that a form cannot hold ends the
// process at run time and the build in a constant expression: what reaches these functions was
// chosen by the runtime, so it is a fault of the caller.
#pragma once

#include <cstdint>

namespace ir {

inline constexpr unsigned sp = 31;  // where the form takes the stack pointer
inline constexpr unsigned zr = 31;  // where the form takes the zero register

enum class shift : unsigned { lsl, lsr, asr, ror };

enum class condition : unsigned { eq, ne, cs, cc, mi, pl, vs, vc, hi, ls, ge, lt, gt, le, al };

// System registers by o0:op1:CRn:CRm:op2, the bits 19:5 of MRS and MSR.
constexpr unsigned system_register(unsigned op0, unsigned op1, unsigned crn, unsigned crm,
                                   unsigned op2) {
  return (op0 & 1) << 14 | op1 << 11 | crn << 7 | crm << 3 | op2;
}
inline constexpr unsigned sys_nzcv = system_register(3, 3, 4, 2, 0);
inline constexpr unsigned sys_fpcr = system_register(3, 3, 4, 4, 0);
inline constexpr unsigned sys_fpsr = system_register(3, 3, 4, 4, 1);
inline constexpr unsigned sys_tpidr_el0 = system_register(3, 3, 13, 0, 2);
inline constexpr unsigned sys_svcr = system_register(3, 3, 4, 2, 2);
inline constexpr unsigned sys_tpidr2_el0 = system_register(3, 3, 13, 0, 5);
inline constexpr unsigned sys_ctr_el0 = system_register(3, 3, 0, 0, 1);

// Says on standard error that `form` cannot be encoded, and aborts.
[[noreturn]] void cannot_encode(const char* form);

}  // namespace ir

namespace ir::enc {

using word = std::uint32_t;

// `value` in `width` bits at bit `at`.
constexpr word bits(std::int64_t value, unsigned width, unsigned at, const char* form) {
  if (value < 0 || value >= std::int64_t{1} << width) {
    cannot_encode(form);
  }
  return static_cast<word>(value) << at;
}

// A multiple of 2^`scale` in `width` signed bits at bit `at`.
constexpr word scaled(std::int64_t value, unsigned scale, unsigned width, unsigned at,
                      const char* form) {
  const std::int64_t unit = std::int64_t{1} << scale;
  const std::int64_t limit = std::int64_t{1} << (width - 1);
  if (value % unit != 0 || value / unit < -limit || value / unit >= limit) {
    cannot_encode(form);
  }
  return (static_cast<word>(value / unit) & ((word{1} << width) - 1)) << at;
}

constexpr word reg(unsigned number, unsigned at) { return bits(number, 5, at, "register"); }

// ---- arithmetic, logic and moves, 64 bits -------------------------------------------------------

// Rd and Rn take SP. `shift12` shifts the immediate left by 12.
constexpr word add_imm(unsigned rd, unsigned rn, std::int64_t imm, bool shift12 = false) {
  return 0x91000000 | word{shift12} << 22 | bits(imm, 12, 10, "add") | reg(rn, 5) | reg(rd, 0);
}
constexpr word sub_imm(unsigned rd, unsigned rn, std::int64_t imm, bool shift12 = false) {
  return 0xd1000000 | word{shift12} << 22 | bits(imm, 12, 10, "sub") | reg(rn, 5) | reg(rd, 0);
}
constexpr word shifted(word base, unsigned rd, unsigned rn, unsigned rm, shift kind,
                       unsigned amount) {
  return base | static_cast<word>(kind) << 22 | reg(rm, 16) | bits(amount, 6, 10, "shift") |
         reg(rn, 5) | reg(rd, 0);
}
constexpr word and_reg(unsigned rd, unsigned rn, unsigned rm, shift kind = shift::lsl,
                       unsigned amount = 0) {
  return shifted(0x8a000000, rd, rn, rm, kind, amount);
}
constexpr word orr_reg(unsigned rd, unsigned rn, unsigned rm, shift kind = shift::lsl,
                       unsigned amount = 0) {
  return shifted(0xaa000000, rd, rn, rm, kind, amount);
}
constexpr word eor_reg(unsigned rd, unsigned rn, unsigned rm, shift kind = shift::lsl,
                       unsigned amount = 0) {
  return shifted(0xca000000, rd, rn, rm, kind, amount);
}
// `kind` is not ROR for these two.
constexpr word add_reg(unsigned rd, unsigned rn, unsigned rm, shift kind = shift::lsl,
                       unsigned amount = 0) {
  return shifted(0x8b000000, rd, rn, rm, kind, amount);
}
constexpr word sub_reg(unsigned rd, unsigned rn, unsigned rm, shift kind = shift::lsl,
                       unsigned amount = 0) {
  return shifted(0xcb000000, rd, rn, rm, kind, amount);
}
// Between general registers, not SP: add_imm with 0 moves that.
constexpr word mov_reg(unsigned rd, unsigned rm) { return orr_reg(rd, zr, rm); }

// AND with `width` (1 to 63) ones at bit `lsb`, going round at bit 63. Rd takes SP.
constexpr word and_ones(unsigned rd, unsigned rn, unsigned lsb, unsigned width) {
  return 0x92400000 | bits((64 - lsb) & 63, 6, 16, "and") | bits(width - 1, 6, 10, "and") |
         reg(rn, 5) | reg(rd, 0);
}
// The `width` bits of Rn from bit `lsb` up, at bit 0 of Rd.
constexpr word ubfx(unsigned rd, unsigned rn, unsigned lsb, unsigned width) {
  return 0xd3400000 | bits(lsb, 6, 16, "ubfx") | bits(lsb + width - 1, 6, 10, "ubfx") | reg(rn, 5) |
         reg(rd, 0);
}
// The low `width` bits of Rn, at bit `lsb` of Rd.
constexpr word ubfiz(unsigned rd, unsigned rn, unsigned lsb, unsigned width) {
  return 0xd3400000 | bits((64 - lsb) & 63, 6, 16, "ubfiz") | bits(width - 1, 6, 10, "ubfiz") |
         reg(rn, 5) | reg(rd, 0);
}
// The low `width` bits of Rn into bits `lsb` and up of Rd, the others of which stay.
constexpr word bfi(unsigned rd, unsigned rn, unsigned lsb, unsigned width) {
  return 0xb3400000 | bits((64 - lsb) & 63, 6, 16, "bfi") | bits(width - 1, 6, 10, "bfi") |
         reg(rn, 5) | reg(rd, 0);
}
constexpr word lsl_imm(unsigned rd, unsigned rn, unsigned amount) {
  return ubfiz(rd, rn, amount, 64 - amount);
}
constexpr word lsr_imm(unsigned rd, unsigned rn, unsigned amount) {
  return ubfx(rd, rn, amount, 64 - amount);
}

// `imm` at the halfword `hw` (0 to 3); the other bits 0, or 1 and all inverted, or kept.
constexpr word movz(unsigned rd, unsigned imm, unsigned hw = 0) {
  return 0xd2800000 | bits(hw, 2, 21, "movz") | bits(imm, 16, 5, "movz") | reg(rd, 0);
}
constexpr word movn(unsigned rd, unsigned imm, unsigned hw = 0) {
  return 0x92800000 | bits(hw, 2, 21, "movn") | bits(imm, 16, 5, "movn") | reg(rd, 0);
}
constexpr word movk(unsigned rd, unsigned imm, unsigned hw = 0) {
  return 0xf2800000 | bits(hw, 2, 21, "movk") | bits(imm, 16, 5, "movk") | reg(rd, 0);
}
// The 32-bit form, which clears the upper half; `hw` is 0 or 1.
constexpr word movn_w(unsigned rd, unsigned imm, unsigned hw = 0) {
  return 0x12800000 | bits(hw, 1, 21, "movn") | bits(imm, 16, 5, "movn") | reg(rd, 0);
}

// ---- loads and stores ---------------------------------------------------------------------------

// Rt at Rn (or SP) + offset, a multiple of 2^`scale` below 4096 units.
constexpr word unsigned_offset(word base, unsigned scale, unsigned rt, unsigned rn,
                               std::int64_t offset) {
  if (offset % (std::int64_t{1} << scale) != 0) {
    cannot_encode("unsigned offset");
  }
  return base | bits(offset >> scale, 12, 10, "unsigned offset") | reg(rn, 5) | reg(rt, 0);
}
constexpr word ldr_b(unsigned rt, unsigned rn, std::int64_t offset) {
  return unsigned_offset(0x39400000, 0, rt, rn, offset);
}
constexpr word str_b(unsigned rt, unsigned rn, std::int64_t offset) {
  return unsigned_offset(0x39000000, 0, rt, rn, offset);
}
constexpr word ldr_w(unsigned rt, unsigned rn, std::int64_t offset) {
  return unsigned_offset(0xb9400000, 2, rt, rn, offset);
}
constexpr word str_w(unsigned rt, unsigned rn, std::int64_t offset) {
  return unsigned_offset(0xb9000000, 2, rt, rn, offset);
}
constexpr word ldr_x(unsigned rt, unsigned rn, std::int64_t offset) {
  return unsigned_offset(0xf9400000, 3, rt, rn, offset);
}
constexpr word str_x(unsigned rt, unsigned rn, std::int64_t offset) {
  return unsigned_offset(0xf9000000, 3, rt, rn, offset);
}
constexpr word ldr_q(unsigned rt, unsigned rn, std::int64_t offset) {
  return unsigned_offset(0x3dc00000, 4, rt, rn, offset);
}
constexpr word str_q(unsigned rt, unsigned rn, std::int64_t offset) {
  return unsigned_offset(0x3d800000, 4, rt, rn, offset);
}
// Xt at Xn + 8 * Xm.
constexpr word ldr_x_indexed(unsigned rt, unsigned rn, unsigned rm) {
  return 0xf8607800 | reg(rm, 16) | reg(rn, 5) | reg(rt, 0);
}
// Rt and Rt2 at Rn (or SP) + offset, -64 to 63 units.
constexpr word ldp_x(unsigned rt, unsigned rt2, unsigned rn, std::int64_t offset) {
  return 0xa9400000 | scaled(offset, 3, 7, 15, "ldp") | reg(rt2, 10) | reg(rn, 5) | reg(rt, 0);
}
constexpr word stp_x(unsigned rt, unsigned rt2, unsigned rn, std::int64_t offset) {
  return 0xa9000000 | scaled(offset, 3, 7, 15, "stp") | reg(rt2, 10) | reg(rn, 5) | reg(rt, 0);
}
constexpr word ldp_q(unsigned rt, unsigned rt2, unsigned rn, std::int64_t offset) {
  return 0xad400000 | scaled(offset, 4, 7, 15, "ldp") | reg(rt2, 10) | reg(rn, 5) | reg(rt, 0);
}
constexpr word stp_q(unsigned rt, unsigned rt2, unsigned rn, std::int64_t offset) {
  return 0xad000000 | scaled(offset, 4, 7, 15, "stp") | reg(rt2, 10) | reg(rn, 5) | reg(rt, 0);
}
// Xt at PC + offset.
constexpr word ldr_x_literal(unsigned rt, std::int64_t offset) {
  return 0x58000000 | scaled(offset, 2, 19, 5, "ldr literal") | reg(rt, 0);
}
// PC + offset.
constexpr word adr(unsigned rd, std::int64_t offset) {
  const word imm = scaled(offset, 0, 21, 0, "adr");
  return 0x10000000 | (imm & 3) << 29 | (imm >> 2) << 5 | reg(rd, 0);
}

// ---- system registers ---------------------------------------------------------------------------

constexpr word mrs(unsigned rt, unsigned system) {
  return 0xd5300000 | bits(system, 15, 5, "mrs") | reg(rt, 0);
}
constexpr word msr(unsigned system, unsigned rt) {
  return 0xd5100000 | bits(system, 15, 5, "msr") | reg(rt, 0);
}

// ---- branches and exceptions --------------------------------------------------------------------

constexpr word b(std::int64_t offset) { return 0x14000000 | scaled(offset, 2, 26, 0, "b"); }
constexpr word bl(std::int64_t offset) { return 0x94000000 | scaled(offset, 2, 26, 0, "bl"); }
constexpr word b_cond(condition cond, std::int64_t offset) {
  return 0x54000000 | scaled(offset, 2, 19, 5, "b.cond") | static_cast<word>(cond);
}
constexpr word cbz_x(unsigned rt, std::int64_t offset) {
  return 0xb4000000 | scaled(offset, 2, 19, 5, "cbz") | reg(rt, 0);
}
constexpr word cbnz_x(unsigned rt, std::int64_t offset) {
  return 0xb5000000 | scaled(offset, 2, 19, 5, "cbnz") | reg(rt, 0);
}
constexpr word cbz_w(unsigned rt, std::int64_t offset) {
  return 0x34000000 | scaled(offset, 2, 19, 5, "cbz") | reg(rt, 0);
}
constexpr word cbnz_w(unsigned rt, std::int64_t offset) {
  return 0x35000000 | scaled(offset, 2, 19, 5, "cbnz") | reg(rt, 0);
}
// The two take the branch if bit `bit` (0 to 63) of Rt is clear, or set.
constexpr word tbz(unsigned rt, unsigned bit, std::int64_t offset) {
  return 0x36000000 | bits(bit, 6, 0, "tbz") >> 5 << 31 | (bit & 31) << 19 |
         scaled(offset, 2, 14, 5, "tbz") | reg(rt, 0);
}
constexpr word tbnz(unsigned rt, unsigned bit, std::int64_t offset) {
  return tbz(rt, bit, offset) | 0x01000000;
}
constexpr word br(unsigned rn) { return 0xd61f0000 | reg(rn, 5); }
constexpr word blr(unsigned rn) { return 0xd63f0000 | reg(rn, 5); }
constexpr word ret(unsigned rn) { return 0xd65f0000 | reg(rn, 5); }
constexpr word svc(unsigned imm) { return 0xd4000001 | bits(imm, 16, 5, "svc"); }
constexpr word udf(unsigned imm) { return bits(imm, 16, 0, "udf"); }
constexpr word brk(unsigned imm) { return 0xd4200000 | bits(imm, 16, 5, "brk"); }
constexpr word nop() { return 0xd503201f; }

}  // namespace ir::enc
