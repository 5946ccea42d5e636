// The types in the names of decode stubs, as tags for operand forms.
#pragma once

#include "sve/state/operands.h"

namespace stubs {

template <element_size size_> struct ElementType {
  static constexpr element_size size = size_;
  static constexpr unsigned bits = 8u << size_;
};

using ByteType = ElementType<element_byte>;
using HalfwordType = ElementType<element_halfword>;
using WordType = ElementType<element_word>;
using DoublewordType = ElementType<element_doubleword>;

// Integer elements.
struct U8 : ByteType {};
struct U16 : HalfwordType {};
struct U32 : WordType {};
struct U64 : DoublewordType {};
struct U128 : ElementType<static_cast<element_size>(aarch64_z_reg::quadword)> {};
struct S8 : ByteType {};
struct S16 : HalfwordType {};
struct S32 : WordType {};
struct S64 : DoublewordType {};

// Floating-point elements; H32, H64 and F64 hold a narrower value in a wider element.
struct F16 : HalfwordType {};
struct F32 : WordType {};
struct D64 : DoublewordType {};
struct H32 : WordType {};
struct H64 : DoublewordType {};
struct F64 : DoublewordType {};

// With F32 and D64, the scalar widths of forms on a SIMD and floating-point scalar register.
struct B8 : ByteType {};
struct H16 : HalfwordType {};

// Predicate elements; P has no element size, and works on single predicate bits.
struct P : ByteType {};
struct P8 : ByteType {};
struct P16 : HalfwordType {};
struct P32 : WordType {};
struct P64 : DoublewordType {};

}  // namespace stubs
