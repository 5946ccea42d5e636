// Gather loads and scatter stores: every element has its own address. An element's address is read
// right before its access, so Zt may be the vector of offsets.
#pragma once

#include "sve/fast/contiguous_access.h"

namespace fast {

// What an element of the address vector stands for, by the name of the extension.
template <class T> inline uint64_t whole(T offset) { return offset; }
template <class T> inline uint64_t sxtw(T offset) {
  return static_cast<uint64_t>(static_cast<int32_t>(offset));
}
template <class T> inline uint64_t uxtw(T offset) { return static_cast<uint32_t>(offset); }

// Element i at base + extend(element i of zm) * scale.
template <class T, auto extend, unsigned scale> struct VectorAddress {
  uint64_t base;
  const uint8_t* zm;

  uint64_t operator()(unsigned i) const { return base + extend(element<T>(zm, i)) * scale; }
};

template <class Memory, class T, auto extend, unsigned scale>
inline aarch64_decode_rc load_gather(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,
                                     aarch64_z_reg zm, uint64_t base) {
  uint8_t* const slot = state->z[zt.index];
  const uint8_t* const predicate = state->p[pg.index];
  const VectorAddress<T, extend, scale> address_of = {base, state->z[zm.index]};
  if (!all_active<T>(predicate) || !sve_faults_as_hardware)
    return load_elements<Memory, T>(state, slot, predicate, address_of);
  // As load_whole, without a test for each element.
  T values[elements<T>];
  for_each<elements<T>>([&](unsigned i) {
    values[i] = static_cast<T>(read_memory<Memory>(address_of(i)));
    host::finish_access();
  });
  for_each<elements<T>>([&](unsigned i) { set_element<T>(slot, i, values[i]); });
  return aarch64_decode_ok;
}

template <class Memory, class T, auto extend, unsigned scale>
inline aarch64_decode_rc store_scatter(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,
                                       aarch64_z_reg zm, uint64_t base) {
  store_elements<Memory, T>(state->z[zt.index], state->p[pg.index],
                            VectorAddress<T, extend, scale>{base, state->z[zm.index]});
  return aarch64_decode_ok;
}

}  // namespace fast

// Vector of addresses plus immediate, which counts memory elements.
#define ADDRESSES(move, name, memory, type)                                                        \
  inline aarch64_decode_rc sve_##name##_zpzi(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg, \
                                             aarch64_z_reg zn, unsigned imm) {                     \
    return fast::move<memory, type, fast::whole<type>, 1>(state, zt, pg, zn,                       \
                                                          imm * sizeof(memory));                   \
  }

// Base plus vector of offsets in bytes.
#define OFFSETS(move, name, tail, extend, memory, type)                                            \
  inline aarch64_decode_rc sve_##name##tail(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,  \
                                            aarch64_z_reg zm, aarch64_i_rsp_reg rn) {              \
    return fast::move<memory, type, fast::extend<type>, 1>(state, zt, pg, zm,                      \
                                                           fast::read(state, rn));                 \
  }

// Base plus vector of offsets in memory elements.
#define SCALED(move, name, tail, extend, memory, type)                                             \
  inline aarch64_decode_rc sve_##name##tail(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,  \
                                            aarch64_i_rsp_reg rn, aarch64_z_reg zm) {              \
    return fast::move<memory, type, fast::extend<type>, sizeof(memory)>(state, zt, pg, zm,         \
                                                                        fast::read(state, rn));    \
  }

// clang-format off
ADDRESSES(load_gather,   ld1b_d,  uint8_t,  uint64_t)
ADDRESSES(load_gather,   ld1sb_d, int8_t,   uint64_t)
ADDRESSES(load_gather,   ld1h_d,  uint16_t, uint64_t)
ADDRESSES(load_gather,   ld1sh_d, int16_t,  uint64_t)
ADDRESSES(load_gather,   ld1w_d,  uint32_t, uint64_t)
ADDRESSES(load_gather,   ld1sw_d, int32_t,  uint64_t)
ADDRESSES(load_gather,   ld1d,    uint64_t, uint64_t)
ADDRESSES(store_scatter, st1b_d,  uint8_t,  uint64_t)
ADDRESSES(store_scatter, st1h_d,  uint16_t, uint64_t)
ADDRESSES(store_scatter, st1w_d,  uint32_t, uint64_t)
ADDRESSES(store_scatter, st1d,    uint64_t, uint64_t)

OFFSETS(load_gather,   ld1b_d,  _zpzr, whole, uint8_t,  uint64_t)
OFFSETS(load_gather,   ld1sb_d, _zpzr, whole, int8_t,   uint64_t)
OFFSETS(load_gather,   ld1h_d,  _zpzr, whole, uint16_t, uint64_t)
OFFSETS(load_gather,   ld1sh_d, _zpzr, whole, int16_t,  uint64_t)
OFFSETS(load_gather,   ld1w_d,  _zpzr, whole, uint32_t, uint64_t)
OFFSETS(load_gather,   ld1sw_d, _zpzr, whole, int32_t,  uint64_t)
OFFSETS(load_gather,   ld1d,    _zpzr, whole, uint64_t, uint64_t)
OFFSETS(store_scatter, st1b_d,  _zpzr, whole, uint8_t,  uint64_t)
OFFSETS(store_scatter, st1h_d,  _zpzr, whole, uint16_t, uint64_t)
OFFSETS(store_scatter, st1w_d,  _zpzr, whole, uint32_t, uint64_t)
OFFSETS(store_scatter, st1d,    _zpzr, whole, uint64_t, uint64_t)

OFFSETS(load_gather,   ld1b_s,  _sxtw_zpzr, sxtw, uint8_t,  uint32_t)
OFFSETS(load_gather,   ld1sb_s, _sxtw_zpzr, sxtw, int8_t,   uint32_t)
OFFSETS(load_gather,   ld1h_s,  _sxtw_zpzr, sxtw, uint16_t, uint32_t)
OFFSETS(load_gather,   ld1sh_s, _sxtw_zpzr, sxtw, int16_t,  uint32_t)
OFFSETS(load_gather,   ld1w,    _sxtw_zpzr, sxtw, uint32_t, uint32_t)
OFFSETS(load_gather,   ld1b_d,  _sxtw_zpzr, sxtw, uint8_t,  uint64_t)
OFFSETS(load_gather,   ld1sb_d, _sxtw_zpzr, sxtw, int8_t,   uint64_t)
OFFSETS(store_scatter, st1b_s,  _sxtw_zpzr, sxtw, uint8_t,  uint32_t)
OFFSETS(store_scatter, st1h_s,  _sxtw_zpzr, sxtw, uint16_t, uint32_t)
OFFSETS(store_scatter, st1w,    _sxtw_zpzr, sxtw, uint32_t, uint32_t)
OFFSETS(store_scatter, st1b_d,  _sxtw_zpzr, sxtw, uint8_t,  uint64_t)

OFFSETS(load_gather,   ld1sb_d, _uxtw_zpzr, uxtw, int8_t,   uint64_t)

SCALED(load_gather,   ld1h_d,  _scaled_zprz, whole, uint16_t, uint64_t)
SCALED(load_gather,   ld1sh_d, _scaled_zprz, whole, int16_t,  uint64_t)
SCALED(load_gather,   ld1w_d,  _scaled_zprz, whole, uint32_t, uint64_t)
SCALED(load_gather,   ld1sw_d, _scaled_zprz, whole, int32_t,  uint64_t)
SCALED(load_gather,   ld1d,    _scaled_zprz, whole, uint64_t, uint64_t)
SCALED(store_scatter, st1h_d,  _scaled_zprz, whole, uint16_t, uint64_t)
SCALED(store_scatter, st1w_d,  _scaled_zprz, whole, uint32_t, uint64_t)
SCALED(store_scatter, st1d,    _scaled_zprz, whole, uint64_t, uint64_t)

SCALED(load_gather,   ld1h_s,  _sxtw_scaled_zprz, sxtw, uint16_t, uint32_t)
SCALED(load_gather,   ld1sh_s, _sxtw_scaled_zprz, sxtw, int16_t,  uint32_t)
SCALED(load_gather,   ld1w,    _sxtw_scaled_zprz, sxtw, uint32_t, uint32_t)
SCALED(load_gather,   ld1h_d,  _sxtw_scaled_zprz, sxtw, uint16_t, uint64_t)
SCALED(load_gather,   ld1sh_d, _sxtw_scaled_zprz, sxtw, int16_t,  uint64_t)
SCALED(load_gather,   ld1w_d,  _sxtw_scaled_zprz, sxtw, uint32_t, uint64_t)
SCALED(load_gather,   ld1sw_d, _sxtw_scaled_zprz, sxtw, int32_t,  uint64_t)
SCALED(load_gather,   ld1d,    _sxtw_scaled_zprz, sxtw, uint64_t, uint64_t)
SCALED(store_scatter, st1h_s,  _sxtw_scaled_zprz, sxtw, uint16_t, uint32_t)
SCALED(store_scatter, st1w,    _sxtw_scaled_zprz, sxtw, uint32_t, uint32_t)
SCALED(store_scatter, st1h_d,  _sxtw_scaled_zprz, sxtw, uint16_t, uint64_t)
SCALED(store_scatter, st1w_d,  _sxtw_scaled_zprz, sxtw, uint32_t, uint64_t)
SCALED(store_scatter, st1d,    _sxtw_scaled_zprz, sxtw, uint64_t, uint64_t)

SCALED(load_gather,   ld1sh_d, _uxtw_scaled_zprz, uxtw, int16_t,  uint64_t)
SCALED(load_gather,   ld1d,    _uxtw_scaled_zprz, uxtw, uint64_t, uint64_t)
SCALED(store_scatter, st1w_d,  _uxtw_scaled_zprz, uxtw, uint32_t, uint64_t)
SCALED(store_scatter, st1d,    _uxtw_scaled_zprz, uxtw, uint64_t, uint64_t)
// clang-format on

#undef ADDRESSES
#undef OFFSETS
#undef SCALED
