// Operand forms against encoders and decoders written from the definition, and the name tables.
#include "sve/state/operands.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <string>

#include "sve/decode/operand_forms.h"

namespace {

using namespace stubs;

// ---- registers ----------------------------------------------------------------------------------

TEST(Operands, RegistersHaveTheirFieldAndKind) {
  struct Words {
    uint32_t index, kind, dn_kind, dn_kind2;
    bool operator==(const Words&) const = default;
  };
  const auto words = [](auto reg) { return std::bit_cast<Words>(reg); };
  constexpr uint32_t z_none = aarch64_z_reg::none, p_none = aarch64_p_reg::none,
                     i_none = aarch64_i_reg::none;
  const uint32_t word = 0x04d92c6b;  // fields: 4:0 = 11, 9:5 = 3, 12:10 = 3, 13:10 = 11, 20:16 = 25
  EXPECT_EQ(words(Zd<U16>::decode(word)), (Words{11, element_halfword, z_none, z_none}));
  EXPECT_EQ(words(Zn<U8>::decode(word)), (Words{3, element_byte, z_none, z_none}));
  EXPECT_EQ(words(Zm<D64>::decode(word)), (Words{25, element_doubleword, z_none, z_none}));
  EXPECT_EQ(words(Zn<U128>::decode(word)), (Words{3, 4, z_none, z_none}));
  EXPECT_EQ(words(Zdn<S32>::decode(word)), (Words{11, z_none, element_word, element_word}));
  EXPECT_EQ(words(Pd<P16>::decode(word)), (Words{11, element_halfword, p_none, p_none}));
  EXPECT_EQ(words(Pn<P8>::decode(word)), (Words{3, element_byte, p_none, p_none}));
  EXPECT_EQ(words(Pm<P8>::decode(word)), (Words{9, element_byte, p_none, p_none}));
  EXPECT_EQ(words(Pdn<P32>::decode(word)), (Words{11, p_none, element_word, element_word}));
  EXPECT_EQ(words(PgM<U8>::decode(word)), (Words{3, 4, p_none, p_none}));
  EXPECT_EQ(words(PgZ<U8>::decode(word)), (Words{3, 5, p_none, p_none}));
  EXPECT_EQ(words(Pg<U8>::decode(word)), (Words{3, 6, p_none, p_none}));
  EXPECT_EQ(words(Pg4Z<P>::decode(word)), (Words{11, 5, p_none, p_none}));
  EXPECT_EQ(words(PgAt16M<U8>::decode(word)), (Words{9, 4, p_none, p_none}));
  EXPECT_EQ(words(Wn<U8>::decode(word)), (Words{3, element_word, i_none, i_none}));
  EXPECT_EQ(words(Xm<U8>::decode(word)), (Words{25, element_doubleword, i_none, i_none}));
  EXPECT_EQ(words(Xdn<U8>::decode(word)),
            (Words{11, i_none, element_doubleword, element_doubleword}));
  EXPECT_EQ(Base<U8>::decode(word).index, 3u);
  EXPECT_EQ(Base<U8>::decode(word).kind, uint32_t{element_doubleword});
  EXPECT_EQ(XnSPAt16<U8>::decode(word).index, 25u);
  EXPECT_EQ(Vd<F32>::decode(word), 11u);
}

template <size_t N>
void expect_names(const std::array<const char*, N>& table, const char* letter, const char* suffix,
                  const char* last = nullptr) {
  for (size_t n = 0; n < N; n++) {
    const std::string name = letter + std::to_string(n) + suffix;
    EXPECT_EQ(table[n], n == N - 1 && last != nullptr ? std::string(last) : name);
  }
}

TEST(Operands, RegistersHaveNames) {
  expect_names(aarch64_z_reg::zname, "z", "");
  expect_names(aarch64_z_reg::zname_b, "z", ".b");
  expect_names(aarch64_z_reg::zname_h, "z", ".h");
  expect_names(aarch64_z_reg::zname_s, "z", ".s");
  expect_names(aarch64_z_reg::zname_d, "z", ".d");
  expect_names(aarch64_p_reg::pname, "p", "");
  expect_names(aarch64_p_reg::pname_m, "p", "/m");
  expect_names(aarch64_p_reg::pname_z, "p", "/z");
  expect_names(aarch64_p_reg::pname_b, "p", ".b");
  expect_names(aarch64_p_reg::pname_h, "p", ".h");
  expect_names(aarch64_p_reg::pname_s, "p", ".s");
  expect_names(aarch64_p_reg::pname_d, "p", ".d");
  expect_names(aarch64_i_reg::wname, "w", "", "wzr");
  expect_names(aarch64_i_reg::xname, "x", "", "xzr");
  expect_names(aarch64_i_rsp_reg::wname, "w", "", "illegal");
  expect_names(aarch64_i_rsp_reg::xname, "x", "", "sp");
}

// ---- immediates ---------------------------------------------------------------------------------

TEST(Immediates, PlainFields) {
  for (int value = -8; value < 8; value++)
    EXPECT_EQ(SImm4At16<U8>::decode((value & 15u) << 16 | 0xfff0ffff), value);
  for (int value = -16; value < 16; value++) {
    EXPECT_EQ(SImm5At5<U8>::decode((value & 31u) << 5 | 0xfffffc1f), value);
    EXPECT_EQ(SImm5At16<U8>::decode((value & 31u) << 16), value);
  }
  for (int value = -32; value < 32; value++)
    EXPECT_EQ(SImm6At5<U8>::decode((value & 63u) << 5 | 0xfffff81f), value);
  for (int value = -128; value < 128; value++) {
    EXPECT_EQ(SImm8At5<U8>::decode((value & 255u) << 5), value);
    EXPECT_EQ(SImm8Shifted<U16>::decode((value & 255u) << 5), value);
    EXPECT_EQ(SImm8Shifted<U16>::decode((value & 255u) << 5 | 1u << 13), value * 256);
  }
  for (unsigned value = 0; value < 256; value++) {
    EXPECT_EQ(UImm8At5<U8>::decode(value << 5 | 0xffffe01f), value);
    EXPECT_EQ(UImm8Shifted<U16>::decode(value << 5), value);
    EXPECT_EQ(UImm8Shifted<U16>::decode(value << 5 | 1u << 13), value * 256);
  }
  for (unsigned value = 0; value < 128; value++)
    EXPECT_EQ(UImm7At14<U8>::decode(value << 14 | 0xffe03fff), value);
  for (unsigned value = 1; value <= 16; value++)
    EXPECT_EQ(Multiplier<U8>::decode((value - 1) << 16), value);
  EXPECT_EQ(FPConstant<F32>::decode(0x20).value, 1);
  EXPECT_EQ(FPConstant<F32>::decode(~0x20u).value, 0);
}

// Nine-bit offset and eight-bit position: the high part at 16, the low three bits at 10.
TEST(Immediates, SplitFields) {
  for (int value = -256; value < 256; value++)
    EXPECT_EQ(SImm9<U8>::decode((value & 0x1f8u) << 13 | (value & 7u) << 10), value);
  for (unsigned value = 0; value < 256; value++)
    EXPECT_EQ(ExtPosition<U8>::decode((value & 0xf8u) << 13 | (value & 7u) << 10), value);
}

// The encoder's side: the width plus the left shift, or twice the width less the right shift, in
// seven bits: two at 22, two and three at `low`.
template <class T> void expect_shifts() {
  const auto encode = [](unsigned value, unsigned low) {
    return (value >> 5) << 22 | (value & 31) << low;
  };
  for (unsigned shift = 0; shift < T::bits; shift++) {
    EXPECT_EQ(LeftShiftAt5<T>::decode(encode(T::bits + shift, 5)), shift);
    EXPECT_EQ(LeftShiftAt16<T>::decode(encode(T::bits + shift, 16)), shift);
  }
  for (unsigned shift = 1; shift <= T::bits; shift++) {
    EXPECT_EQ(RightShiftAt5<T>::decode(encode(2 * T::bits - shift, 5)), shift);
    EXPECT_EQ(RightShiftAt16<T>::decode(encode(2 * T::bits - shift, 16)), shift);
  }
}

TEST(Immediates, Shifts) {
  expect_shifts<U8>();
  expect_shifts<U16>();
  expect_shifts<U32>();
  expect_shifts<U64>();
}

// The index stands above a marker bit that gives the size, in seven bits: two at 22, five at 16.
template <class T> void expect_dup_indices() {
  for (unsigned index = 0; index < 512 / T::bits; index++) {
    const unsigned value = (2 * index + 1) << T::size;
    EXPECT_EQ(DupIndex<T>::decode((value >> 5) << 22 | (value & 31) << 16), index) << T::bits;
  }
}

TEST(Immediates, DupIndices) {
  expect_dup_indices<U8>();
  expect_dup_indices<U16>();
  expect_dup_indices<U32>();
  expect_dup_indices<U64>();
  expect_dup_indices<U128>();
}

// imm8 is sign, exponent and fraction: (16 + fraction) / 16 * 2^exponent with -3 to 4.
TEST(Immediates, FloatingPoint) {
  for (uint32_t imm8 = 0; imm8 < 256; imm8++) {
    const int exponent = static_cast<int>((imm8 >> 4 & 7) ^ 4) - 3;
    const double value = std::ldexp(16.0 + (imm8 & 15), exponent - 4) * (imm8 < 128 ? 1 : -1);
    const aarch64_sve_fp_dup_imm imm = FPImm8<F32>::decode(imm8 << 5);
    EXPECT_EQ(imm.wide, value) << imm8;
    EXPECT_EQ(imm.single, std::bit_cast<uint32_t>(static_cast<float>(value))) << imm8;
    const uint32_t half = imm.half;
    EXPECT_EQ(std::ldexp(1024 + (half & 1023), static_cast<int>(half >> 10 & 31) - 25) *
                  (half >> 15 == 0 ? 1 : -1),
              value)
        << imm8;
  }
}

// The architecture's definition, bit by bit. Returns false for what has no meaning.
bool decode_bit_masks(uint32_t n, uint32_t immr, uint32_t imms, uint64_t& result) {
  const uint32_t size_bits = n << 6 | (~imms & 0x3f);
  int len = 6;
  while (len >= 0 && (size_bits >> len & 1) == 0)
    len--;
  if (len < 0)
    return false;
  const unsigned esize = 1u << len;
  const unsigned ones = (imms & (esize - 1)) + 1;
  const unsigned rotation = immr & (esize - 1);
  result = 0;
  for (unsigned bit = 0; bit < 64; bit++) {
    const unsigned source = (bit % esize + rotation) % esize;  // the bit that rotates to this place
    result |= static_cast<uint64_t>(source < ones) << bit;
  }
  return true;
}

TEST(Immediates, Bitmasks) {
  unsigned reserved = 0;
  for (uint32_t imm = 0; imm < 1u << 13; imm++) {
    const uint32_t word = imm << 5 | 0xfffc001f;
    uint64_t expected = 0;
    if (decode_bit_masks(imm >> 12, imm >> 6 & 63, imm & 63, expected)) {
      EXPECT_FALSE(BitmaskImm<U64>::reserved(word)) << imm;
      EXPECT_EQ(BitmaskImm<U64>::decode(word).value, expected) << imm;
    } else {
      EXPECT_TRUE(BitmaskImm<U64>::reserved(word)) << imm;
      reserved++;
    }
  }
  EXPECT_EQ(reserved, 64u);  // any rotation of N clear, imms all ones
}

}  // namespace
