// What the fast path's floating-point functions share. An element operation runs on the whole
// vector, with inactive elements replaced by 1.0: on that operand none of the operations raises a
// flag, so that an inactive element leaves no trace.
#pragma once

#include "host/fp_unit.h"
#include "sve/fast/operands.h"

namespace fast {

template <class T> inline constexpr T fp_one = sizeof(T) == 4 ? T{0x3f800000} : T(0x3ffull << 52);
template <class T> inline constexpr T fp_half = sizeof(T) == 4 ? T{0x3f000000} : T(0x3feull << 52);
template <class T> inline constexpr T fp_two = sizeof(T) == 4 ? T{0x40000000} : T(0x400ull << 52);
template <class T> inline constexpr T fp_sign = T(T{1} << (8 * sizeof(T) - 1));

// The vector with its inactive elements made harmless.
template <class T> inline vector<T> harmless(vector<T> mask, vector<T> a) {
  return select<T>(mask, a, broadcast<T>(fp_one<T>));
}

template <class T> inline vector<T> invert_sign(vector<T> a) {
  return a ^ broadcast<T>(fp_sign<T>);
}

// Zdn and Zm, merging.
template <class Operation>
inline aarch64_decode_rc fp_merge_binary(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg,
                                         aarch64_z_reg zm, Operation operation) {
  by_wide_size(zdn.dn_kind, [&]<class T>() {
    const vector<T> mask = active<T>(state->p[pg.index]);
    const vector<T> a = load<T>(state->z[zdn.index]);
    const vector<T> b = load<T>(state->z[zm.index]);
    const vector<T> result =
        operation.template operator()<T>(harmless<T>(mask, a), harmless<T>(mask, b));
    store<T>(state->z[zdn.index], select<T>(mask, result, a));
  });
  return aarch64_decode_ok;
}

// Zn to Zd, merging. The size is that of the destination.
template <class Operation>
inline aarch64_decode_rc fp_merge_unary(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg,
                                        aarch64_z_reg zn, uint32_t size, Operation operation) {
  by_wide_size(size, [&]<class T>() {
    const vector<T> mask = active<T>(state->p[pg.index]);
    const vector<T> result =
        operation.template operator()<T>(harmless<T>(mask, load<T>(state->z[zn.index])));
    store<T>(state->z[zd.index], select<T>(mask, result, load<T>(state->z[zd.index])));
  });
  return aarch64_decode_ok;
}

// Zdn and two more, merging.
template <class Operation>
inline aarch64_decode_rc fp_fused(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg,
                                  aarch64_z_reg second, aarch64_z_reg third, Operation operation) {
  by_wide_size(zdn.dn_kind, [&]<class T>() {
    const vector<T> mask = active<T>(state->p[pg.index]);
    const vector<T> d = load<T>(state->z[zdn.index]);
    const vector<T> n = load<T>(state->z[second.index]);
    const vector<T> m = load<T>(state->z[third.index]);
    const vector<T> result = operation.template operator()<T>(
        harmless<T>(mask, d), harmless<T>(mask, n), harmless<T>(mask, m));
    store<T>(state->z[zdn.index], select<T>(mask, result, d));
  });
  return aarch64_decode_ok;
}

// Zn and Zm, all elements.
template <class Operation>
inline aarch64_decode_rc fp_binary(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn,
                                   aarch64_z_reg zm, Operation operation) {
  by_wide_size(zd.kind, [&]<class T>() {
    store<T>(state->z[zd.index], operation.template operator()<T>(load<T>(state->z[zn.index]),
                                                                  load<T>(state->z[zm.index])));
  });
  return aarch64_decode_ok;
}

}  // namespace fast
