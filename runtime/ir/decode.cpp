#include "runtime/ir/decode.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "runtime/ir/encode.h"

namespace ir {
namespace {

struct control_row {
  std::uint32_t mask;
  std::uint32_t value;
  control what;
};

// The first match holds.
constexpr control_row control_rows[] = {
    // clang-format off
    {0xfc000000, 0x14000000, control::jump},           // B
    {0xfc000000, 0x94000000, control::call},           // BL
    {0xff00000e, 0x5400000e, control::jump},           // B.AL, B.NV, BC.AL, BC.NV: always taken
    {0xff000000, 0x54000000, control::conditional},    // B.cond, BC.cond
    {0x7c000000, 0x34000000, control::conditional},    // CBZ, CBNZ, TBZ, TBNZ
    {0xfffffc1f, 0xd61f0000, control::jump_register},  // BR
    {0xfffff81f, 0xd61f081f, control::jump_register},  // BRAAZ, BRABZ
    {0xfffff800, 0xd71f0800, control::jump_register},  // BRAA, BRAB
    {0xfffffc1f, 0xd63f0000, control::call_register},  // BLR
    {0xfffff81f, 0xd63f081f, control::call_register},  // BLRAAZ, BLRABZ
    {0xfffff800, 0xd73f0800, control::call_register},  // BLRAA, BLRAB
    {0xfffffc1f, 0xd65f0000, control::ret},            // RET
    {0xfffffbff, 0xd65f0bff, control::ret},            // RETAA, RETAB
    {0xfe000000, 0xd6000000, control::exception},      // ERET, DRPS, undefined
    {0xffe0001f, 0xd4000001, control::system_call},    // SVC
    {0xff000000, 0xd4000000, control::exception},      // BRK, HLT, HVC, SMC, DCPS
    {0xffffffe0, 0xd50b7520, control::cache_flush},    // IC IVAU
    {0xffff0000, 0x00000000, control::exception},      // UDF
    // clang-format on
};

// By bits 31:21, the first row that they do not exclude: for most words the only one, or none.
constexpr unsigned top_bits = 11;
constexpr auto first_control_rows = [] {
  std::array<std::uint8_t, 1 << top_bits> first{};
  for (std::uint32_t top = 0; top < first.size(); ++top) {
    const auto fits = [=](const control_row& row) {
      return (((top << (32 - top_bits)) ^ row.value) & row.mask) >> (32 - top_bits) == 0;
    };
    first[top] = static_cast<std::uint8_t>(std::ranges::find_if(control_rows, fits) - control_rows);
  }
  return first;
}();

std::int64_t sign_extend(std::uint64_t value, unsigned width) {
  return static_cast<std::int64_t>(value << (64 - width)) >> (64 - width);
}

bool is_branch_26(std::uint32_t word) { return (word & 0x7c000000) == 0x14000000; }
bool is_test_branch(std::uint32_t word) { return (word & 0x7e000000) == 0x36000000; }
bool is_conditional_b(std::uint32_t word) { return (word & 0xff000000) == 0x54000000; }

// Bits 11:10 of an authenticated branch: 2 with key A, 3 with key B, 0 in the plain forms.
constexpr unsigned authenticated_bit = 1u << 11;
constexpr unsigned key_b_bit = 1u << 10;
constexpr unsigned modifier_bit = 1u << 24;  // BRAA rather than BRAAZ

}  // namespace

control control_of(std::uint32_t word) {
  const control_row* row = control_rows + first_control_rows[word >> (32 - top_bits)];
  while (row != std::end(control_rows) && (word & row->mask) != row->value) {
    ++row;
  }
  return row != std::end(control_rows) ? row->what : control::none;
}

std::int64_t branch_offset(std::uint32_t word) {
  if (is_branch_26(word)) {
    return sign_extend(word, 26) * 4;
  }
  return is_test_branch(word) ? sign_extend(word >> 5, 14) * 4 : sign_extend(word >> 5, 19) * 4;
}

namespace {

unsigned offset_width(std::uint32_t word) { return is_test_branch(word) ? 14 : 19; }

}  // namespace

std::uint32_t inverted_branch(std::uint32_t word, std::int64_t offset) {
  constexpr std::uint32_t condition_bit = 1;
  constexpr std::uint32_t non_zero_bit = 1u << 24;
  return redirected_branch(word ^ (is_conditional_b(word) ? condition_bit : non_zero_bit), offset);
}

std::uint32_t redirected_branch(std::uint32_t word, std::int64_t offset) {
  const unsigned width = offset_width(word);
  const std::uint32_t offset_field = ((1u << width) - 1) << 5;
  return (word & ~offset_field) | enc::scaled(offset, 2, width, 5, "conditional branch");
}

bool branch_reaches(std::uint32_t word, std::int64_t offset) {
  const std::int64_t limit = std::int64_t{4} << (offset_width(word) - 1);
  return offset >= -limit && offset < limit;
}

bool is_streaming(std::uint32_t word) {
  const bool data = (word & 0x9e000000) == 0x80000000;
  const bool start_or_stop = (word & 0xfffff0ff) == 0xd503407f;
  const unsigned system = system_register_of(word);
  const bool moves = is_mrs(word) || is_msr_register(word);
  return data || start_or_stop || (moves && (system == sys_svcr || system == sys_tpidr2_el0));
}

bool is_conditional_jump(std::uint32_t word) { return (word & 0xff00000e) == 0x5400000e; }

unsigned branch_register(std::uint32_t word) {
  const bool return_address = (word & 0xfffffbff) == 0xd65f0bff;
  return return_address ? 30 : field_n(word);
}

std::uint32_t authentication(std::uint32_t word, unsigned target) {
  constexpr std::uint32_t autia = 0xdac11000;
  constexpr std::uint32_t autiza = 0xdac133e0;
  if ((word & authenticated_bit) == 0) {
    return 0;
  }
  const std::uint32_t key = word & key_b_bit;
  if (control_of(word) == control::ret) {
    return autia | key | sp << 5 | target;
  }
  return (word & modifier_bit) != 0 ? autia | key | field_t(word) << 5 | target
                                    : autiza | key | target;
}

pc_relative pc_relative_of(std::uint32_t word) {
  if ((word & 0x1f000000) == 0x10000000) {
    return word >> 31 != 0 ? pc_relative::adrp : pc_relative::adr;
  }
  if ((word & 0x3b000000) != 0x18000000) {
    return pc_relative::none;
  }
  const bool vector = (word >> 26 & 1) != 0;
  if (word >> 30 == 3) {
    return vector ? pc_relative::none : pc_relative::prefetch;
  }
  return pc_relative::load;
}

std::uint64_t pc_relative_target(std::uint32_t word, std::uint64_t pc) {
  constexpr std::uint64_t page_mask = 0xfff;
  const std::uint64_t imm21 = (word >> 5 & 0x7ffff) << 2 | (word >> 29 & 3);
  switch (pc_relative_of(word)) {
  case pc_relative::adr:
    return pc + static_cast<std::uint64_t>(sign_extend(imm21, 21));
  case pc_relative::adrp:
    return (pc & ~page_mask) + (static_cast<std::uint64_t>(sign_extend(imm21, 21)) << 12);
  default:
    return pc + static_cast<std::uint64_t>(sign_extend(word >> 5, 19)) * 4;
  }
}

std::uint32_t literal_load_from(std::uint32_t word, unsigned base) {
  // By V and the size in bits 31:30: LDR W, LDR X, LDRSW; LDR S, LDR D, LDR Q.
  constexpr std::uint32_t general[] = {0xb9400000, 0xf9400000, 0xb9800000};
  constexpr std::uint32_t vector[] = {0xbd400000, 0xfd400000, 0x3dc00000};
  const unsigned size = word >> 30;
  if (pc_relative_of(word) != pc_relative::load) {
    cannot_encode("literal load");
  }
  return ((word >> 26 & 1) != 0 ? vector[size] : general[size]) | base << 5 | field_t(word);
}

namespace {

// Load and store exclusive: bit 23 clear; bit 21 the pair forms, which exist for W and X only (the
// byte and halfword encodings of it are CASP); bit 22 load.
bool is_exclusive(std::uint32_t word) {
  const bool exclusive = (word & 0x3f800000) == 0x08000000;
  const bool pair = (word >> 21 & 1) != 0;
  return exclusive && (!pair || word >> 31 != 0);
}

}  // namespace

bool is_load_exclusive(std::uint32_t word) { return is_exclusive(word) && (word >> 22 & 1) != 0; }
bool is_store_exclusive(std::uint32_t word) { return is_exclusive(word) && (word >> 22 & 1) == 0; }

}  // namespace ir
