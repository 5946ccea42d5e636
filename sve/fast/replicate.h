// Load and replicate: LD1R. Every active element is read from the same address.
#pragma once

#include "sve/fast/contiguous_access.h"

namespace fast {

struct SameAddress {
  uint64_t address;

  uint64_t operator()(unsigned) const { return address; }
};

template <class Memory, class T>
inline aarch64_decode_rc load_replicate(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,
                                        aarch64_i_rsp_reg rn, unsigned imm) {
  const uint64_t address = read(state, rn) + imm * sizeof(Memory);
  uint8_t* const slot = state->z[zt.index];
  const uint8_t* const predicate = state->p[pg.index];
  if (!is_active<T>(predicate, 0))
    return load_elements<Memory, T>(state, slot, predicate, SameAddress{address});
  // Only the first access can fault, and nothing is done in front of it.
  const T value = static_cast<T>(read_memory<Memory>(address));
  store<T>(slot, broadcast(value) & active<T>(predicate));
  return aarch64_decode_ok;
}

}  // namespace fast

#define REPLICATE(name, memory, type)                                                              \
  inline aarch64_decode_rc sve_##name##_zpri(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg, \
                                             aarch64_i_rsp_reg rn, unsigned imm) {                 \
    return fast::load_replicate<memory, type>(state, zt, pg, rn, imm);                             \
  }

// clang-format off
REPLICATE(ld1rb,    uint8_t,  uint8_t)
REPLICATE(ld1rb_h,  uint8_t,  uint16_t)
REPLICATE(ld1rb_s,  uint8_t,  uint32_t)
REPLICATE(ld1rb_d,  uint8_t,  uint64_t)
REPLICATE(ld1rh,    uint16_t, uint16_t)
REPLICATE(ld1rh_s,  uint16_t, uint32_t)
REPLICATE(ld1rh_d,  uint16_t, uint64_t)
REPLICATE(ld1rw,    uint32_t, uint32_t)
REPLICATE(ld1rw_d,  uint32_t, uint64_t)
REPLICATE(ld1rd,    uint64_t, uint64_t)
REPLICATE(ld1rsb_h, int8_t,   uint16_t)
REPLICATE(ld1rsb_s, int8_t,   uint32_t)
REPLICATE(ld1rsb_d, int8_t,   uint64_t)
REPLICATE(ld1rsh_s, int16_t,  uint32_t)
REPLICATE(ld1rsh_d, int16_t,  uint64_t)
REPLICATE(ld1rsw_d, int32_t,  uint64_t)
// clang-format on

#undef REPLICATE
