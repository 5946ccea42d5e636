// Predicates from predicates: logic, PTRUE, PTEST, PNEXT, and the first-fault register.
#pragma once

#include "sve/fast/integer_operations.h"
#include "sve/fast/predicate_flags.h"
#include "sve/fast/predicate_pattern.h"

namespace fast {

// Pn and Pm byte by byte, zero where Pg is not active.
template <class Operation>
inline aarch64_decode_rc predicate_logic(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg,
                                         aarch64_p_reg pn, aarch64_p_reg pm, Operation operation) {
  const auto n = load<uint8_t>(state->p[pn.index]);
  const auto m = load<uint8_t>(state->p[pm.index]);
  store<uint8_t>(state->p[pd.index], operation(n, m) & active<uint8_t>(state->p[pg.index]));
  return aarch64_decode_ok;
}

inline constexpr auto both_zero = [](auto n, auto m) { return as_unsigned((n | m) == 0) & 1; };

}  // namespace fast

#define SVE_PPPP(name, operation)                                                                  \
  inline aarch64_decode_rc name(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg,              \
                                aarch64_p_reg pn, aarch64_p_reg pm) {                              \
    return fast::predicate_logic(state, pd, pg, pn, pm, operation);                                \
  }

// clang-format off

// Pd = Pn op Pm, on whole bytes: bytes of 0 and 1 stay such.
SVE_PPPP(sve_and_pppp, fast::bitwise_and)
SVE_PPPP(sve_bic_pppp, fast::bit_clear)
SVE_PPPP(sve_eor_pppp, fast::bitwise_xor)
SVE_PPPP(sve_orr_pppp, fast::bitwise_or)
SVE_PPPP(sve_nor_pppp, fast::both_zero)

// clang-format on

#undef SVE_PPPP

// SEL (predicates): Pn where Pg is active, else Pm.
inline aarch64_decode_rc sve_sel_pppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg,
                                      aarch64_p_reg pn, aarch64_p_reg pm) {
  fast::store<uint8_t>(state->p[pd.index],
                       fast::select<uint8_t>(fast::active<uint8_t>(state->p[pg.index]),
                                             fast::load<uint8_t>(state->p[pn.index]),
                                             fast::load<uint8_t>(state->p[pm.index])));
  return aarch64_decode_ok;
}

// PFALSE.
inline aarch64_decode_rc sve_pfalse_p(cpu_state* state, aarch64_p_reg pd) {
  fast::store_bits(state->p[pd.index], 0);
  return aarch64_decode_ok;
}

// PTRUE: as many elements as the pattern names. The size is pd.kind.
inline aarch64_decode_rc sve_ptrue_pi(cpu_state* state, aarch64_p_reg pd, unsigned pattern) {
  fast::by_size(pd.kind, [&]<class T>() {
    const T count = fast::pattern_counts<fast::elements<T>>.of[pattern];
    fast::store_predicate<T>(state->p[pd.index],
                             fast::as_unsigned(fast::iota<T> < fast::broadcast(count)));
  });
  return aarch64_decode_ok;
}

// PTEST: the flags alone.
inline aarch64_decode_rc sve_ptest_pp(cpu_state* state, aarch64_p_reg pg, aarch64_p_reg pn) {
  sve_ptest<signed char>(state, reinterpret_cast<const char*>(state->p[pg.index]),
                         reinterpret_cast<const char*>(state->p[pn.index]));
  return aarch64_decode_ok;
}

// PNEXT: the first active element above the last true one of Pdn. Sets flags; the size is
// pdn.dn_kind2.
inline aarch64_decode_rc sve_pnext_pp(cpu_state* state, aarch64_p_reg pdn, aarch64_p_reg pg) {
  fast::by_size(pdn.dn_kind2, [&]<class T>() {
    fast::predicate_bits passed = fast::element_bits_of<T>(state->p[pdn.index]);
#pragma GCC unroll 4
    for (unsigned distance = 8 * sizeof(T); distance < 8 * vector_bytes; distance *= 2)
      passed |= passed >> distance;
    const auto left = fast::element_bits_of<T>(state->p[pg.index]) & ~passed;
    fast::store_with_flags<T>(state, pdn, state->p[pg.index], fast::lowest_bit(left));
  });
  return aarch64_decode_ok;
}

// RDFFR.
inline aarch64_decode_rc sve_rdffr_p(cpu_state* state, aarch64_p_reg pd) {
  fast::store_bits(state->p[pd.index], fast::load_bits(state->ffr));
  return aarch64_decode_ok;
}

// RDFFR (predicated): zero where Pg is not active. Sets no flags.
inline aarch64_decode_rc sve_rdffr_pp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg) {
  fast::store_bits(state->p[pd.index],
                   fast::load_bits(state->ffr) & fast::load_bits(state->p[pg.index]));
  return aarch64_decode_ok;
}

// WRFFR.
inline aarch64_decode_rc sve_wrffr_p(cpu_state* state, aarch64_p_reg pn) {
  fast::store_bits(state->ffr, fast::load_bits(state->p[pn.index]));
  return aarch64_decode_ok;
}

// SETFFR.
inline aarch64_decode_rc sve_setffr(cpu_state* state) {
  fast::store_bits(state->ffr, fast::first_bits<uint8_t>);
  return aarch64_decode_ok;
}
