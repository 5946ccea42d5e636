// Contiguous loads and stores of one register: LD1 and ST1 with every extension and truncation,
// their non-temporal twins, and LDR and STR.
#pragma once

#include "sve/fast/contiguous_access.h"

namespace fast {

// The memory image of a whole register's elements.
template <class Memory, class T> struct MemoryOf {
  typedef Memory type __attribute__((vector_size(sizeof(Memory) * elements<T>)));
};

// The immediate counts steps, of so many bytes each.
template <unsigned step>
inline uint64_t immediate_address(const cpu_state* state, aarch64_i_rsp_reg rn, int imm) {
  return read(state, rn) + static_cast<uint64_t>(imm) * step;
}

template <class Memory>
inline uint64_t indexed_address(const cpu_state* state, aarch64_i_rsp_reg rn, aarch64_i_reg rm) {
  return read(state, rn) + read(state, rm) * sizeof(Memory);
}

// Vectors of fewer elements than this are sooner walked through than asked for their lowest ones.
inline constexpr unsigned fewest_for_lowest = 8;

// How many elements are accessed at once: the lowest ones, if no others are active, inside a page.
// No fault can fall between them, and the first that is accessed is element 0. Or none_at_once, or
// in_two_pages.
inline constexpr unsigned none_at_once = vector_bytes + 1, in_two_pages = vector_bytes + 2;
template <class Memory, class T>
inline unsigned at_once(const uint8_t* predicate, uint64_t address) {
  if (!in_one_page(address, elements<T> * sizeof(Memory)))
    return in_two_pages;
  if (all_active<T>(predicate))
    return elements<T>;
  return elements<T> < fewest_for_lowest ? none_at_once : lowest_active<T>(predicate);
}

// Addresses of neighbours.
template <class Memory> struct NextAddress {
  uint64_t first;

  uint64_t operator()(unsigned i) const { return first + i * sizeof(Memory); }
};

template <class Memory, class T>
inline aarch64_decode_rc load_contiguous(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,
                                         uint64_t address) {
  using Image = typename MemoryOf<Memory, T>::type;
  uint8_t* const slot = state->z[zt.index];
  const uint8_t* const predicate = state->p[pg.index];
  const unsigned count = at_once<Memory, T>(predicate, address);
  if (count == elements<T>) {
    store<T>(slot, __builtin_convertvector(read_memory<Image>(address), vector<T>));
  } else if (count < elements<T>) {
    const ImageBytes bytes = read_bytes(address, count * sizeof(Memory));
    Image image;
    memcpy(&image, &bytes, sizeof image);
    store<T>(slot, __builtin_convertvector(image, vector<T>));
  } else if (count != in_two_pages && is_active<T>(predicate, 0)) {
    load_lowest<Memory, T>(slot, predicate, elements<T>, NextAddress<Memory>{address});
  } else {
    return load_elements<Memory, T>(state, slot, predicate, NextAddress<Memory>{address});
  }
  return aarch64_decode_ok;
}

template <class Memory, class T>
inline aarch64_decode_rc store_contiguous(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,
                                          uint64_t address) {
  using Image = typename MemoryOf<Memory, T>::type;
  const uint8_t* const slot = state->z[zt.index];
  const uint8_t* const predicate = state->p[pg.index];
  const unsigned count = at_once<Memory, T>(predicate, address);
  if (count == elements<T>) {
    write_memory<Image>(address, __builtin_convertvector(load<T>(slot), Image));
  } else if (count < elements<T>) {
    const Image image = __builtin_convertvector(load<T>(slot), Image);
    ImageBytes bytes = {};
    memcpy(&bytes, &image, sizeof image);
    write_bytes(address, count * sizeof(Memory), bytes);
  } else {
    store_elements<Memory, T>(slot, predicate, NextAddress<Memory>{address});
  }
  return aarch64_decode_ok;
}

}  // namespace fast

// Both shapes of one instruction: base plus immediate, in steps of the memory that all elements of
// a register take, and base plus scaled index register.
#define CONTIGUOUS(move, name, memory, type)                                                       \
  inline aarch64_decode_rc sve_##name##_zpri(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg, \
                                             aarch64_i_rsp_reg rn, int imm) {                      \
    return fast::move##_contiguous<memory, type>(                                                  \
        state, zt, pg,                                                                             \
        fast::immediate_address<fast::elements<type> * sizeof(memory)>(state, rn, imm));           \
  }                                                                                                \
  inline aarch64_decode_rc sve_##name##_scaled_zprr(cpu_state* state, aarch64_z_reg zt,            \
                                                    aarch64_p_reg pg, aarch64_i_rsp_reg rn,        \
                                                    aarch64_i_reg rm) {                            \
    return fast::move##_contiguous<memory, type>(state, zt, pg,                                    \
                                                 fast::indexed_address<memory>(state, rn, rm));    \
  }

// clang-format off
CONTIGUOUS(load, ld1b,    uint8_t,  uint8_t)
CONTIGUOUS(load, ld1b_h,  uint8_t,  uint16_t)
CONTIGUOUS(load, ld1b_s,  uint8_t,  uint32_t)
CONTIGUOUS(load, ld1b_d,  uint8_t,  uint64_t)
CONTIGUOUS(load, ld1h,    uint16_t, uint16_t)
CONTIGUOUS(load, ld1h_s,  uint16_t, uint32_t)
CONTIGUOUS(load, ld1h_d,  uint16_t, uint64_t)
CONTIGUOUS(load, ld1w,    uint32_t, uint32_t)
CONTIGUOUS(load, ld1w_d,  uint32_t, uint64_t)
CONTIGUOUS(load, ld1d,    uint64_t, uint64_t)

CONTIGUOUS(load, ld1sb_h, int8_t,   uint16_t)
CONTIGUOUS(load, ld1sb_s, int8_t,   uint32_t)
CONTIGUOUS(load, ld1sb_d, int8_t,   uint64_t)
CONTIGUOUS(load, ld1sh_s, int16_t,  uint32_t)
CONTIGUOUS(load, ld1sh_d, int16_t,  uint64_t)
CONTIGUOUS(load, ld1sw_d, int32_t,  uint64_t)

CONTIGUOUS(store, st1b,   uint8_t,  uint8_t)
CONTIGUOUS(store, st1b_h, uint8_t,  uint16_t)
CONTIGUOUS(store, st1b_s, uint8_t,  uint32_t)
CONTIGUOUS(store, st1b_d, uint8_t,  uint64_t)
CONTIGUOUS(store, st1h,   uint16_t, uint16_t)
CONTIGUOUS(store, st1h_s, uint16_t, uint32_t)
CONTIGUOUS(store, st1h_d, uint16_t, uint64_t)
CONTIGUOUS(store, st1w,   uint32_t, uint32_t)
CONTIGUOUS(store, st1w_d, uint32_t, uint64_t)
CONTIGUOUS(store, st1d,   uint64_t, uint64_t)

CONTIGUOUS(load,  ldnt1b, uint8_t,  uint8_t)
CONTIGUOUS(load,  ldnt1h, uint16_t, uint16_t)
CONTIGUOUS(load,  ldnt1w, uint32_t, uint32_t)
CONTIGUOUS(load,  ldnt1d, uint64_t, uint64_t)
CONTIGUOUS(store, stnt1b, uint8_t,  uint8_t)
CONTIGUOUS(store, stnt1h, uint16_t, uint16_t)
CONTIGUOUS(store, stnt1w, uint32_t, uint32_t)
CONTIGUOUS(store, stnt1d, uint64_t, uint64_t)
// clang-format on

#undef CONTIGUOUS

// LDR and STR of a vector, in two halves where a fault can fall between them. The immediate counts
// vectors.
inline aarch64_decode_rc sve_ldr_zri(cpu_state* state, aarch64_z_reg zt, aarch64_i_rsp_reg rn,
                                     int imm) {
  const uint64_t address = fast::immediate_address<vector_bytes>(state, rn, imm);
  uint8_t* const slot = state->z[zt.index];
  if (fast::in_one_page(address, vector_bytes) || sve_faults_as_hardware) {
    fast::store<uint64_t>(slot, fast::read_memory<fast::vector<uint64_t>>(address));
    return aarch64_decode_ok;
  }
  for (unsigned half = 0; half < 2; half++) {
    fast::set_element(slot, half, fast::read_memory<uint64_t>(address + half * sizeof(uint64_t)));
    host::finish_access();
  }
  return aarch64_decode_ok;
}

inline aarch64_decode_rc sve_str_zri(cpu_state* state, aarch64_z_reg zt, aarch64_i_rsp_reg rn,
                                     int imm) {
  const uint64_t address = fast::immediate_address<vector_bytes>(state, rn, imm);
  for (unsigned half = 0; half < 2; half++) {
    fast::write_memory(address + half * sizeof(uint64_t),
                       fast::element<uint64_t>(state->z[zt.index], half));
    host::finish_access();
  }
  return aarch64_decode_ok;
}

// LDR and STR of a predicate, which in memory has one bit for each vector byte. The immediate
// counts predicates.
inline aarch64_decode_rc sve_ldr_pri(cpu_state* state, aarch64_p_reg pt, aarch64_i_rsp_reg rn,
                                     int imm) {
  const auto bits =
      fast::read_memory<uint16_t>(fast::immediate_address<vector_bytes / 8>(state, rn, imm));
  for (unsigned i = 0; i < vector_bytes; i++)
    state->p[pt.index][i] = bits >> i & 1;
  return aarch64_decode_ok;
}

inline aarch64_decode_rc sve_str_pri(cpu_state* state, aarch64_p_reg pt, aarch64_i_rsp_reg rn,
                                     int imm) {
  unsigned bits = 0;
  for (unsigned i = 0; i < vector_bytes; i++)
    bits |= (state->p[pt.index][i] & 1u) << i;
  fast::write_memory(fast::immediate_address<vector_bytes / 8>(state, rn, imm),
                     static_cast<uint16_t>(bits));
  return aarch64_decode_ok;
}
