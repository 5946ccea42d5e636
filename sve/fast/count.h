// Arithmetic on the vector length and counts of elements and predicate bits.
#pragma once

#include "sve/fast/integer_operations.h"
#include "sve/fast/predicate_flags.h"
#include "sve/fast/predicate_pattern.h"

namespace fast {

// Elements of type T that a pattern names, times the multiplier.
template <class T> inline uint64_t element_count(unsigned pattern, unsigned multiplier) {
  return uint64_t{pattern_counts<elements<T>>.of[pattern]} * multiplier;
}

// Rdn op the count of elements of type T.
template <class T, class Operation>
inline aarch64_decode_rc count_into_register(cpu_state* state, aarch64_i_reg rdn, unsigned pattern,
                                             unsigned multiplier, Operation operation) {
  write(state, rdn, operation(read(state, rdn), element_count<T>(pattern, multiplier)));
  return aarch64_decode_ok;
}

// Every element of Zdn op the count of such elements.
template <class T, class Operation>
inline aarch64_decode_rc count_into_vector(cpu_state* state, aarch64_z_reg zdn, unsigned pattern,
                                           unsigned multiplier, Operation operation) {
  const auto count = static_cast<T>(element_count<T>(pattern, multiplier));
  store<T>(state->z[zdn.index], operation(load<T>(state->z[zdn.index]), broadcast(count)));
  return aarch64_decode_ok;
}

// How many of a predicate's elements are set, from their bits: the sum of all bytes, by a multiply.
inline uint64_t count_bits(predicate_bits bits) {
  const auto low = static_cast<uint64_t>(bits);
  const auto high = static_cast<uint64_t>(bits >> 64);
  constexpr auto each_byte = static_cast<uint64_t>(first_bits<uint8_t>);
  return (low + high) * each_byte >> 56;
}

}  // namespace fast

#define SVE_RII(name, type, operation)                                                             \
  inline aarch64_decode_rc name(cpu_state* state, aarch64_i_reg rdn, unsigned pattern,             \
                                unsigned multiplier) {                                             \
    return fast::count_into_register<type>(state, rdn, pattern, multiplier, operation);            \
  }
#define SVE_ZII(name, type, operation)                                                             \
  inline aarch64_decode_rc name(cpu_state* state, aarch64_z_reg zdn, unsigned pattern,             \
                                unsigned multiplier) {                                             \
    return fast::count_into_vector<type>(state, zdn, pattern, multiplier, operation);              \
  }

// clang-format off

// Rdn +- elements of the pattern * multiplier (1 to 16), in 64 bits.
SVE_RII(sve_incb_rii, uint8_t,  fast::add)
SVE_RII(sve_inch_rii, uint16_t, fast::add)
SVE_RII(sve_incw_rii, uint32_t, fast::add)
SVE_RII(sve_incd_rii, uint64_t, fast::add)
SVE_RII(sve_decb_rii, uint8_t,  fast::sub)
SVE_RII(sve_dech_rii, uint16_t, fast::sub)
SVE_RII(sve_decw_rii, uint32_t, fast::sub)
SVE_RII(sve_decd_rii, uint64_t, fast::sub)

// Every element of Zdn +- the same.
SVE_ZII(sve_inch_zii, uint16_t, fast::add)
SVE_ZII(sve_incw_zii, uint32_t, fast::add)
SVE_ZII(sve_incd_zii, uint64_t, fast::add)
SVE_ZII(sve_dech_zii, uint16_t, fast::sub)
SVE_ZII(sve_decw_zii, uint32_t, fast::sub)
SVE_ZII(sve_decd_zii, uint64_t, fast::sub)

// clang-format on

#undef SVE_RII
#undef SVE_ZII

// UQDECB: saturates at zero, in the width rdn.dn_kind; the result is zero-extended.
inline aarch64_decode_rc sve_uqdecb_rii(cpu_state* state, aarch64_i_reg rdn, unsigned pattern,
                                        unsigned multiplier) {
  const uint64_t whole = fast::read(state, rdn);
  const uint64_t value = rdn.dn_kind == element_word ? static_cast<uint32_t>(whole) : whole;
  const uint64_t count = fast::element_count<uint8_t>(pattern, multiplier);
  fast::write(state, rdn, value > count ? value - count : 0);
  return aarch64_decode_ok;
}

// CNTP: the elements that are active in Pg and true in Pn. The size is pn.kind.
inline aarch64_decode_rc sve_cntp_rpp(cpu_state* state, aarch64_i_reg rd, aarch64_p_reg pg,
                                      aarch64_p_reg pn) {
  fast::by_size(pn.kind, [&]<class T>() {
    const auto counted =
        fast::element_bits_of<T>(state->p[pn.index]) & fast::load_bits(state->p[pg.index]);
    fast::write(state, rd, fast::count_bits(counted));
  });
  return aarch64_decode_ok;
}

// INCP (scalar): Rdn plus the true elements of Pn. The size is pn.kind.
inline aarch64_decode_rc sve_incp_rp(cpu_state* state, aarch64_i_reg rdn, aarch64_p_reg pn) {
  fast::by_size(pn.kind, [&]<class T>() {
    const uint64_t count = fast::count_bits(fast::element_bits_of<T>(state->p[pn.index]));
    fast::write(state, rdn, fast::read(state, rdn) + count);
  });
  return aarch64_decode_ok;
}

// RDVL, ADDVL, ADDPL: multiples of the bytes of a vector, and of its predicate (one bit for each
// byte of a vector, so an eighth). Rd and Rn of ADDVL and ADDPL may be SP.

inline aarch64_decode_rc sve_rdvl_ri(cpu_state* state, aarch64_i_reg rd, int multiplier) {
  fast::write(state, rd, static_cast<uint64_t>(int64_t{multiplier} * int64_t{vector_bytes}));
  return aarch64_decode_ok;
}

inline aarch64_decode_rc sve_addvl_rri(cpu_state* state, aarch64_i_rsp_reg rd, aarch64_i_rsp_reg rn,
                                       int multiplier) {
  const auto offset = static_cast<uint64_t>(int64_t{multiplier} * int64_t{vector_bytes});
  fast::write(state, rd, fast::read(state, rn) + offset);
  return aarch64_decode_ok;
}

inline aarch64_decode_rc sve_addpl_rri(cpu_state* state, aarch64_i_rsp_reg rd, aarch64_i_rsp_reg rn,
                                       int multiplier) {
  const auto offset = static_cast<uint64_t>(int64_t{multiplier} * int64_t{vector_bytes / 8});
  fast::write(state, rd, fast::read(state, rn) + offset);
  return aarch64_decode_ok;
}
