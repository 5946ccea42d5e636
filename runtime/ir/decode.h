// The little decoder: what the block builder must know of an application instruction. A word is
// never decoded further than that.
#pragma once

#include <array>
#include <cstdint>

namespace ir {

// ---- the end of a block -------------------------------------------------------------------------

enum class control : std::uint8_t {
  none,
  jump,           // B, and B.AL, B.NV: offset
  call,           // BL: offset
  conditional,    // B.cond, BC.cond, CBZ, CBNZ, TBZ, TBNZ: offset
  jump_register,  // BR and its authenticated forms
  call_register,  // BLR and its authenticated forms
  ret,            // RET, RETAA, RETAB
  system_call,    // SVC
  cache_flush,    // IC IVAU
  exception,      // everything else that does not fall through: BRK, HLT, UDF, ERET, ...
};

control control_of(std::uint32_t word);

// The offset in bytes of a jump, call or conditional.
std::int64_t branch_offset(std::uint32_t word);
// A conditional with the opposite condition and another offset, a multiple of 4 in 16 signed bits.
std::uint32_t inverted_branch(std::uint32_t word, std::int64_t offset);
// The same condition with another offset, and whether there is room for that.
std::uint32_t redirected_branch(std::uint32_t word, std::int64_t offset);
bool branch_reaches(std::uint32_t word, std::int64_t offset);
// A jump by B.cond or BC.cond with a condition that always holds.
bool is_conditional_jump(std::uint32_t word);
// The register of a BR, BLR or RET in any form: X30 for RETAA and RETAB.
unsigned branch_register(std::uint32_t word);
// For an authenticated BR, BLR or RET the word that authenticates `target`, a register that holds a
// copy of the branch's; 0 for the plain forms. The modifier register of BRAA, BRAB, BLRAA and BLRAB
// stays a register field of that word (replace_reg), and is no other's.
std::uint32_t authentication(std::uint32_t word, unsigned target);

// The encodings set apart for scalable vectors.
constexpr bool is_scalable(std::uint32_t word) { return (word & 0x1e000000) == 0x04000000; }
// Those of the matrix extension, SMSTART and SMSTOP, and its registers, of which TPIDR2_EL0 is one.
bool is_streaming(std::uint32_t word);

// ---- operands relative to the PC ----------------------------------------------------------------

enum class pc_relative : std::uint8_t { none, adr, adrp, load, prefetch };

pc_relative pc_relative_of(std::uint32_t word);
// The address that the instruction, at `pc`, computes or accesses.
std::uint64_t pc_relative_target(std::uint32_t word, std::uint64_t pc);
// The load of the same register in the same way from [Xbase].
std::uint32_t literal_load_from(std::uint32_t word, unsigned base);

// ---- system registers ---------------------------------------------------------------------------

constexpr bool is_mrs(std::uint32_t word) { return (word & 0xfff00000) == 0xd5300000; }
constexpr bool is_msr_register(std::uint32_t word) { return (word & 0xfff00000) == 0xd5100000; }
// The system register of MRS or MSR (register), as in encode.h.
constexpr unsigned system_register_of(std::uint32_t word) { return word >> 5 & 0x7fff; }

// ---- exclusives ---------------------------------------------------------------------------------

bool is_load_exclusive(std::uint32_t word);
bool is_store_exclusive(std::uint32_t word);

// ---- general registers --------------------------------------------------------------------------

constexpr unsigned field_t(std::uint32_t word) { return word & 31; }
constexpr unsigned field_n(std::uint32_t word) { return word >> 5 & 31; }
constexpr unsigned field_a(std::uint32_t word) { return word >> 10 & 31; }
constexpr unsigned field_m(std::uint32_t word) { return word >> 16 & 31; }

// Which of the fields T, N, A and M name a general register, SP or the zero register. A field may
// be told that the instruction ignores, so naming a register does not mean using it.
namespace fields {
inline constexpr std::uint8_t none = 0, t = 1, n = 2, a = 4, m = 8;
}
std::uint8_t general_fields(std::uint32_t word);

// Compare-and-swap pair: T and M name a pair of registers, the even one and its successor.
constexpr bool is_casp(std::uint32_t word) { return (word & 0xbfa07c00) == 0x08207c00; }

// Whether the number stands where a register's may: most words can be told apart by that alone.
constexpr bool in_a_field(std::uint32_t word, unsigned number) {
  return field_t(word) == number || field_n(word) == number || field_a(word) == number ||
         field_m(word) == number;
}

// The set of registers that the word names: bit k for number k; 31 is SP or the zero register.
std::uint32_t named_registers(std::uint32_t word);
bool uses_reg(std::uint32_t word, unsigned number);
// `word` with `from` replaced by `to` in every general-register field. In a CASP both must be even
// if T or M names `from`, and their successors go with them.
std::uint32_t replace_reg(std::uint32_t word, unsigned from, unsigned to);
// The lowest register that the word does not name; for a CASP the lowest even one whose successor
// is not named either.
unsigned lowest_unused_reg(std::uint32_t word);

// ---- words that stay as they are ----------------------------------------------------------------

// Bits 31:24 of loads, stores and data processing that mean the same at any address. Without
// exclusives: one of a pair of registers may stand in no field.
inline constexpr auto plain_first_bytes = [] {
  constexpr unsigned groups = 0b1111'0011'1111'0000;  // by bits 28:25
  std::array<bool, 256> plain{};
  for (unsigned byte = 0; byte < plain.size(); ++byte) {
    const bool adr = (byte & 0x1f) == 0x10;
    const bool literal = (byte & 0x3b) == 0x18;
    const bool exclusive = (byte & 0x3f) == 0x08;
    plain[byte] = (groups >> (byte >> 1 & 15) & 1) != 0 && !adr && !literal && !exclusive;
  }
  return plain;
}();

// Whether the word needs no rewriting where the register has another meaning. Cheap, for it is
// asked about every instruction; false for some words of which it is true.
constexpr bool is_plain_without(std::uint32_t word, unsigned number) {
  return plain_first_bytes[word >> 24] && !in_a_field(word, number);
}

}  // namespace ir
