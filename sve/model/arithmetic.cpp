// Integer addition, multiplication, division and what is made of them.
#include "sve/model/element_wise.h"
#include "sve/model/integer.h"
#include "sve/model/wide_integer.h"

using namespace model;

namespace {

// Rounded toward zero; 0 for a divisor of 0. The one overflow wraps.
template <class E> E divide(E a, E b) {
  return b == 0 ? E{0} : static_cast<E>(exact(a) / exact(b));
}

// The top bit of an unsigned doubleword product is no sign, but it is not among the bits kept.
template <class E> E high_half(E a, E b) {
  using Product = std::conditional_t<is_unsigned<E>, uint64_t, int64_t>;
  if constexpr (sizeof(E) == sizeof(Product))
    return static_cast<E>(ShiftRightInt(MulInt(exact(a), exact(b)), esize<E>));
  else
    return static_cast<E>(Product{a} * Product{b} >> esize<E>);
}

template <class E> E greater(E a, E b) { return a >= b ? a : b; }
template <class E> E lesser(E a, E b) { return a <= b ? a : b; }

// The low bytes of x, extended by the element's own signedness.
template <class Source, class E> E extend(E x) {
  using Narrow =
      std::conditional_t<is_unsigned<E>, std::make_unsigned_t<Source>, std::make_signed_t<Source>>;
  return static_cast<E>(static_cast<Narrow>(x));
}

}  // namespace

// clang-format off
MERGING_BINARY(AbdVVM, (S8, S16, S32, S64, U8, U16, U32, U64), a > b ? raw(a) - raw(b) : raw(b) - raw(a))
MERGING_BINARY(AddVVM, (U8, U16, U32, U64), raw(a) + raw(b))
MERGING_BINARY(SubVVM, (U8, U16, U32, U64), raw(a) - raw(b))
MERGING_BINARY(SubRVVM, (U8, U16, U32, U64), raw(b) - raw(a))
MERGING_BINARY(MulVVM, (S8, S16, S32, S64), raw(a) * raw(b))
MERGING_BINARY(MulHVVM, (S8, S16, S32, S64, U8, U16, U32, U64), high_half(a, b))
MERGING_BINARY(DivVVM, (S32, S64, U32, U64), divide(a, b))
MERGING_BINARY(DivRVVM, (S32, S64, U32, U64), divide(b, a))
MERGING_BINARY(MaxVVM, (S8, S16, S32, S64, U8, U16, U32, U64), greater(a, b))
MERGING_BINARY(MinVVM, (S8, S16, S32, S64, U8, U16, U32, U64), lesser(a, b))

MERGING_UNARY(AbsVM, (S8, S16, S32, S64), x < 0 ? 0 - raw(x) : raw(x))
MERGING_UNARY(NegVM, (S8, S16, S32, S64), 0 - raw(x))
MERGING_UNARY(Extnd12VM, (S16, U16), extend<int8_t>(x))
MERGING_UNARY(Extnd14VM, (S32, U32), extend<int8_t>(x))
MERGING_UNARY(Extnd18VM, (S64, U64), extend<int8_t>(x))
MERGING_UNARY(Extnd24VM, (S32, U32), extend<int16_t>(x))
MERGING_UNARY(Extnd28VM, (S64, U64), extend<int16_t>(x))
MERGING_UNARY(Extnd48VM, (S64, U64), extend<int32_t>(x))

MERGING_TERNARY(MLAVVVM, (S8, S16, S32, S64), raw(a) + raw(b) * raw(c))
MERGING_TERNARY(MLSVVVM, (S8, S16, S32, S64), raw(a) - raw(b) * raw(c))
MERGING_TERNARY(MADDVVVM, (S8, S16, S32, S64), raw(b) + raw(a) * raw(c))
MERGING_TERNARY(MSUBVVVM, (S8, S16, S32, S64), raw(b) - raw(a) * raw(c))

PLAIN_BINARY(AddVVX, (U8, U16, U32, U64), raw(a) + raw(b))
PLAIN_BINARY(SubVVX, (U8, U16, U32, U64), raw(a) - raw(b))

PLAIN_IMMEDIATE(AddVIX, (U8, U16, U32, U64), raw(x) + imm)
PLAIN_IMMEDIATE(SubVIX, (U8, U16, U32, U64), raw(x) - imm)
PLAIN_IMMEDIATE(SubRVIX, (U8, U16, U32, U64), imm - raw(x))
PLAIN_IMMEDIATE(MulVIX, (S8, S16, S32, S64), raw(x) * imm)
PLAIN_IMMEDIATE(MaxVIX, (S8, S16, S32, S64, U8, U16, U32, U64), greater(x, static_cast<E>(imm)))
PLAIN_IMMEDIATE(MinVIX, (S8, S16, S32, S64, U8, U16, U32, U64), lesser(x, static_cast<E>(imm)))

// Address vectors: base a, offset b. X sign-extends and Y zero-extends the offset's low word.
PLAIN_BINARY(LEA1VV, (U32, U64), raw(a) + raw(b))
PLAIN_BINARY(LEA2VV, (U32, U64), raw(a) + raw(b) * 2)
PLAIN_BINARY(LEA4VV, (U32, U64), raw(a) + raw(b) * 4)
PLAIN_BINARY(LEA8VV, (U32, U64), raw(a) + raw(b) * 8)
PLAIN_BINARY(LEA1XVV, (U64), a + raw(static_cast<int32_t>(b)))
PLAIN_BINARY(LEA2XVV, (U64), a + raw(static_cast<int32_t>(b)) * 2)
PLAIN_BINARY(LEA4XVV, (U64), a + raw(static_cast<int32_t>(b)) * 4)
PLAIN_BINARY(LEA8XVV, (U64), a + raw(static_cast<int32_t>(b)) * 8)
PLAIN_BINARY(LEA1YVV, (U64), a + raw(static_cast<uint32_t>(b)))
PLAIN_BINARY(LEA2YVV, (U64), a + raw(static_cast<uint32_t>(b)) * 2)
PLAIN_BINARY(LEA4YVV, (U64), a + raw(static_cast<uint32_t>(b)) * 4)
PLAIN_BINARY(LEA8YVV, (U64), a + raw(static_cast<uint32_t>(b)) * 8)
// clang-format on
