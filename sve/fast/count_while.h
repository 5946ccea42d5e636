// Loop predicates and index vectors.
#pragma once

#include <limits>

#include "sve/fast/integer_operations.h"
#include "sve/fast/predicate_flags.h"

namespace fast {

// Calls function.operator()<T>() with the type of a W or X operand, signed or not.
template <bool is_signed, class Function>
inline auto by_operand_width(uint32_t width, Function function) {
  if (width == element_word)
    return function.template operator()<std::conditional_t<is_signed, int32_t, uint32_t>>();
  return function.template operator()<std::conditional_t<is_signed, int64_t, uint64_t>>();
}

// How many of n elements a loop from first has left. The differences are those of the unsigned
// operands, which hold any distance.
template <class T> inline unsigned elements_below(T first, T end, unsigned n) {
  using U = std::make_unsigned_t<T>;
  const U left = static_cast<U>(end) - static_cast<U>(first);
  const unsigned count = left < n ? static_cast<unsigned>(left) : n;
  return first < end ? count : 0;
}

// The same with the end in the loop. The counter wraps, so an end of all ones never comes.
template <class T> inline unsigned elements_through(T first, T last, unsigned n) {
  const T left = last - first;
  const unsigned count = left < n ? static_cast<unsigned>(left) + 1 : n;
  const unsigned until_last = first <= last ? count : 0;
  return last == std::numeric_limits<T>::max() ? n : until_last;
}

inline constexpr auto while_below = [](auto first, auto end, unsigned n) {
  return elements_below(first, end, n);
};
inline constexpr auto while_through = [](auto first, auto last, unsigned n) {
  return elements_through(first, last, n);
};

// Since the elements that are true come first, their count gives the predicate and the flags.
template <bool is_signed, class Count>
inline aarch64_decode_rc loop_predicate(cpu_state* state, aarch64_p_reg pd, aarch64_i_reg rn,
                                        aarch64_i_reg rm, Count count_of) {
  by_size(pd.kind, [&]<class T>() {
    const unsigned count = by_operand_width<is_signed>(rn.kind, [&]<class Operand>() {
      return count_of(static_cast<Operand>(read(state, rn)), static_cast<Operand>(read(state, rm)),
                      elements<T>);
    });
    set_flags(state, count != 0, count == 0, count != elements<T>);
    store_predicate<T>(state->p[pd.index], as_unsigned(iota<T> < broadcast(static_cast<T>(count))));
  });
  return aarch64_decode_ok;
}

// base, base + step and so on, in elements of kind size.
inline aarch64_decode_rc index_vector(cpu_state* state, aarch64_z_reg zd, uint64_t base,
                                      uint64_t step) {
  by_size(zd.kind, [&]<class T>() {
    store<T>(state->z[zd.index],
             broadcast(static_cast<T>(base)) + iota<T> * broadcast(static_cast<T>(step)));
  });
  return aarch64_decode_ok;
}

inline uint64_t extended(int immediate) { return static_cast<uint64_t>(int64_t{immediate}); }

}  // namespace fast

// WHILELT (signed), WHILELO (unsigned): element i is true while Rn + i is below Rm. The operands'
// width is rn.kind, the elements' size pd.kind. Sets flags.
inline aarch64_decode_rc sve_whilelt_prr(cpu_state* state, aarch64_p_reg pd, aarch64_i_reg rn,
                                         aarch64_i_reg rm) {
  return fast::loop_predicate<true>(state, pd, rn, rm, fast::while_below);
}

inline aarch64_decode_rc sve_whilelo_prr(cpu_state* state, aarch64_p_reg pd, aarch64_i_reg rn,
                                         aarch64_i_reg rm) {
  return fast::loop_predicate<false>(state, pd, rn, rm, fast::while_below);
}

// WHILELS (unsigned): element i is true while Rn + i is at most Rm.
inline aarch64_decode_rc sve_whilels_prr(cpu_state* state, aarch64_p_reg pd, aarch64_i_reg rn,
                                         aarch64_i_reg rm) {
  return fast::loop_predicate<false>(state, pd, rn, rm, fast::while_through);
}

// INDEX: element i is base + i * step. The size is zd.kind; registers lose what is above it.
inline aarch64_decode_rc sve_index_zii(cpu_state* state, aarch64_z_reg zd, int base, int step) {
  return fast::index_vector(state, zd, fast::extended(base), fast::extended(step));
}

inline aarch64_decode_rc sve_index_zir(cpu_state* state, aarch64_z_reg zd, int base,
                                       aarch64_i_reg step) {
  return fast::index_vector(state, zd, fast::extended(base), fast::read(state, step));
}

inline aarch64_decode_rc sve_index_zri(cpu_state* state, aarch64_z_reg zd, aarch64_i_reg base,
                                       int step) {
  return fast::index_vector(state, zd, fast::read(state, base), fast::extended(step));
}

inline aarch64_decode_rc sve_index_zrr(cpu_state* state, aarch64_z_reg zd, aarch64_i_reg base,
                                       aarch64_i_reg step) {
  return fast::index_vector(state, zd, fast::read(state, base), fast::read(state, step));
}
