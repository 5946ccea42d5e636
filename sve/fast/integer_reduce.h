// Integer reductions of the active elements to a scalar register.
#pragma once

#include "sve/fast/integer_operations.h"

namespace fast {

// Folds all elements into one by halves: the operations are associative and commutative.
template <class T, unsigned distance = elements<T> / 2, class Operation>
inline T fold(vector<T> value, Operation operation) {
  if constexpr (distance == 0) {
    return value[0];
  } else {
    const auto rotated = __builtin_shuffle(value, iota<T> + broadcast<T>(distance));
    return fold<T, distance / 2>(operation(value, rotated), operation);
  }
}

// Sums of neighbours in elements of twice the width, until there are doublewords.
template <class T> inline vector<uint64_t> sums(vector<T> value) {
  if constexpr (sizeof(T) == 1)
    return sums<uint16_t>((reinterpret_cast<vector<uint16_t>>(value) & 0xff) +
                          (reinterpret_cast<vector<uint16_t>>(value) >> 8));
  else if constexpr (sizeof(T) == 2)
    return sums<uint32_t>((reinterpret_cast<vector<uint32_t>>(value) & 0xffff) +
                          (reinterpret_cast<vector<uint32_t>>(value) >> 16));
  else if constexpr (sizeof(T) == 4)
    return (reinterpret_cast<vector<uint64_t>>(value) & 0xffffffff) +
           (reinterpret_cast<vector<uint64_t>>(value) >> 32);
  else
    return value;
}

// A scalar register is the low end of a vector register, with zeros above.
inline void store_scalar(cpu_state* state, unsigned vd, uint64_t value) {
  store<uint64_t>(state->z[vd], vector<uint64_t>{value, 0});
}

// identity: what an inactive element stands for, at the element's width. The size is zn.kind.
template <class Identity, class Operation>
inline aarch64_decode_rc reduce(cpu_state* state, unsigned vd, aarch64_p_reg pg, aarch64_z_reg zn,
                                Identity identity, Operation operation) {
  by_size(zn.kind, [&]<class T>() {
    const auto all = select<T>(active<T>(state->p[pg.index]), load<T>(state->z[zn.index]),
                               broadcast<T>(identity.template operator()<T>()));
    store_scalar(state, vd, fold<T>(all, operation));
  });
  return aarch64_decode_ok;
}

template <class T> using limits = std::numeric_limits<T>;

inline constexpr auto zero = []<class T>() -> T { return 0; };
inline constexpr auto all_ones = []<class T>() -> T { return limits<T>::max(); };
inline constexpr auto most_negative = []<class T>() -> T {
  return static_cast<T>(limits<std::make_signed_t<T>>::min());
};
inline constexpr auto most_positive = []<class T>() -> T {
  return static_cast<T>(limits<std::make_signed_t<T>>::max());
};

}  // namespace fast

#define SVE_VPZ(name, identity, operation)                                                         \
  inline aarch64_decode_rc name(cpu_state* state, unsigned vd, aarch64_p_reg pg,                   \
                                aarch64_z_reg zn) {                                                \
    return fast::reduce(state, vd, pg, zn, identity, operation);                                   \
  }

// clang-format off

// Vd = fold of the active elements of Zn, zero-extended; the identity if there is none.
SVE_VPZ(sve_andv_vpz,  fast::all_ones,      fast::bitwise_and)
SVE_VPZ(sve_orv_vpz,   fast::zero,          fast::bitwise_or)
SVE_VPZ(sve_eorv_vpz,  fast::zero,          fast::bitwise_xor)
SVE_VPZ(sve_smaxv_vpz, fast::most_negative, fast::signed_max)
SVE_VPZ(sve_sminv_vpz, fast::most_positive, fast::signed_min)
SVE_VPZ(sve_umaxv_vpz, fast::zero,          fast::unsigned_max)
SVE_VPZ(sve_uminv_vpz, fast::all_ones,      fast::unsigned_min)

// clang-format on

#undef SVE_VPZ

// UADDV: the sum of the active elements in 64 bits, at every element size.
inline aarch64_decode_rc sve_uaddv_vpz(cpu_state* state, unsigned vd, aarch64_p_reg pg,
                                       aarch64_z_reg zn) {
  fast::by_size(zn.kind, [&]<class T>() {
    const auto active = fast::active<T>(state->p[pg.index]) & fast::load<T>(state->z[zn.index]);
    const auto halves = fast::sums<T>(active);
    fast::store_scalar(state, vd, halves[0] + halves[1]);
  });
  return aarch64_decode_ok;
}
