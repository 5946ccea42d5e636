// Element moves: duplication, selection, extraction of the last element, and sign bits.
#pragma once

#include <bit>

#include "sve/fast/operands.h"

namespace fast {

// The value in all elements.
inline aarch64_decode_rc fill(cpu_state* state, aarch64_z_reg zd, uint64_t value) {
  by_size(zd.kind,
          [=]<class T>() { store<T>(state->z[zd.index], broadcast<T>(static_cast<T>(value))); });
  return aarch64_decode_ok;
}

// The value in the active elements; the others keep what they have.
inline aarch64_decode_rc merge_value(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg,
                                     uint64_t value) {
  by_size(zd.kind, [=]<class T>() {
    store<T>(state->z[zd.index],
             select<T>(active<T>(state->p[pg.index]), broadcast<T>(static_cast<T>(value)),
                       load<T>(state->z[zd.index])));
  });
  return aarch64_decode_ok;
}

// Number of the highest active element, or -1.
template <class T> inline int last_active(const uint8_t* predicate) {
  int i = static_cast<int>(elements<T>) - 1;
  while (i >= 0 && !is_active<T>(predicate, static_cast<unsigned>(i)))
    i--;
  return i;
}

// The highest active element, zero-extended; the last one if none is active.
inline uint64_t last_element(const cpu_state* state, aarch64_p_reg pg, aarch64_z_reg zn) {
  return by_size(zn.kind, [=]<class T>() -> uint64_t {
    const int last = last_active<T>(state->p[pg.index]);
    return load<T>(state->z[zn.index])[last < 0 ? elements<T> - 1 : static_cast<unsigned>(last)];
  });
}

// Words or doublewords of Zn with only the sign bit changed, where active.
template <class Operation>
inline aarch64_decode_rc merge_signs(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg,
                                     aarch64_z_reg zn, Operation operation) {
  by_wide_size(zd.kind, [=]<class T>() {
    const vector<T> sign = broadcast<T>(T{1} << (8 * sizeof(T) - 1));
    store<T>(state->z[zd.index],
             select<T>(active<T>(state->p[pg.index]), operation(load<T>(state->z[zn.index]), sign),
                       load<T>(state->z[zd.index])));
  });
  return aarch64_decode_ok;
}

}  // namespace fast

// SEL: Zn where active, Zm elsewhere.
inline aarch64_decode_rc sve_sel_zpzz(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg,
                                      aarch64_z_reg zn, aarch64_z_reg zm) {
  fast::by_size(zd.kind, [=]<class T>() {
    fast::store<T>(state->z[zd.index], fast::select<T>(fast::active<T>(state->p[pg.index]),
                                                       fast::load<T>(state->z[zn.index]),
                                                       fast::load<T>(state->z[zm.index])));
  });
  return aarch64_decode_ok;
}

// CPY: an immediate, merging or zeroing; a general register or SP; a scalar register's element.
inline aarch64_decode_rc sve_cpy_zpi(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg,
                                     int imm) {
  if (pg.kind != aarch64_p_reg::zeroing)
    return fast::merge_value(state, zd, pg, static_cast<uint64_t>(imm));
  fast::by_size(zd.kind, [=]<class T>() {
    fast::store<T>(state->z[zd.index],
                   fast::active<T>(state->p[pg.index]) & fast::broadcast<T>(static_cast<T>(imm)));
  });
  return aarch64_decode_ok;
}

inline aarch64_decode_rc sve_cpy_zpr(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg,
                                     aarch64_i_rsp_reg rn) {
  return fast::merge_value(state, zd, pg, fast::read(state, rn));
}

inline aarch64_decode_rc sve_cpy_zpv(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg,
                                     unsigned vn) {
  return fast::merge_value(state, zd, pg, fast::load<uint64_t>(state->z[vn])[0]);
}

// DUP: an immediate, a general register or SP, an element by number.
inline aarch64_decode_rc sve_dup_zi(cpu_state* state, aarch64_z_reg zd, int imm) {
  return fast::fill(state, zd, static_cast<uint64_t>(imm));
}

inline aarch64_decode_rc sve_dup_zr(cpu_state* state, aarch64_z_reg zd, aarch64_i_rsp_reg rn) {
  return fast::fill(state, zd, fast::read(state, rn));
}

// Numbers that Zn does not have give 0. Of quadwords Zn has one.
inline aarch64_decode_rc sve_dup_zzi(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn,
                                     unsigned index) {
  if (zd.kind == aarch64_z_reg::quadword) {
    const fast::vector<uint64_t> whole = fast::load<uint64_t>(state->z[zn.index]);
    fast::store<uint64_t>(state->z[zd.index], index == 0 ? whole : fast::vector<uint64_t>{});
    return aarch64_decode_ok;
  }
  return fast::fill(state, zd, fast::by_size(zd.kind, [=]<class T>() -> uint64_t {
                      return index < fast::elements<T> ? fast::load<T>(state->z[zn.index])[index]
                                                       : 0;
                    }));
}

// DUPM.
inline aarch64_decode_rc sve_dupm_zi(cpu_state* state, aarch64_z_reg zd,
                                     aarch64_sve_logical64_imm imm) {
  fast::store<uint64_t>(state->z[zd.index], fast::broadcast<uint64_t>(imm.value));
  return aarch64_decode_ok;
}

// FDUP, which moves bits alone.
inline aarch64_decode_rc sve_fdup_zi(cpu_state* state, aarch64_z_reg zd,
                                     aarch64_sve_fp_dup_imm imm) {
  switch (zd.kind) {
  case element_word:
    return fast::fill(state, zd, imm.single);
  case element_doubleword:
    return fast::fill(state, zd, std::bit_cast<uint64_t>(imm.wide));
  default:
    fast::store<uint16_t>(state->z[zd.index], fast::broadcast<uint16_t>(imm.half));
    return aarch64_decode_ok;
  }
}

// LASTB, into a general or a scalar register.
inline aarch64_decode_rc sve_lastb_rpz(cpu_state* state, aarch64_i_reg rd, aarch64_p_reg pg,
                                       aarch64_z_reg zn) {
  fast::write(state, rd, fast::last_element(state, pg, zn));
  return aarch64_decode_ok;
}

inline aarch64_decode_rc sve_lastb_vpz(cpu_state* state, unsigned vd, aarch64_p_reg pg,
                                       aarch64_z_reg zn) {
  fast::store<uint64_t>(state->z[vd], fast::vector<uint64_t>{fast::last_element(state, pg, zn), 0});
  return aarch64_decode_ok;
}

// CLASTB: without an active element Rdn's own low bits stand for it.
inline aarch64_decode_rc sve_clastb_rpz(cpu_state* state, aarch64_i_reg rdn, aarch64_p_reg pg,
                                        aarch64_z_reg zn) {
  fast::write(state, rdn, fast::by_size(zn.kind, [=]<class T>() -> uint64_t {
                const int last = fast::last_active<T>(state->p[pg.index]);
                return last < 0 ? static_cast<T>(fast::read(state, rdn))
                                : fast::load<T>(state->z[zn.index])[last];
              }));
  return aarch64_decode_ok;
}

// FABS and FNEG, which raise no exception and keep a NaN's payload.
inline aarch64_decode_rc sve_fabs_zpz(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg,
                                      aarch64_z_reg zn) {
  return fast::merge_signs(state, zd, pg, zn, [](auto value, auto sign) { return value & ~sign; });
}

inline aarch64_decode_rc sve_fneg_zpz(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg,
                                      aarch64_z_reg zn) {
  return fast::merge_signs(state, zd, pg, zn, [](auto value, auto sign) { return value ^ sign; });
}
