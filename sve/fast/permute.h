// Permutes: interleaving, reversal, table look-up, extraction and unpacking, of vectors and of
// predicates. A predicate's bytes move as a vector's elements do, so that one body serves both.
#pragma once

#include <utility>

#include "sve/fast/operands.h"

namespace fast {

// The elements of a and b, numbered on from a's to b's, in the order index(0), index(1) and so on.
template <class T, class Index> inline vector<T> permute(vector<T> a, vector<T> b, Index) {
  return [&]<unsigned... i>(std::integer_sequence<unsigned, i...>) {
    return __builtin_shuffle(a, b, vector<T>{static_cast<T>(Index{}(i, elements<T>))...});
  }
  (std::make_integer_sequence<unsigned, elements<T>>());
}

// The same between slots. The destination may be a source.
template <class Index>
inline void permute(uint8_t* destination, const uint8_t* a, const uint8_t* b, uint32_t size,
                    Index index) {
  by_size(size,
          [=]<class T>() { store<T>(destination, permute<T>(load<T>(a), load<T>(b), index)); });
}

// The element that comes to place i, of n elements in each of two vectors.
inline constexpr auto zip1_index = [](unsigned i, unsigned n) { return i / 2 + i % 2 * n; };
inline constexpr auto zip2_index = [](unsigned i, unsigned n) { return n / 2 + i / 2 + i % 2 * n; };
inline constexpr auto uzp1_index = [](unsigned i, unsigned) { return 2 * i; };
inline constexpr auto uzp2_index = [](unsigned i, unsigned) { return 2 * i + 1; };
inline constexpr auto trn1_index = [](unsigned i, unsigned n) { return i / 2 * 2 + i % 2 * n; };
inline constexpr auto trn2_index = [](unsigned i, unsigned n) { return i / 2 * 2 + 1 + i % 2 * n; };
inline constexpr auto reverse_index = [](unsigned i, unsigned n) { return n - 1 - i; };

// Half of a vector, with every element widened to twice its size.
template <class Narrow, class Wide>
inline aarch64_decode_rc unpack(uint8_t* destination, const uint8_t* half) {
  typedef Narrow HalfVector __attribute__((vector_size(vector_bytes / 2)));
  HalfVector source;
  memcpy(&source, half, sizeof source);
  store<Wide>(destination, __builtin_convertvector(source, vector<Wide>));
  return aarch64_decode_ok;
}

}  // namespace fast

// The bodies, whose dest has 16 bytes and may be a source, and the functions on vectors.
#define PERMUTE(name)                                                                              \
  inline void sve_##name(char* dest, char const* a, char const* b, element_size size) {            \
    fast::permute(reinterpret_cast<uint8_t*>(dest), reinterpret_cast<const uint8_t*>(a),           \
                  reinterpret_cast<const uint8_t*>(b), size, fast::name##_index);                  \
  }                                                                                                \
  inline aarch64_decode_rc sve_##name##_zzz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn,  \
                                            aarch64_z_reg zm) {                                    \
    sve_##name(reinterpret_cast<char*>(state->z[zd.index]),                                        \
               reinterpret_cast<const char*>(state->z[zn.index]),                                  \
               reinterpret_cast<const char*>(state->z[zm.index]),                                  \
               static_cast<element_size>(zd.kind));                                                \
    return aarch64_decode_ok;                                                                      \
  }

PERMUTE(zip1)
PERMUTE(zip2)
PERMUTE(uzp1)
PERMUTE(uzp2)
PERMUTE(trn1)
PERMUTE(trn2)

#undef PERMUTE

// On predicates.
#define PERMUTE(name)                                                                              \
  inline aarch64_decode_rc sve_##name##_ppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pn,  \
                                            aarch64_p_reg pm) {                                    \
    sve_##name(reinterpret_cast<char*>(state->p[pd.index]),                                        \
               reinterpret_cast<const char*>(state->p[pn.index]),                                  \
               reinterpret_cast<const char*>(state->p[pm.index]),                                  \
               static_cast<element_size>(pd.kind));                                                \
    return aarch64_decode_ok;                                                                      \
  }

PERMUTE(zip1)
PERMUTE(zip2)
PERMUTE(uzp1)

#undef PERMUTE

// REV: elements, or element groups of a predicate, in reverse order.
inline aarch64_decode_rc sve_rev_zz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn) {
  const uint8_t* const source = state->z[zn.index];
  fast::permute(state->z[zd.index], source, source, zd.kind, fast::reverse_index);
  return aarch64_decode_ok;
}

inline aarch64_decode_rc sve_rev_pp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pn) {
  const uint8_t* const source = state->p[pn.index];
  fast::permute(state->p[pd.index], source, source, pd.kind, fast::reverse_index);
  return aarch64_decode_ok;
}

// TBL: elements of Zn by number; numbers that Zn does not have give 0.
inline aarch64_decode_rc sve_tbl_zzz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn,
                                     aarch64_z_reg zm) {
  fast::by_size(zd.kind, [=]<class T>() {
    const fast::vector<T> table = fast::load<T>(state->z[zn.index]);
    const fast::vector<T> number = fast::load<T>(state->z[zm.index]);
    const auto known = number < fast::broadcast<T>(fast::elements<T>);
    fast::store<T>(state->z[zd.index],
                   __builtin_shuffle(table, number) & reinterpret_cast<fast::vector<T>>(known));
  });
  return aarch64_decode_ok;
}

// EXT: 16 bytes of Zdn followed by Zm, from the position on. Positions past Zdn count as 0.
inline aarch64_decode_rc sve_ext_zzi(cpu_state* state, aarch64_z_reg zdn, aarch64_z_reg zm,
                                     unsigned position) {
  uint8_t both[2 * vector_bytes];
  memcpy(both, state->z[zdn.index], vector_bytes);
  memcpy(both + vector_bytes, state->z[zm.index], vector_bytes);
  memcpy(state->z[zdn.index], both + (position < vector_bytes ? position : 0), vector_bytes);
  return aarch64_decode_ok;
}

// UUNPKLO, UUNPKHI, SUNPKLO, SUNPKHI: the low or high half, widened by Narrow's sign.
#define UNPACK(sign, sizes, narrow, wide)                                                          \
  inline aarch64_decode_rc sve_##sign##unpklo_##sizes##_zz(cpu_state* state, aarch64_z_reg zd,     \
                                                           aarch64_z_reg zn) {                     \
    return fast::unpack<narrow, wide>(state->z[zd.index], state->z[zn.index]);                     \
  }                                                                                                \
  inline aarch64_decode_rc sve_##sign##unpkhi_##sizes##_zz(cpu_state* state, aarch64_z_reg zd,     \
                                                           aarch64_z_reg zn) {                     \
    return fast::unpack<narrow, wide>(state->z[zd.index], state->z[zn.index] + vector_bytes / 2);  \
  }

UNPACK(u, b2h, uint8_t, uint16_t)
UNPACK(u, h2s, uint16_t, uint32_t)
UNPACK(u, s2d, uint32_t, uint64_t)
UNPACK(s, s2d, int32_t, uint64_t)

#undef UNPACK

namespace fast {

// Every predicate bit of a half becomes that of an element twice as large.
inline aarch64_decode_rc unpack_predicate(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pn,
                                          unsigned first) {
  uint8_t half[vector_bytes / 2];
  for (unsigned k = 0; k < sizeof half; k++)
    half[k] = state->p[pn.index][first + k] & 1;
  return unpack<uint8_t, uint16_t>(state->p[pd.index], half);
}

}  // namespace fast

inline aarch64_decode_rc sve_punpklo_pp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pn) {
  return fast::unpack_predicate(state, pd, pn, 0);
}

inline aarch64_decode_rc sve_punpkhi_pp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pn) {
  return fast::unpack_predicate(state, pd, pn, vector_bytes / 2);
}
