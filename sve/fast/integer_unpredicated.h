// Integer data processing on all elements: vectors, immediates, address computation and MOVPRFX.
#pragma once

#include "sve/fast/integer_operations.h"

namespace fast {

// Zn and Zm. The size is zd.kind.
template <class Operation>
inline aarch64_decode_rc binary(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn,
                                aarch64_z_reg zm, Operation operation) {
  by_size(zd.kind, [&]<class T>() {
    const auto a = load<T>(state->z[zn.index]);
    const auto b = load<T>(state->z[zm.index]);
    store<T>(state->z[zd.index], operation(a, b));
  });
  return aarch64_decode_ok;
}

// A source and the same immediate for all elements, of which the low bits count.
template <class Operation>
inline aarch64_decode_rc with_immediate(cpu_state* state, uint32_t size, unsigned zd, unsigned zn,
                                        uint64_t immediate, Operation operation) {
  by_size(size, [&]<class T>() {
    const auto a = load<T>(state->z[zn]);
    store<T>(state->z[zd], operation(a, broadcast(static_cast<T>(immediate))));
  });
  return aarch64_decode_ok;
}

}  // namespace fast

#define SVE_ZZZ(name, operation)                                                                   \
  inline aarch64_decode_rc name(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn,              \
                                aarch64_z_reg zm) {                                                \
    return fast::binary(state, zd, zn, zm, operation);                                             \
  }
#define SVE_ZI(name, type, operation)                                                              \
  inline aarch64_decode_rc name(cpu_state* state, aarch64_z_reg zdn, type immediate) {             \
    return fast::with_immediate(state, zdn.dn_kind, zdn.index, zdn.index, immediate, operation);   \
  }
#define SVE_ZI_BITMASK(name, operation)                                                            \
  inline aarch64_decode_rc name(cpu_state* state, aarch64_z_reg zdn,                               \
                                aarch64_sve_logical64_imm immediate) {                             \
    return fast::with_immediate(state, element_doubleword, zdn.index, zdn.index, immediate.value,  \
                                operation);                                                        \
  }
#define SVE_ZZI(name, operation)                                                                   \
  inline aarch64_decode_rc name(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn,              \
                                unsigned amount) {                                                 \
    return fast::with_immediate(state, zd.kind, zd.index, zn.index, amount, operation);            \
  }

// clang-format off

// Zd = Zn op Zm. The logical ones do not depend on the size.
SVE_ZZZ(sve_add_zzz, fast::add)
SVE_ZZZ(sve_sub_zzz, fast::sub)
SVE_ZZZ(sve_and_zzz, fast::bitwise_and)
SVE_ZZZ(sve_orr_zzz, fast::bitwise_or)
SVE_ZZZ(sve_eor_zzz, fast::bitwise_xor)
SVE_ZZZ(sve_bic_zzz, fast::bit_clear)

// Zdn = Zdn op an immediate, zero- or sign-extended by its type. The size is zdn.dn_kind.
SVE_ZI(sve_add_zi, unsigned, fast::add)
SVE_ZI(sve_sub_zi, unsigned, fast::sub)
SVE_ZI(sve_mul_zi, int,      fast::mul)

// Zdn = Zdn op a bitmask of 64 bits.
SVE_ZI_BITMASK(sve_and_zi, fast::bitwise_and)
SVE_ZI_BITMASK(sve_orr_zi, fast::bitwise_or)
SVE_ZI_BITMASK(sve_eor_zi, fast::bitwise_xor)

// Zd = Zn shifted by an amount in bits, as in the predicated forms. The size is zd.kind.
SVE_ZZI(sve_asr_zzi, fast::shift_right_signed)
SVE_ZZI(sve_lsl_zzi, fast::shift_left)

// clang-format on

#undef SVE_ZZZ
#undef SVE_ZI
#undef SVE_ZI_BITMASK
#undef SVE_ZZI

// ADR, packed doublewords: Zn + (Zm << amount). One function serves the four scales: the amount is
// read from the instruction word.
inline aarch64_decode_rc sve_adr_scaled_zzz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn,
                                            aarch64_z_reg zm) {
  const auto amount = static_cast<int>(state->instruction >> 10 & 3);
  const auto base = fast::load<uint64_t>(state->z[zn.index]);
  const auto offset = fast::load<uint64_t>(state->z[zm.index]);
  fast::store<uint64_t>(state->z[zd.index], base + (offset << amount));
  return aarch64_decode_ok;
}

// MOVPRFX (unpredicated): a copy of the whole register.
inline aarch64_decode_rc sve_movprfx_zz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn) {
  fast::store<uint8_t>(state->z[zd.index], fast::load<uint8_t>(state->z[zn.index]));
  return aarch64_decode_ok;
}
