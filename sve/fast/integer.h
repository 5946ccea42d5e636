// Integer data processing: predicated two-operand forms.
#pragma once

#include "sve/fast/vector.h"

namespace fast {

// Zdn and Zm, merging: inactive elements keep Zdn.
template <class Operation>
inline aarch64_decode_rc merge_binary(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg,
                                      aarch64_z_reg zm, Operation operation) {
  by_size(zdn.dn_kind, [&]<class T>() {
    const vector<T> a = load<T>(state->z[zdn.index]);
    const vector<T> b = load<T>(state->z[zm.index]);
    store<T>(state->z[zdn.index], select<T>(active<T>(state->p[pg.index]), operation(a, b), a));
  });
  return aarch64_decode_ok;
}

}  // namespace fast

// ADD (vectors, predicated).
inline aarch64_decode_rc sve_add_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg,
                                     aarch64_z_reg zm) {
  return fast::merge_binary(state, zdn, pg, zm, [](auto a, auto b) { return a + b; });
}
