// Structure loads and stores: LD2 to LD4 and ST2 to ST4. Memory is walked in ascending order, the
// registers of one structure after another; register numbers wrap at 31.
#pragma once

#include "host/structures.h"
#include "sve/fast/contiguous.h"

namespace fast {

// All elements, inside a page: no fault can fall between them.
template <class T, class U, unsigned N>
inline bool as_a_whole(const uint8_t* predicate, uint64_t address) {
  return sizeof(T) == sizeof(U) && in_one_page(address, N * vector_bytes) &&
         all_active<U>(predicate);
}

// Member by member, into the slots that slot_of(k) says.
template <class T, class U, unsigned N, class Slot>
inline void load_members(const uint8_t* predicate, uint64_t address, Slot slot_of) {
  for (unsigned i = 0; i < elements<U>; i++) {
    const bool active = is_active<U>(predicate, i);
    for (unsigned k = 0; k < N; k++, address += sizeof(T)) {
      set_element<U>(slot_of(k), i, active ? static_cast<U>(read_memory<T>(address)) : U{});
      host::finish_access();
    }
  }
}

// Where elements may be inactive, or a fault may find some done. Called in the end, so that what
// comes before needs no frame for it.
template <class T, class U, unsigned N>
[[gnu::noinline]] inline aarch64_decode_rc
load_structures(cpu_state* state, unsigned zt, const uint8_t* predicate, uint64_t address) {
  const auto slot_of = [=](unsigned k) { return state->z[(zt + k) % z_registers]; };
  const bool faults_first = is_active<U>(predicate, 0) && in_one_page(address, N * vector_bytes);
  if (faults_first || !sve_faults_as_hardware) {
    load_members<T, U, N>(predicate, address, slot_of);
    return aarch64_decode_ok;
  }
  uint8_t whole[N][vector_bytes];
  load_members<T, U, N>(predicate, address, [&](unsigned k) { return whole[k]; });
  for (unsigned k = 0; k < N; k++)
    memcpy(slot_of(k), whole[k], vector_bytes);
  return aarch64_decode_ok;
}

}  // namespace fast

// LDn of elements in memory of type T, in registers of type U. The offset counts elements.
template <class T, class U, unsigned N>
inline aarch64_decode_rc sve_ldN_zpri(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,
                                      aarch64_i_rsp_reg rn, long offset) {
  const uint64_t address = fast::read(state, rn) + static_cast<uint64_t>(offset) * sizeof(T);
  if (fast::as_a_whole<T, U, N>(state->p[pg.index], address)) {
    fast::vector<U> registers[N];
    host::load_structures(address, registers);
#pragma GCC unroll 4
    for (unsigned k = 0; k < N; k++)
      fast::store<U>(state->z[(zt.index + k) % z_registers], registers[k]);
    return aarch64_decode_ok;
  }
  return fast::load_structures<T, U, N>(state, zt.index, state->p[pg.index], address);
}

// STn of elements in registers of type U, in memory of type T. The offset counts elements.
template <class T, class U, unsigned N>
inline aarch64_decode_rc sve_stN_zpri(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,
                                      aarch64_i_rsp_reg rn, long offset) {
  uint64_t address = fast::read(state, rn) + static_cast<uint64_t>(offset) * sizeof(T);
  if (fast::as_a_whole<T, U, N>(state->p[pg.index], address)) {
    fast::vector<U> registers[N];
    for (unsigned k = 0; k < N; k++)
      registers[k] = fast::load<U>(state->z[(zt.index + k) % z_registers]);
    host::store_structures(address, registers);
    return aarch64_decode_ok;
  }
  for (unsigned i = 0; i < fast::elements<U>; i++) {
    const bool active = fast::is_active<U>(state->p[pg.index], i);
    for (unsigned k = 0; k < N; k++, address += sizeof(T)) {
      if (active)
        fast::write_memory<T>(
            address, static_cast<T>(fast::element<U>(state->z[(zt.index + k) % z_registers], i)));
      host::finish_access();
    }
  }
  return aarch64_decode_ok;
}

// Both shapes of one instruction. An immediate counts as many vectors as there are registers.
#define STRUCTURE(move, name, type, N)                                                             \
  inline aarch64_decode_rc sve_##name##_zpri(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg, \
                                             aarch64_i_rsp_reg rn, int imm) {                      \
    return sve_##move##N_zpri<type, type, N>(state, zt, pg, rn,                                    \
                                             long{imm} * N * fast::elements<type>);                \
  }                                                                                                \
  inline aarch64_decode_rc sve_##name##_scaled_zprr(cpu_state* state, aarch64_z_reg zt,            \
                                                    aarch64_p_reg pg, aarch64_i_rsp_reg rn,        \
                                                    aarch64_i_reg rm) {                            \
    return sve_##move##N_zpri<type, type, N>(state, zt, pg, rn,                                    \
                                             static_cast<long>(fast::read(state, rm)));            \
  }

// clang-format off
STRUCTURE(ld, ld2b, uint8_t,  2)
STRUCTURE(ld, ld2h, uint16_t, 2)
STRUCTURE(ld, ld2w, uint32_t, 2)
STRUCTURE(ld, ld2d, uint64_t, 2)
STRUCTURE(ld, ld3b, uint8_t,  3)
STRUCTURE(ld, ld3h, uint16_t, 3)
STRUCTURE(ld, ld3w, uint32_t, 3)
STRUCTURE(ld, ld3d, uint64_t, 3)
STRUCTURE(ld, ld4b, uint8_t,  4)
STRUCTURE(ld, ld4h, uint16_t, 4)
STRUCTURE(ld, ld4w, uint32_t, 4)
STRUCTURE(ld, ld4d, uint64_t, 4)
STRUCTURE(st, st2b, uint8_t,  2)
STRUCTURE(st, st2h, uint16_t, 2)
STRUCTURE(st, st2w, uint32_t, 2)
STRUCTURE(st, st2d, uint64_t, 2)
STRUCTURE(st, st3b, uint8_t,  3)
STRUCTURE(st, st3h, uint16_t, 3)
STRUCTURE(st, st3w, uint32_t, 3)
STRUCTURE(st, st3d, uint64_t, 3)
STRUCTURE(st, st4b, uint8_t,  4)
STRUCTURE(st, st4h, uint16_t, 4)
STRUCTURE(st, st4w, uint32_t, 4)
STRUCTURE(st, st4d, uint64_t, 4)
// clang-format on

#undef STRUCTURE
