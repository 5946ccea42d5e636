// Floating-point arithmetic in single and double precision, on the host's own unit.
#pragma once

#include "sve/fast/fp.h"

// Each line defines one instruction function: its name, and what it computes of the vectors a and
// b, the first being Zdn where the form is destructive.

#define FP_MERGE_BINARY(name, result)                                                              \
  inline aarch64_decode_rc name(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg,             \
                                aarch64_z_reg zm) {                                                \
    return fast::fp_merge_binary(state, zdn, pg, zm,                                               \
                                 []<class T>(auto a, auto b) { return host::result; });            \
  }
FP_MERGE_BINARY(sve_fadd_zpz, fadd<T>(a, b))
FP_MERGE_BINARY(sve_fsub_zpz, fsub<T>(a, b))
FP_MERGE_BINARY(sve_fsubr_zpz, fsub<T>(b, a))
FP_MERGE_BINARY(sve_fmul_zpz, fmul<T>(a, b))
FP_MERGE_BINARY(sve_fdiv_zpz, fdiv<T>(a, b))
FP_MERGE_BINARY(sve_fdivr_zpz, fdiv<T>(b, a))
FP_MERGE_BINARY(sve_fmax_zpz, fmax<T>(a, b))
FP_MERGE_BINARY(sve_fmaxnm_zpz, fmaxnm<T>(a, b))
FP_MERGE_BINARY(sve_fminnm_zpz, fminnm<T>(a, b))
#undef FP_MERGE_BINARY

// The constant c is the first of the two for a clear immediate bit, else the second.
#define FP_MERGE_CONSTANT(name, clear, set, result)                                                \
  inline aarch64_decode_rc name(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg,             \
                                aarch64_sve_fp_arith_imm imm) {                                    \
    return fast::fp_merge_unary(state, zdn, pg, zdn, zdn.dn_kind, [imm]<class T>(auto a) {         \
      const auto c = fast::broadcast<T>(imm.value != 0 ? fast::set<T> : fast::clear<T>);           \
      return host::result;                                                                         \
    });                                                                                            \
  }
FP_MERGE_CONSTANT(sve_fadd_zpi, fp_half, fp_one, fadd<T>(a, c))
FP_MERGE_CONSTANT(sve_fsub_zpi, fp_half, fp_one, fsub<T>(a, c))
FP_MERGE_CONSTANT(sve_fsubr_zpi, fp_half, fp_one, fsub<T>(c, a))
FP_MERGE_CONSTANT(sve_fmul_zpi, fp_half, fp_two, fmul<T>(a, c))
#undef FP_MERGE_CONSTANT

#define FP_BINARY(name, operation)                                                                 \
  inline aarch64_decode_rc name(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn,              \
                                aarch64_z_reg zm) {                                                \
    return fast::fp_binary(state, zd, zn, zm,                                                      \
                           []<class T>(auto a, auto b) { return host::operation<T>(a, b); });      \
  }
FP_BINARY(sve_fadd_zzz, fadd)
FP_BINARY(sve_fsub_zzz, fsub)
FP_BINARY(sve_fmul_zzz, fmul)
FP_BINARY(sve_frecps_zzz, frecps)
#undef FP_BINARY

// FRECPE: no predicate.
inline aarch64_decode_rc sve_frecpe_zz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn) {
  return fast::fp_binary(state, zd, zn, zn,
                         []<class T>(auto a, auto) { return host::frecpe<T>(a); });
}

#define FP_MERGE_UNARY(name, operation)                                                            \
  inline aarch64_decode_rc name(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg,              \
                                aarch64_z_reg zn) {                                                \
    return fast::fp_merge_unary(state, zd, pg, zn, zd.kind,                                        \
                                []<class T>(auto a) { return host::operation<T>(a); });            \
  }
FP_MERGE_UNARY(sve_frinta_zpz, frinta)
FP_MERGE_UNARY(sve_fsqrt_zpz, fsqrt)
#undef FP_MERGE_UNARY

// Fused multiply-accumulate: addend + multiplier * multiplicand with one rounding, the signs
// inverted beforehand. The accumulator forms add to Zda, the others to the last operand.
#define FP_FUSED(name, addend, multiplier, multiplicand)                                           \
  inline aarch64_decode_rc name(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg,             \
                                aarch64_z_reg second, aarch64_z_reg third) {                       \
    return fast::fp_fused(state, zdn, pg, second, third, []<class T>(auto d, auto n, auto m) {     \
      return host::fmla<T>(addend, multiplier, multiplicand);                                      \
    });                                                                                            \
  }
FP_FUSED(sve_fmla_zpzz, d, n, m)
FP_FUSED(sve_fmls_zpzz, d, fast::invert_sign<T>(n), m)
FP_FUSED(sve_fnmla_zpzz, fast::invert_sign<T>(d), fast::invert_sign<T>(n), m)
FP_FUSED(sve_fnmls_zpzz, fast::invert_sign<T>(d), n, m)
FP_FUSED(sve_fmad_zpzz, m, d, n)
FP_FUSED(sve_fmsb_zpzz, m, fast::invert_sign<T>(d), n)
FP_FUSED(sve_fnmad_zpzz, fast::invert_sign<T>(m), fast::invert_sign<T>(d), n)
FP_FUSED(sve_fnmsb_zpzz, fast::invert_sign<T>(m), d, n)
#undef FP_FUSED

namespace fast {

// Every element takes the even (0) or odd (1) member of its pair.
template <class T> inline vector<T> pair_member(vector<T> a, unsigned member) {
  vector<T> result;
  for (unsigned e = 0; e < elements<T>; e++)
    result[e] = a[(e & ~1u) + member];
  return result;
}

template <class T> inline vector<T> swap_pairs(vector<T> a) {
  vector<T> result;
  for (unsigned e = 0; e < elements<T>; e++)
    result[e] = a[e ^ 1];
  return result;
}

}  // namespace fast

// FCMLA: complex multiply-accumulate with rotation by rot * 90 degrees. Even elements are real
// parts, odd ones imaginary parts. An active element may read its inactive neighbour, so operands
// are made harmless only when they are in place.
inline aarch64_decode_rc sve_fcmla_zpzzr(cpu_state* state, aarch64_z_reg zda, aarch64_p_reg pg,
                                         aarch64_z_reg zn, aarch64_z_reg zm, unsigned int rot) {
  fast::by_wide_size(zda.dn_kind, [&]<class T>() {
    using namespace fast;
    const vector<T> mask = active<T>(state->p[pg.index]);
    const vector<T> d = load<T>(state->z[zda.index]);
    const vector<T> n = load<T>(state->z[zn.index]);
    const vector<T> m = load<T>(state->z[zm.index]);
    const bool crossed = (rot & 1) != 0;
    const T real_sign = rot == 1 || rot == 2 ? fp_sign<T> : T{0};
    const T imaginary_sign = rot >= 2 ? fp_sign<T> : T{0};
    vector<T> signs;
    for (unsigned e = 0; e < elements<T>; e++)
      signs[e] = e % 2 == 0 ? real_sign : imaginary_sign;
    const vector<T> multiplier = pair_member<T>(n, crossed ? 1 : 0);
    const vector<T> multiplicand = (crossed ? swap_pairs<T>(m) : m) ^ signs;
    const vector<T> result = host::fmla<T>(harmless<T>(mask, d), harmless<T>(mask, multiplier),
                                           harmless<T>(mask, multiplicand));
    store<T>(state->z[zda.index], select<T>(mask, result, d));
  });
  return aarch64_decode_ok;
}

namespace fast {

// A pairwise tree over the elements, inactive ones replaced by a quiet NaN, which the operation
// ignores beside a number.
template <class Operation>
inline aarch64_decode_rc fp_reduce(cpu_state* state, unsigned vd, aarch64_p_reg pg,
                                   aarch64_z_reg zn, Operation operation) {
  by_wide_size(zn.kind, [&]<class T>() {
    constexpr T quiet_nan = sizeof(T) == 4 ? T{0x7fc00000} : T(0x7ff8ull << 48);
    vector<T> a = select<T>(active<T>(state->p[pg.index]), load<T>(state->z[zn.index]),
                            broadcast<T>(quiet_nan));
    for (unsigned width = elements<T>; width > 1; width /= 2)
      a = operation.template operator()<T>(a);
    store<T>(state->z[vd], vector<T>{a[0]});
  });
  return aarch64_decode_ok;
}

}  // namespace fast

// FMAXNMV.
inline aarch64_decode_rc sve_fmaxnmv_vpz(cpu_state* state, unsigned int vd, aarch64_p_reg pg,
                                         aarch64_z_reg zn) {
  return fast::fp_reduce(state, vd, pg, zn, []<class T>(auto a) { return host::fmaxnmp<T>(a, a); });
}

// FMINNMV.
inline aarch64_decode_rc sve_fminnmv_vpz(cpu_state* state, unsigned int vd, aarch64_p_reg pg,
                                         aarch64_z_reg zn) {
  return fast::fp_reduce(state, vd, pg, zn, []<class T>(auto a) { return host::fminnmp<T>(a, a); });
}
