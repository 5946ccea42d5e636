// The condition flags that follow from a predicate.
#pragma once

#include "sve/fast/operands.h"
#include "sve/lanes/predicate_bits.h"

namespace fast {

// Sets N, Z and C, clears V and keeps all else of nzcv.
inline void set_flags(cpu_state* state, bool n, bool z, bool c) {
  const uint64_t flags = uint64_t{n} << 31 | uint64_t{z} << 30 | uint64_t{c} << 29;
  state->nzcv = (state->nzcv & ~(flag_n | flag_z | flag_c | flag_v)) | flags;
}

// The flags of a result under a governing predicate, both as element bits: N is the first active
// element, Z that no active element is true, C that the last active one is false.
inline void set_predicate_flags(cpu_state* state, predicate_bits mask, predicate_bits result) {
  set_flags(state, (lowest_bit(mask) & result) != 0, (mask & result) == 0,
            !has_highest_bit(mask, result));
}

}  // namespace fast

// The flags of the predicate `result` under the governing predicate `mask`, 16 bytes each, slots
// of p or buffers. The width of T is the element's. A flag-setting function calls it before it
// writes its destination, which may be the governing predicate.
template <class T> inline void sve_ptest(cpu_state* state, const char* mask, const char* result) {
  using Element = std::make_unsigned_t<T>;
  fast::set_predicate_flags(state, fast::element_bits_of<Element>(mask),
                            fast::element_bits_of<Element>(result));
}

namespace fast {

// Writes a predicate from the bits of its elements and sets the flags under a governing predicate,
// which is read before.
template <class T>
inline void store_with_flags(cpu_state* state, aarch64_p_reg pd, const uint8_t* governing,
                             predicate_bits result) {
  sve_ptest<T>(state, reinterpret_cast<const char*>(governing),
               reinterpret_cast<const char*>(&result));
  store_bits(state->p[pd.index], result);
}

}  // namespace fast
