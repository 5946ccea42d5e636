// Floating-point compares into a predicate, in single and double precision. They set no flags of
// NZCV. Equality is quiet: only a signalling NaN raises Invalid Operation; the ordered relations
// signal for every NaN.
#pragma once

#include "sve/fast/fp.h"

namespace fast {

template <class Condition>
inline aarch64_decode_rc fp_compare(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg,
                                    uint32_t zn, const uint8_t* zm, Condition condition) {
  by_wide_size(pd.kind, [&]<class T>() {
    const vector<T> mask = active<T>(state->p[pg.index]);
    const vector<T> a = harmless<T>(mask, load<T>(state->z[zn]));
    const vector<T> b = harmless<T>(mask, load<T>(zm));
    store_predicate<T>(state->p[pd.index],
                       vector<T>(condition.template operator()<T>(a, b)) & mask);
  });
  return aarch64_decode_ok;
}

inline constexpr uint8_t zero_vector[vector_bytes] = {};

}  // namespace fast

// Each line defines an instruction function: its name and the condition on the vectors a and b.
#define FP_COMPARE(name, condition)                                                                \
  inline aarch64_decode_rc name(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg,              \
                                aarch64_z_reg zn, aarch64_z_reg zm) {                              \
    return fast::fp_compare(state, pd, pg, zn.index, state->z[zm.index],                           \
                            []<class T>(auto a, auto b) { return condition; });                    \
  }
#define FP_COMPARE_ZERO(name, condition)                                                           \
  inline aarch64_decode_rc name(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg,              \
                                aarch64_z_reg zn) {                                                \
    return fast::fp_compare(state, pd, pg, zn.index, fast::zero_vector,                            \
                            []<class T>(auto a, auto b) { return condition; });                    \
  }
FP_COMPARE(sve_fcmeq_ppzz, host::fcmeq<T>(a, b))
FP_COMPARE(sve_fcmne_ppzz, ~host::fcmeq<T>(a, b))
FP_COMPARE(sve_fcmge_ppzz, host::fcmge<T>(a, b))
FP_COMPARE(sve_fcmgt_ppzz, host::fcmgt<T>(a, b))
FP_COMPARE(sve_fcmuo_ppzz, ~(host::fcmeq<T>(a, a) & host::fcmeq<T>(b, b)))
FP_COMPARE_ZERO(sve_fcmeq_ppz, host::fcmeq<T>(a, b))
FP_COMPARE_ZERO(sve_fcmge_ppz, host::fcmge<T>(a, b))
FP_COMPARE_ZERO(sve_fcmgt_ppz, host::fcmgt<T>(a, b))
FP_COMPARE_ZERO(sve_fcmle_ppz, host::fcmge<T>(b, a))
FP_COMPARE_ZERO(sve_fcmlt_ppz, host::fcmgt<T>(b, a))
#undef FP_COMPARE
#undef FP_COMPARE_ZERO
