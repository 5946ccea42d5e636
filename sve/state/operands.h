// The values in which a decode stub hands operands to a fast-path instruction function.
#pragma once

#include <array>
#include <cstdint>

// Sizes of vector and predicate elements; the values stand in the operands' kind words.
enum element_size : uint32_t {
  element_byte = 0,
  element_halfword = 1,
  element_word = 2,
  element_doubleword = 3,
};

using register_name_table = std::array<const char*, 32>;
using predicate_name_table = std::array<const char*, 16>;

// SVE data register. A plain operand has its element size in kind; one that the instruction reads
// and overwrites (Zdn) has it in dn_kind and dn_kind2.
struct aarch64_z_reg {
  static constexpr uint32_t quadword = 4;
  static constexpr uint32_t none = 5;

  uint32_t index;
  uint32_t kind;
  uint32_t dn_kind;
  uint32_t dn_kind2;

  static const register_name_table zname, zname_b, zname_h, zname_s, zname_d;
};

// SVE predicate register: an element size, or how it governs the instruction.
struct aarch64_p_reg {
  static constexpr uint32_t merging = 4;
  static constexpr uint32_t zeroing = 5;
  static constexpr uint32_t governing = 6;  // without suffix
  static constexpr uint32_t none = 7;

  uint32_t index;
  uint32_t kind;
  uint32_t dn_kind;
  uint32_t dn_kind2;

  static const predicate_name_table pname, pname_m, pname_z, pname_b, pname_h, pname_s, pname_d;
};

// General register; 31 is the zero register. The kind is the width that the instruction uses.
struct aarch64_i_reg {
  static constexpr uint32_t none = 4;

  uint32_t index;
  uint32_t kind;
  uint32_t dn_kind;
  uint32_t dn_kind2;

  static const register_name_table wname, xname;
};

// General register; 31 is SP. The base of memory operands, and where SP is a data operand.
struct aarch64_i_rsp_reg {
  uint32_t index;
  uint32_t kind;

  static const register_name_table wname, xname;
};

// The one-bit immediate that chooses between two floating-point constants.
struct aarch64_sve_fp_arith_imm {
  uint8_t value;
};

// The eight-bit floating-point immediate, expanded for every width.
struct aarch64_sve_fp_dup_imm {
  uint16_t half;
  uint32_t single;
  double wide;
};

// The bitmask immediate, decoded and replicated to 64 bits.
struct aarch64_sve_logical64_imm {
  uint64_t value;
};
