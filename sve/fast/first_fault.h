// First-fault and non-fault loads: what cannot be read loses its bits in the first-fault register.
// A probe that fails is a signal, and outside the runtime each is a system call: hence probes at
// page changes only.
#pragma once

#include <algorithm>

#include "sve/fast/contiguous.h"
#include "sve/state/guarded_reads.h"
#include "sve/state/page_size.h"
#include "sve/state/switches.h"

namespace fast {

inline bool is_readable(uint64_t address) {
  return addr_is_readable<char>(reinterpret_cast<volatile char*>(address));
}

inline uint64_t page_offset(uint64_t address) { return address & (page_size - 1); }

// An element that straddles a page is readable only if its last byte is, too.
template <class Memory> inline bool rest_is_readable(uint64_t address) {
  return page_offset(address) + sizeof(Memory) <= page_size ||
         is_readable(address + sizeof(Memory) - 1);
}

// As the hardware has it: active elements in ascending order, the first one of a first-fault load
// with a plain access. The first that cannot be read and all behind it become 0 and lose their
// groups of ffr.
template <class Memory, class T, bool first_faults>
inline aarch64_decode_rc load_until_fault(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,
                                          uint64_t address) {
  T loaded[elements<T>] = {};
  bool plain = first_faults;
  uint64_t last = page_size;  // offset in a page of which a byte was read
  for (unsigned i = 0; i < elements<T>; i++, address += sizeof(Memory)) {
    if (!is_active<T>(state->p[pg.index], i))
      continue;
    const bool in_page_read = page_offset(address) > last;
    if (!plain && !((in_page_read || is_readable(address)) && rest_is_readable<Memory>(address))) {
      memset(state->ffr + i * sizeof(T), 0, vector_bytes - i * sizeof(T));
      break;
    }
    loaded[i] = static_cast<T>(read_memory<Memory>(address));
    host::finish_access();
    last = page_offset(address + sizeof(Memory) - 1);
    plain = false;
  }
  memcpy(state->z[zt.index], loaded, vector_bytes);
  return aarch64_decode_ok;
}

// Every active element for itself: one that cannot be read keeps its old value and clears its
// group of ffr.
template <class Memory, class T>
inline aarch64_decode_rc load_non_fault(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,
                                        uint64_t address) {
  if (sve_faults_as_hardware)
    return in_one_page(address, elements<T> * sizeof(Memory)) && is_readable(address)
               ? load_contiguous<Memory, T>(state, zt, pg, address)
               : load_until_fault<Memory, T, false>(state, zt, pg, address);
  bool readable = is_readable(address);
  uint64_t last = page_offset(address);
  if (readable && is_active<T>(state->p[pg.index], 0) &&
      in_one_page(address, elements<T> * sizeof(Memory)) && is_readable(address))
    return load_contiguous<Memory, T>(state, zt, pg, address);
  for (unsigned i = 0; i < elements<T>; i++, address += sizeof(Memory)) {
    if (!is_active<T>(state->p[pg.index], i)) {
      set_element<T>(state->z[zt.index], i, 0);
      continue;
    }
    if (page_offset(address) <= last) {  // the first element, or one in another page
      readable = is_readable(address);
      last = page_offset(address);
    }
    if (readable && rest_is_readable<Memory>(address))
      set_element<T>(state->z[zt.index], i, static_cast<T>(read_memory<Memory>(address)));
    else
      set_element<T>(state->ffr, i, 0);
  }
  return aarch64_decode_ok;
}

// How many elements a load takes on whose 16 bytes run into a page that cannot be read: those whose
// share of the 16 bytes lies in front of it. If that is none, the first active element is read all
// the same, so that a program that waits for progress either makes some or gets its fault.
template <class T> inline unsigned elements_in_page(const uint8_t* predicate, uint64_t address) {
  const uint64_t left = page_size - page_offset(address);
  unsigned count = static_cast<unsigned>(std::min<uint64_t>(left, vector_bytes) / sizeof(T));
  if (count == 0) {
    while (count < elements<T> && !is_active<T>(predicate, count))
      count++;
    count = std::min(count + 1, elements<T>);
  }
  return count;
}

template <class Memory, class T>
inline aarch64_decode_rc load_first_fault(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,
                                          uint64_t address) {
  if (page_offset(address) <= page_offset(address + vector_bytes))
    return load_contiguous<Memory, T>(state, zt, pg, address);
  if (sve_faults_as_hardware)
    return load_until_fault<Memory, T, true>(state, zt, pg, address);
  if (is_readable(address + page_size))
    return load_contiguous<Memory, T>(state, zt, pg, address);
  const uint8_t* const predicate = state->p[pg.index];
  const unsigned count = elements_in_page<T>(predicate, address);
  load_lowest<Memory, T>(state->z[zt.index], predicate, count, NextAddress<Memory>{address});
  memset(state->ffr + count * sizeof(T), 0, vector_bytes - count * sizeof(T));
  return aarch64_decode_ok;
}

}  // namespace fast

#define NON_FAULT(name, memory, type)                                                              \
  inline aarch64_decode_rc sve_##name##_zpri(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg, \
                                             aarch64_i_rsp_reg rn, int imm) {                      \
    return fast::load_non_fault<memory, type>(                                                     \
        state, zt, pg,                                                                             \
        fast::immediate_address<fast::elements<type> * sizeof(memory)>(state, rn, imm));           \
  }

#define FIRST_FAULT(name, memory, type)                                                            \
  inline aarch64_decode_rc sve_##name##_scaled_zprr(cpu_state* state, aarch64_z_reg zt,            \
                                                    aarch64_p_reg pg, aarch64_i_rsp_reg rn,        \
                                                    aarch64_i_reg rm) {                            \
    return fast::load_first_fault<memory, type>(state, zt, pg,                                     \
                                                fast::indexed_address<memory>(state, rn, rm));     \
  }

// clang-format off
NON_FAULT(ldnf1b,    uint8_t,  uint8_t)
NON_FAULT(ldnf1b_h,  uint8_t,  uint16_t)
NON_FAULT(ldnf1b_s,  uint8_t,  uint32_t)
NON_FAULT(ldnf1b_d,  uint8_t,  uint64_t)
NON_FAULT(ldnf1h,    uint16_t, uint16_t)
NON_FAULT(ldnf1h_s,  uint16_t, uint32_t)
NON_FAULT(ldnf1h_d,  uint16_t, uint64_t)
NON_FAULT(ldnf1w,    uint32_t, uint32_t)
NON_FAULT(ldnf1w_d,  uint32_t, uint64_t)
NON_FAULT(ldnf1d,    uint64_t, uint64_t)
NON_FAULT(ldnf1sb_h, int8_t,   uint16_t)
NON_FAULT(ldnf1sb_s, int8_t,   uint32_t)
NON_FAULT(ldnf1sb_d, int8_t,   uint64_t)
NON_FAULT(ldnf1sh_s, int16_t,  uint32_t)
NON_FAULT(ldnf1sh_d, int16_t,  uint64_t)
NON_FAULT(ldnf1sw_d, int32_t,  uint64_t)

FIRST_FAULT(ldff1b,   uint8_t,  uint8_t)
FIRST_FAULT(ldff1b_h, uint8_t,  uint16_t)
FIRST_FAULT(ldff1b_s, uint8_t,  uint32_t)
FIRST_FAULT(ldff1b_d, uint8_t,  uint64_t)
FIRST_FAULT(ldff1w,   uint32_t, uint32_t)
FIRST_FAULT(ldff1w_d, uint32_t, uint64_t)
FIRST_FAULT(ldff1d,   uint64_t, uint64_t)
// clang-format on

#undef NON_FAULT
#undef FIRST_FAULT
