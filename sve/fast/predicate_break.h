// The break instructions, which cut a loop's predicate off at a condition. All work on bytes.
#pragma once

#include "sve/fast/integer_operations.h"
#include "sve/fast/predicate_flags.h"

namespace fast {

// All bits below the lowest one, and the same with that bit; all bits if there is none.
inline predicate_bits below_lowest(predicate_bits bits) { return ~bits & (bits - 1); }
inline predicate_bits through_lowest(predicate_bits bits) { return bits ^ (bits - 1); }

// BRKA and BRKB: reach makes the true part from the active elements that break.
template <class Reach>
inline aarch64_decode_rc break_at(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg,
                                  aarch64_p_reg pn, Reach reach) {
  const auto governing = element_bits_of<uint8_t>(state->p[pg.index]);
  const predicate_bits breaks = governing & load_bits(state->p[pn.index]);
  const predicate_bits kept = pg.kind == aarch64_p_reg::zeroing ? 0 : load_bits(state->p[pd.index]);
  const predicate_bits whole_bytes = (governing << 8) - governing;
  store_bits(state->p[pd.index], (governing & reach(breaks)) | (kept & ~whole_bytes));
  return aarch64_decode_ok;
}

// Whether the last active element's byte of Pn is not zero; false if none is active.
inline bool last_active_is_set(const cpu_state* state, aarch64_p_reg pg, aarch64_p_reg pn) {
  uint8_t set[vector_bytes];
  store<uint8_t>(set, as_unsigned(load<uint8_t>(state->p[pn.index]) != 0));
  return has_highest_bit(element_bits_of<uint8_t>(state->p[pg.index]), load_bits(set));
}

}  // namespace fast

// BRKA: the active elements up to and with the first that is true in Pn. Inactive ones are zero if
// pg zeroes, else kept.
inline aarch64_decode_rc sve_brka_ppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg,
                                      aarch64_p_reg pn) {
  return fast::break_at(state, pd, pg, pn, fast::through_lowest);
}

// BRKB: the same without the first that is true in Pn.
inline aarch64_decode_rc sve_brkb_ppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg,
                                      aarch64_p_reg pn) {
  return fast::break_at(state, pd, pg, pn, fast::below_lowest);
}

// BRKN: Pdm is kept if the last active element is true in Pn, else cleared. Its flags do not depend
// on Pg.
inline aarch64_decode_rc sve_brkn(cpu_state* state, aarch64_p_reg pdm, aarch64_p_reg pg,
                                  aarch64_p_reg pn, bool flags) {
  const fast::predicate_bits result =
      fast::last_active_is_set(state, pg, pn) ? fast::load_bits(state->p[pdm.index]) : 0;
  if (flags)
    fast::set_predicate_flags(state, fast::first_bits<uint8_t>, result & fast::first_bits<uint8_t>);
  fast::store_bits(state->p[pdm.index], result);
  return aarch64_decode_ok;
}

inline aarch64_decode_rc sve_brkn_ppp(cpu_state* state, aarch64_p_reg pdm, aarch64_p_reg pg,
                                      aarch64_p_reg pn) {
  return sve_brkn(state, pdm, pg, pn, false);
}

inline aarch64_decode_rc sve_brkns_ppp(cpu_state* state, aarch64_p_reg pdm, aarch64_p_reg pg,
                                       aarch64_p_reg pn) {
  return sve_brkn(state, pdm, pg, pn, true);
}

// BRKPB: if the last active element is true in Pn, the active elements below the first that is true
// in Pm; else none.
inline aarch64_decode_rc sve_brkpb(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg,
                                   aarch64_p_reg pn, aarch64_p_reg pm, bool flags) {
  const auto governing = fast::element_bits_of<uint8_t>(state->p[pg.index]);
  const auto before_break =
      governing & fast::below_lowest(governing & fast::load_bits(state->p[pm.index]));
  const fast::predicate_bits result = fast::last_active_is_set(state, pg, pn) ? before_break : 0;
  if (flags)
    fast::set_predicate_flags(state, governing, result);
  fast::store_bits(state->p[pd.index], result);
  return aarch64_decode_ok;
}

inline aarch64_decode_rc sve_brkpb_pppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg,
                                        aarch64_p_reg pn, aarch64_p_reg pm) {
  return sve_brkpb(state, pd, pg, pn, pm, false);
}

inline aarch64_decode_rc sve_brkpbs_pppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg,
                                         aarch64_p_reg pn, aarch64_p_reg pm) {
  return sve_brkpb(state, pd, pg, pn, pm, true);
}
