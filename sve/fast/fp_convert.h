// Conversions between single and double precision and integers of 32 and 64 bits. The container of
// an element is the wider of its two sizes; the narrower value lies in the low word.
#pragma once

#include "sve/fast/fp.h"

namespace fast {

// What stands in for inactive elements: 1.0, or the integer 1, of the source's size.
template <class T> inline vector<T> convert_inputs(vector<T> mask, vector<T> a, T harmless_value) {
  return select<T>(mask, a, broadcast<T>(harmless_value));
}

// Both sizes are that of T: the whole vector at once.
template <class T, class Operation>
inline aarch64_decode_rc convert_same(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg,
                                      aarch64_z_reg zn, T harmless_value, Operation operation) {
  const vector<T> mask = active<T>(state->p[pg.index]);
  const vector<T> result =
      operation(convert_inputs<T>(mask, load<T>(state->z[zn.index]), harmless_value));
  store<T>(state->z[zd.index], select<T>(mask, result, load<T>(state->z[zd.index])));
  return aarch64_decode_ok;
}

// Words and doublewords: each of the two containers by itself.
template <class Operation>
inline aarch64_decode_rc convert_mixed(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg,
                                       aarch64_z_reg zn, uint64_t harmless_value,
                                       Operation operation) {
  return convert_same<uint64_t>(state, zd, pg, zn, harmless_value, [&](vector<uint64_t> a) {
    const uint64_t low = operation(a[0]);
    const uint64_t high = operation(a[1]);
    return vector<uint64_t>{low, high};
  });
}

inline uint64_t sign_extend_word(uint64_t a) {
  return static_cast<uint64_t>(int64_t{static_cast<int32_t>(static_cast<uint32_t>(a))});
}

}  // namespace fast

// Each line defines an instruction function: its name, the value that inactive elements are
// replaced by, and what it makes of the element or vector a.
#define FP_CONVERT_SAME(name, T, harmless_value, result)                                           \
  inline aarch64_decode_rc name(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg,              \
                                aarch64_z_reg zn) {                                                \
    return fast::convert_same<T>(state, zd, pg, zn, harmless_value,                                \
                                 [](fast::vector<T> a) { return host::result; });                  \
  }
#define FP_CONVERT_MIXED(name, harmless_value, result)                                             \
  inline aarch64_decode_rc name(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg,              \
                                aarch64_z_reg zn) {                                                \
    return fast::convert_mixed(state, zd, pg, zn, harmless_value,                                  \
                               [](uint64_t a) -> uint64_t { return result; });                     \
  }
FP_CONVERT_SAME(sve_fcvtzs_s2s_zpz, uint32_t, fast::fp_one<uint32_t>, fcvtzs<uint32_t>(a))
FP_CONVERT_SAME(sve_fcvtzs_d2d_zpz, uint64_t, fast::fp_one<uint64_t>, fcvtzs<uint64_t>(a))
FP_CONVERT_SAME(sve_fcvtzu_d2d_zpz, uint64_t, fast::fp_one<uint64_t>, fcvtzu<uint64_t>(a))
FP_CONVERT_SAME(sve_scvtf_s2s_zpz, uint32_t, 1, scvtf<uint32_t>(a))
FP_CONVERT_SAME(sve_scvtf_d2d_zpz, uint64_t, 1, scvtf<uint64_t>(a))
FP_CONVERT_SAME(sve_ucvtf_s2s_zpz, uint32_t, 1, ucvtf<uint32_t>(a))
FP_CONVERT_SAME(sve_ucvtf_d2d_zpz, uint64_t, 1, ucvtf<uint64_t>(a))

FP_CONVERT_MIXED(sve_fcvt_s2d_zpz, fast::fp_one<uint32_t>, host::fcvt_s2d(a))
FP_CONVERT_MIXED(sve_fcvt_d2s_zpz, fast::fp_one<uint64_t>, host::fcvt_d2s(a))
FP_CONVERT_MIXED(sve_fcvtzs_s2d_zpz, fast::fp_one<uint32_t>, host::fcvtzs_s2d(a))
FP_CONVERT_MIXED(sve_fcvtzs_d2s_zpz, fast::fp_one<uint64_t>,
                 fast::sign_extend_word(host::fcvtzs_d2s(a)))
FP_CONVERT_MIXED(sve_fcvtzu_d2s_zpz, fast::fp_one<uint64_t>, host::fcvtzu_d2s(a))
FP_CONVERT_MIXED(sve_scvtf_d2s_zpz, 1, host::scvtf_d2s(a))
FP_CONVERT_MIXED(sve_scvtf_s2d_zpz, 1, host::scvtf_s2d(a))
FP_CONVERT_MIXED(sve_ucvtf_s2d_zpz, 1, host::ucvtf_s2d(a))
#undef FP_CONVERT_SAME
#undef FP_CONVERT_MIXED
