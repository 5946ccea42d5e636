// Integer compares: they write a predicate and set the flags.
#pragma once

#include "sve/fast/integer_operations.h"
#include "sve/fast/predicate_flags.h"

namespace fast {

// Pd and the flags from a vector of conditions, all ones where true.
template <class T>
inline void store_condition(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg,
                            vector<T> condition) {
  const vector<T> result = condition & load<T>(state->p[pg.index]) & broadcast<T>(1);
  store_with_flags<T>(state, pd, state->p[pg.index], load_bits(&result));
}

// Zn and Zm where Pg is active, else false. The size is pd.kind.
template <class Condition>
inline aarch64_decode_rc compare(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg,
                                 aarch64_z_reg zn, aarch64_z_reg zm, Condition condition) {
  by_size(pd.kind, [&]<class T>() {
    const auto a = load<T>(state->z[zn.index]);
    const auto b = load<T>(state->z[zm.index]);
    store_condition<T>(state, pd, pg, as_unsigned(condition(a, b)));
  });
  return aarch64_decode_ok;
}

// Zn and an immediate, which every element type of its sign can hold: -16 to 15, or 0 to 127.
template <class Condition>
inline aarch64_decode_rc compare_immediate(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg,
                                           aarch64_z_reg zn, int immediate, Condition condition) {
  by_size(pd.kind, [&]<class T>() {
    const auto a = load<T>(state->z[zn.index]);
    const auto b = broadcast(static_cast<T>(immediate));
    store_condition<T>(state, pd, pg, as_unsigned(condition(a, b)));
  });
  return aarch64_decode_ok;
}

inline constexpr auto equal = [](auto a, auto b) { return a == b; };
inline constexpr auto not_equal = [](auto a, auto b) { return a != b; };
inline constexpr auto higher = [](auto a, auto b) { return a > b; };
inline constexpr auto higher_or_same = [](auto a, auto b) { return a >= b; };
inline constexpr auto greater = [](auto a, auto b) { return as_signed(a) > as_signed(b); };
inline constexpr auto greater_or_equal = [](auto a, auto b) {
  return as_signed(a) >= as_signed(b);
};

}  // namespace fast

#define SVE_PPZZ(name, condition)                                                                  \
  inline aarch64_decode_rc name(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg,              \
                                aarch64_z_reg zn, aarch64_z_reg zm) {                              \
    return fast::compare(state, pd, pg, zn, zm, condition);                                        \
  }
#define SVE_PPZI(name, type, condition)                                                            \
  inline aarch64_decode_rc name(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg,              \
                                aarch64_z_reg zn, type immediate) {                                \
    return fast::compare_immediate(state, pd, pg, zn, static_cast<int>(immediate), condition);     \
  }

// clang-format off

// Pd = Zn condition Zm. Pd may be Pg: the flags are those of the old Pg.
SVE_PPZZ(sve_cmpeq_ppzz, fast::equal)
SVE_PPZZ(sve_cmpne_ppzz, fast::not_equal)
SVE_PPZZ(sve_cmpge_ppzz, fast::greater_or_equal)
SVE_PPZZ(sve_cmpgt_ppzz, fast::greater)
SVE_PPZZ(sve_cmphs_ppzz, fast::higher_or_same)
SVE_PPZZ(sve_cmphi_ppzz, fast::higher)

// Pd = Zn condition immediate.
SVE_PPZI(sve_cmpeq_ppzi, int,      fast::equal)
SVE_PPZI(sve_cmpne_ppzi, int,      fast::not_equal)
SVE_PPZI(sve_cmpgt_ppzi, int,      fast::greater)
SVE_PPZI(sve_cmplt_ppzi, int,      fast::reversed(fast::greater))
SVE_PPZI(sve_cmple_ppzi, int,      fast::reversed(fast::greater_or_equal))
SVE_PPZI(sve_cmphi_ppzi, unsigned, fast::higher)
SVE_PPZI(sve_cmplo_ppzi, unsigned, fast::reversed(fast::higher))

// clang-format on

#undef SVE_PPZZ
#undef SVE_PPZI
