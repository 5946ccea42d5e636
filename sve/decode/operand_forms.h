// Operand forms: where an operand stands in the word, and what value a stub makes of it.
//
// A form is a type, parametrised by the stub's element type T, with
//   bits     the bits of the word that belong to the operand; a row's mask is what no operand owns
//   decode   the operand's value, from the word
// Forms are named for the operand in the assembly; where one letter stands at several places in
// the encoding, the lowest bit of the unusual place is in the name.
#pragma once

#include <bit>
#include <cstdint>

#include "sve/state/element_types.h"

namespace stubs {

// The bits from low on, count of them.
constexpr uint32_t field_bits(unsigned low, unsigned count) { return ((1u << count) - 1) << low; }

constexpr uint32_t field(uint32_t word, unsigned low, unsigned count) {
  return word >> low & ((1u << count) - 1);
}

constexpr int signed_field(uint32_t word, unsigned low, unsigned count) {
  return static_cast<int32_t>(word << (32 - low - count)) >> (32 - count);
}

// Data registers.

template <unsigned low, class T> struct ZField {
  static constexpr uint32_t bits = field_bits(low, 5);
  static constexpr aarch64_z_reg decode(uint32_t word) {
    return {field(word, low, 5), T::size, aarch64_z_reg::none, aarch64_z_reg::none};
  }
};
template <class T> using Zd = ZField<0, T>;
template <class T> using Zt = ZField<0, T>;  // the first register of a list, too
template <class T> using Zn = ZField<5, T>;
template <class T> using Zm5 = ZField<5, T>;  // the second source of destructive forms
template <class T> using Za5 = ZField<5, T>;  // the addend of MAD and MSB
template <class T> using Zm = ZField<16, T>;
template <class T> using Za = ZField<16, T>;  // the addend of FMAD and its kin

// Read and overwritten.
template <class T> struct Zdn {
  static constexpr uint32_t bits = field_bits(0, 5);
  static constexpr aarch64_z_reg decode(uint32_t word) {
    return {field(word, 0, 5), aarch64_z_reg::none, T::size, T::size};
  }
};
template <class T> using Zda = Zdn<T>;

// SIMD and floating-point scalar registers, by number.
template <unsigned low, class T> struct VField {
  static constexpr unsigned scalar_bits = T::bits;
  static constexpr uint32_t bits = field_bits(low, 5);
  static constexpr unsigned decode(uint32_t word) { return field(word, low, 5); }
};
template <class T> using Vd = VField<0, T>;
template <class T> using Vn = VField<5, T>;

// Predicate registers. Data operands carry their element size.

template <unsigned low, unsigned count, uint32_t kind> struct PField {
  static constexpr uint32_t bits = field_bits(low, count);
  static constexpr aarch64_p_reg decode(uint32_t word) {
    return {field(word, low, count), kind, aarch64_p_reg::none, aarch64_p_reg::none};
  }
};
template <class T> using Pd = PField<0, 4, T::size>;
template <class T> using Pt = PField<0, 4, T::size>;
template <class T> using Pn = PField<5, 4, T::size>;
template <class T> using Pm = PField<16, 4, T::size>;

template <class T> struct Pdn {
  static constexpr uint32_t bits = field_bits(0, 4);
  static constexpr aarch64_p_reg decode(uint32_t word) {
    return {field(word, 0, 4), aarch64_p_reg::none, T::size, T::size};
  }
};
template <class T> using Pdm = Pdn<T>;

// Governing predicates: three bits at 12 to 10, four at 13 to 10, or elsewhere. M merges, Z zeroes.
template <class> using Pg = PField<10, 3, aarch64_p_reg::governing>;
template <class> using PgM = PField<10, 3, aarch64_p_reg::merging>;
template <class> using PgZ = PField<10, 3, aarch64_p_reg::zeroing>;
template <class> using Pg4 = PField<10, 4, aarch64_p_reg::governing>;
template <class> using Pg4M = PField<10, 4, aarch64_p_reg::merging>;
template <class> using Pg4Z = PField<10, 4, aarch64_p_reg::zeroing>;
template <class> using PgAt5 = PField<5, 4, aarch64_p_reg::governing>;
template <class> using PgAt5Z = PField<5, 4, aarch64_p_reg::zeroing>;
template <class> using PgAt16M = PField<16, 4, aarch64_p_reg::merging>;
template <class> using PgAt16Z = PField<16, 4, aarch64_p_reg::zeroing>;

// General registers. R takes the element's size as its width, W and X say theirs.

template <unsigned low, uint32_t kind> struct RField {
  static constexpr uint32_t bits = field_bits(low, 5);
  static constexpr aarch64_i_reg decode(uint32_t word) {
    return {field(word, low, 5), kind, aarch64_i_reg::none, aarch64_i_reg::none};
  }
};
template <class T> using Rd = RField<0, T::size>;
template <class T> using Rn = RField<5, T::size>;
template <class T> using Rm = RField<16, T::size>;
template <class> using Wn = RField<5, element_word>;
template <class> using Wm = RField<16, element_word>;
template <class> using Xd = RField<0, element_doubleword>;
template <class> using Xn = RField<5, element_doubleword>;
template <class> using Xm = RField<16, element_doubleword>;  // the index of a memory operand, too

template <uint32_t kind> struct RdnField {
  static constexpr uint32_t bits = field_bits(0, 5);
  static constexpr aarch64_i_reg decode(uint32_t word) {
    return {field(word, 0, 5), aarch64_i_reg::none, kind, kind};
  }
};
template <class T> using Rdn = RdnField<T::size>;
template <class> using Wdn = RdnField<element_word>;
template <class> using Xdn = RdnField<element_doubleword>;

// General registers of which number 31 is SP.
template <unsigned low, uint32_t kind> struct RspField {
  static constexpr uint32_t bits = field_bits(low, 5);
  static constexpr aarch64_i_rsp_reg decode(uint32_t word) { return {field(word, low, 5), kind}; }
};
template <class> using Base = RspField<5, element_doubleword>;  // of a memory operand
template <class T> using RnSP = RspField<5, T::size>;
template <class> using XdSP = RspField<0, element_doubleword>;
template <class> using XnSPAt16 = RspField<16, element_doubleword>;

// Plain immediates, named for their width and place.

template <unsigned low, unsigned count> struct UnsignedField {
  static constexpr uint32_t bits = field_bits(low, count);
  static constexpr unsigned decode(uint32_t word) { return field(word, low, count); }
};
template <unsigned low, unsigned count> struct SignedField {
  static constexpr uint32_t bits = field_bits(low, count);
  static constexpr int decode(uint32_t word) { return signed_field(word, low, count); }
};
template <class> using SImm4At16 = SignedField<16, 4>;    // contiguous memory offset
template <class> using SImm5At5 = SignedField<5, 5>;      // INDEX
template <class> using SImm5At16 = SignedField<16, 5>;    // INDEX, signed compares
template <class> using SImm6At5 = SignedField<5, 6>;      // RDVL, ADDVL, ADDPL
template <class> using SImm6At16 = SignedField<16, 6>;    // prefetches
template <class> using SImm8At5 = SignedField<5, 8>;      // MUL, SMAX, SMIN
template <class> using UImm3At16 = UnsignedField<16, 3>;  // FTMAD
template <class> using UImm4At16 = UnsignedField<16, 4>;  // multiplier, less 1
template <class> using UImm5At16 = UnsignedField<16, 5>;  // vector plus immediate addresses
template <class> using UImm6At16 = UnsignedField<16, 6>;  // load and replicate
template <class> using UImm7At14 = UnsignedField<14, 7>;  // unsigned compares
template <class> using UImm8At5 = UnsignedField<5, 8>;    // UMAX, UMIN
template <class> using Pattern = UnsignedField<5, 5>;     // predicate constraint
template <class> using Prfop = UnsignedField<0, 4>;       // prefetch operation
template <class> using RotAt10 = UnsignedField<10, 2>;    // FCMLA (indexed)
template <class> using RotAt13 = UnsignedField<13, 2>;    // FCMLA
template <class> using RotAt16 = UnsignedField<16, 1>;    // FCADD

// Immediates that are put together.

// The element count's multiplier: 1 to 16.
template <class> struct Multiplier {
  static constexpr uint32_t bits = field_bits(16, 4);
  static constexpr unsigned decode(uint32_t word) { return field(word, 16, 4) + 1; }
};

// Whole-register memory offset, nine bits in two places.
template <class> struct SImm9 {
  static constexpr uint32_t bits = field_bits(16, 6) | field_bits(10, 3);
  static constexpr int decode(uint32_t word) {
    return signed_field(word, 16, 6) * 8 + static_cast<int>(field(word, 10, 3));
  }
};

// Eight bits, shifted left by 8 if bit 13 is set: of byte elements the shift is reserved, and the
// elements take the low bits.
template <class> struct UImm8Shifted {
  static constexpr uint32_t bits = field_bits(5, 9);
  static constexpr unsigned decode(uint32_t word) {
    return field(word, 5, 8) << (field(word, 13, 1) * 8);
  }
};
template <class> struct SImm8Shifted {
  static constexpr uint32_t bits = field_bits(5, 9);
  static constexpr int decode(uint32_t word) {
    return signed_field(word, 5, 8) * (field(word, 13, 1) != 0 ? 256 : 1);
  }
};

// EXT's byte position.
template <class> struct ExtPosition {
  static constexpr uint32_t bits = field_bits(16, 5) | field_bits(10, 3);
  static constexpr unsigned decode(uint32_t word) {
    return field(word, 16, 5) << 3 | field(word, 10, 3);
  }
};

// Shift amounts. The field holds the amount below the element's leading size bit: log2 of the
// width in bits, which for doublewords leaves bit 22 as its top bit.
template <unsigned low, class T> struct ShiftField {
  static constexpr unsigned low_count = T::size == element_doubleword ? 5 : 3 + T::size;
  static constexpr uint32_t top = T::size == element_doubleword ? 1u << 22 : 0;
  static constexpr uint32_t bits = field_bits(low, low_count) | top;
  static constexpr unsigned value(uint32_t word) {
    return field(word, low, low_count) | ((word & top) != 0 ? 32u : 0u);
  }
};
template <unsigned low, class T> struct LeftShiftField : ShiftField<low, T> {
  static constexpr unsigned decode(uint32_t word) { return ShiftField<low, T>::value(word); }
};
template <unsigned low, class T> struct RightShiftField : ShiftField<low, T> {
  static constexpr unsigned decode(uint32_t word) {
    return T::bits - ShiftField<low, T>::value(word);
  }
};
template <class T> using LeftShiftAt5 = LeftShiftField<5, T>;      // predicated
template <class T> using LeftShiftAt16 = LeftShiftField<16, T>;    // unpredicated
template <class T> using RightShiftAt5 = RightShiftField<5, T>;    // predicated
template <class T> using RightShiftAt16 = RightShiftField<16, T>;  // unpredicated

// DUP's element index: bits 23 and 22, bit 20, then what the size's own marker leaves of 19 to 17.
template <class T> struct DupIndex {
  static constexpr unsigned low_count = T::size < 4 ? 4 - T::size : 0;  // bit 20 among them
  static constexpr unsigned low = 21 - low_count;
  static constexpr uint32_t bits = field_bits(22, 2) | field_bits(low, low_count);
  static constexpr unsigned decode(uint32_t word) {
    return field(word, 22, 2) << low_count | field(word, low, low_count);
  }
};

// Floating-point immediates.

template <class> struct FPConstant {  // one of two constants
  static constexpr uint32_t bits = field_bits(5, 1);
  static constexpr aarch64_sve_fp_arith_imm decode(uint32_t word) {
    return {static_cast<uint8_t>(field(word, 5, 1))};
  }
};

template <class> struct FPImm8 {
  static constexpr uint32_t bits = field_bits(5, 8);
  static constexpr aarch64_sve_fp_dup_imm decode(uint32_t word) {
    const uint32_t sign = field(word, 12, 1);
    const uint32_t b = field(word, 11, 1);
    const uint32_t exponent = field(word, 9, 2);
    const uint32_t fraction = field(word, 5, 4);
    const uint32_t single =
        sign << 31 | (b ^ 1) << 30 | (b != 0 ? 0x3e000000u : 0) | exponent << 23 | fraction << 19;
    const uint32_t half =
        sign << 15 | (b ^ 1) << 14 | (b != 0 ? 0x3000u : 0) | exponent << 10 | fraction << 6;
    return {static_cast<uint16_t>(half), single, __builtin_bit_cast(float, single)};
  }
};

// Bitmask immediate. N and imms together name the element that is replicated; imms all ones with
// N clear names none, and such a word has no meaning in the architecture.
template <class> struct BitmaskImm {
  static constexpr uint32_t bits = field_bits(5, 13);
  static constexpr bool reserved(uint32_t word) { return size_bits(word) == 0; }
  static constexpr aarch64_sve_logical64_imm decode(uint32_t word) {
    const uint32_t size = size_bits(word);
    if (size == 0)
      return {0};
    const unsigned esize = 1u << (31 - __builtin_clz(size));
    const unsigned s = field(word, 5, 6) & (esize - 1);
    const unsigned r = field(word, 11, 6) & (esize - 1);
    const uint64_t ones = ~0ull >> (63 - s);
    const uint64_t mask = ~0ull >> (64 - esize);
    const uint64_t replicated = ones * (~0ull / mask);
    return {std::rotr(replicated, static_cast<int>(r))};  // a period of esize: rotates each element
  }

private:
  static constexpr uint32_t size_bits(uint32_t word) {
    return field(word, 17, 1) << 6 | (~field(word, 5, 6) & 0x3f);
  }
};

}  // namespace stubs
