// Integer data processing under a predicate: each function of a table has the operation named
// beside it, and all of a table share their operands. Destinations may be any source.
#pragma once

#include "sve/fast/integer_operations.h"

namespace fast {

// The element sizes of a function.
struct AllSizes {
  template <class Function> static void dispatch(uint32_t size, Function function) {
    by_size(size, function);
  }
};
struct WideSizes {  // words and doublewords
  template <class Function> static void dispatch(uint32_t size, Function function) {
    by_wide_size(size, function);
  }
};
struct DoublewordOnly {
  template <class Function> static void dispatch(uint32_t, Function function) {
    function.template operator()<uint64_t>();
  }
};

// Zdn and Zm, merging: inactive elements keep Zdn.
template <class Sizes, class Operation>
inline aarch64_decode_rc merge_binary(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg,
                                      aarch64_z_reg zm, Operation operation) {
  Sizes::dispatch(zdn.dn_kind, [&]<class T>() {
    const auto a = load<T>(state->z[zdn.index]);
    const auto b = load<T>(state->z[zm.index]);
    store<T>(state->z[zdn.index], select<T>(active<T>(state->p[pg.index]), operation(a, b), a));
  });
  return aarch64_decode_ok;
}

// Zdn and the same immediate for all elements, merging.
template <class Operation>
inline aarch64_decode_rc merge_immediate(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg,
                                         unsigned immediate, Operation operation) {
  by_size(zdn.dn_kind, [&]<class T>() {
    const auto a = load<T>(state->z[zdn.index]);
    const auto b = broadcast(static_cast<T>(immediate));
    store<T>(state->z[zdn.index], select<T>(active<T>(state->p[pg.index]), operation(a, b), a));
  });
  return aarch64_decode_ok;
}

// Zdn and two more vectors, merging.
template <class Operation>
inline aarch64_decode_rc merge_ternary(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg,
                                       aarch64_z_reg second, aarch64_z_reg third,
                                       Operation operation) {
  by_size(zdn.dn_kind, [&]<class T>() {
    const auto a = load<T>(state->z[zdn.index]);
    const auto b = load<T>(state->z[second.index]);
    const auto c = load<T>(state->z[third.index]);
    store<T>(state->z[zdn.index], select<T>(active<T>(state->p[pg.index]), operation(a, b, c), a));
  });
  return aarch64_decode_ok;
}

// Zn, merging: inactive elements keep Zd.
template <class Sizes, class Operation>
inline aarch64_decode_rc merge_unary(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg,
                                     aarch64_z_reg zn, Operation operation) {
  Sizes::dispatch(zd.kind, [&]<class T>() {
    const auto a = load<T>(state->z[zn.index]);
    const auto old = load<T>(state->z[zd.index]);
    store<T>(state->z[zd.index], select<T>(active<T>(state->p[pg.index]), operation(a), old));
  });
  return aarch64_decode_ok;
}

}  // namespace fast

#define SVE_ZPZ_BINARY(name, sizes, operation)                                                     \
  inline aarch64_decode_rc name(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg,             \
                                aarch64_z_reg zm) {                                                \
    return fast::merge_binary<fast::sizes>(state, zdn, pg, zm, operation);                         \
  }
#define SVE_ZPI(name, operation)                                                                   \
  inline aarch64_decode_rc name(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg,             \
                                unsigned amount) {                                                 \
    return fast::merge_immediate(state, zdn, pg, amount, operation);                               \
  }
#define SVE_ZPZZ(name, ...)                                                                        \
  inline aarch64_decode_rc name(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg,             \
                                aarch64_z_reg second, aarch64_z_reg third) {                       \
    return fast::merge_ternary(state, zdn, pg, second, third, __VA_ARGS__);                        \
  }
#define SVE_ZPZ_UNARY(name, sizes, operation)                                                      \
  inline aarch64_decode_rc name(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg,              \
                                aarch64_z_reg zn) {                                                \
    return fast::merge_unary<fast::sizes>(state, zd, pg, zn, operation);                           \
  }

// clang-format off

// Zdn = Zdn op Zm. The size is zdn.dn_kind.
SVE_ZPZ_BINARY(sve_add_zpz,   AllSizes,  fast::add)
SVE_ZPZ_BINARY(sve_sub_zpz,   AllSizes,  fast::sub)
SVE_ZPZ_BINARY(sve_mul_zpz,   AllSizes,  fast::mul)
SVE_ZPZ_BINARY(sve_and_zpz,   AllSizes,  fast::bitwise_and)
SVE_ZPZ_BINARY(sve_orr_zpz,   AllSizes,  fast::bitwise_or)
SVE_ZPZ_BINARY(sve_eor_zpz,   AllSizes,  fast::bitwise_xor)
SVE_ZPZ_BINARY(sve_bic_zpz,   AllSizes,  fast::bit_clear)
SVE_ZPZ_BINARY(sve_smax_zpz,  AllSizes,  fast::signed_max)
SVE_ZPZ_BINARY(sve_smin_zpz,  AllSizes,  fast::signed_min)
SVE_ZPZ_BINARY(sve_umax_zpz,  AllSizes,  fast::unsigned_max)
SVE_ZPZ_BINARY(sve_umin_zpz,  AllSizes,  fast::unsigned_min)
SVE_ZPZ_BINARY(sve_asr_zpz,   AllSizes,  fast::shift_right_signed)
SVE_ZPZ_BINARY(sve_lsl_zpz,   AllSizes,  fast::shift_left)
SVE_ZPZ_BINARY(sve_lsr_zpz,   AllSizes,  fast::shift_right)
SVE_ZPZ_BINARY(sve_sdiv_zpz,  WideSizes, fast::signed_divide)
SVE_ZPZ_BINARY(sve_udiv_zpz,  WideSizes, fast::unsigned_divide)
SVE_ZPZ_BINARY(sve_sdivr_zpz, WideSizes, fast::reversed(fast::signed_divide))
SVE_ZPZ_BINARY(sve_udivr_zpz, WideSizes, fast::reversed(fast::unsigned_divide))

// Zdn = Zdn shifted by an amount in bits: 1 to the width to the right, 0 to the width less 1 to
// the left. The size is zdn.dn_kind.
SVE_ZPI(sve_asr_zpi, fast::shift_right_signed)
SVE_ZPI(sve_lsl_zpi, fast::shift_left)

// Zda = Zda op Zn * Zm, with second Zn and third Zm; Zdn = Za op Zdn * Zm, with second Zm and
// third Za. The size is dn_kind of the first operand.
SVE_ZPZZ(sve_mla_zpzz, [](auto a, auto n, auto m) { return a + n * m; })
SVE_ZPZZ(sve_mls_zpzz, [](auto a, auto n, auto m) { return a - n * m; })
SVE_ZPZZ(sve_mad_zpzz, [](auto n, auto m, auto a) { return a + n * m; })
SVE_ZPZZ(sve_msb_zpzz, [](auto n, auto m, auto a) { return a - n * m; })

// Zd = op Zn; inactive elements keep Zd. The size is zd.kind.
SVE_ZPZ_UNARY(sve_neg_zpz,  AllSizes,       fast::negate)
SVE_ZPZ_UNARY(sve_sxtb_zpz, AllSizes,       fast::sign_extend<8>)
SVE_ZPZ_UNARY(sve_sxth_zpz, WideSizes,      fast::sign_extend<16>)
SVE_ZPZ_UNARY(sve_sxtw_zpz, DoublewordOnly, fast::sign_extend<32>)
SVE_ZPZ_UNARY(sve_uxth_zpz, WideSizes,      fast::zero_extend<16>)
SVE_ZPZ_UNARY(sve_uxtw_zpz, DoublewordOnly, fast::zero_extend<32>)
SVE_ZPZ_UNARY(sve_rbit_zpz, AllSizes,       fast::reverse_bits)
SVE_ZPZ_UNARY(sve_revw_zpz, DoublewordOnly, fast::swap_words)

// clang-format on

#undef SVE_ZPZ_BINARY
#undef SVE_ZPI
#undef SVE_ZPZZ
#undef SVE_ZPZ_UNARY

// MOVPRFX (predicated): Zn where active, elsewhere zero if pg zeroes, else Zd. The size is zd.kind.
inline aarch64_decode_rc sve_movprfx_zpz(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg,
                                         aarch64_z_reg zn) {
  fast::by_size(zd.kind, [&]<class T>() {
    const auto a = fast::load<T>(state->z[zn.index]);
    const auto old =
        pg.kind == aarch64_p_reg::zeroing ? fast::vector<T>{} : fast::load<T>(state->z[zd.index]);
    fast::store<T>(state->z[zd.index],
                   fast::select<T>(fast::active<T>(state->p[pg.index]), a, old));
  });
  return aarch64_decode_ok;
}
