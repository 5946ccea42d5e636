// Bitwise operations, and those that count or reorder the bits of an element.
#include "sve/model/bits.h"
#include "sve/model/element_wise.h"
#include "sve/model/integer.h"

using namespace model;

// clang-format off
MERGING_BINARY(AndVVM, (U8, U16, U32, U64), a & b)
MERGING_BINARY(BicVVM, (U8, U16, U32, U64), a & ~b)
MERGING_BINARY(OrVVM, (U8, U16, U32, U64), a | b)
MERGING_BINARY(XorVVM, (U8, U16, U32, U64), a ^ b)

PLAIN_BINARY(AndVVX, (U64), a & b)
PLAIN_BINARY(BicVVX, (U64), a & ~b)
PLAIN_BINARY(OrVVX, (U64), a | b)
PLAIN_BINARY(XorVVX, (U64), a ^ b)

PLAIN_IMMEDIATE(AndVIX, (U64), x & imm)
PLAIN_IMMEDIATE(OrVIX, (U64), x | imm)
PLAIN_IMMEDIATE(XorVIX, (U64), x ^ imm)

MERGING_UNARY(InvVM, (U8, U16, U32, U64), ~x)
MERGING_UNARY(NotVM, (U8, U16, U32, U64), x == 0)
MERGING_UNARY(ClsVM, (U8, U16, U32, U64), CountLeadingSignBits(x, esize<E>))
MERGING_UNARY(ClzVM, (U8, U16, U32, U64), CountLeadingZeroBits(x, esize<E>))
MERGING_UNARY(CntVM, (U8, U16, U32, U64), BitCount(x, esize<E>))
MERGING_UNARY(RBitVM, (U8, U16, U32, U64), BitReverse(x, esize<E>))
MERGING_UNARY(Rev1V, (U16, U32, U64), Reverse(x, esize<E>, 1))
MERGING_UNARY(Rev2V, (U32, U64), Reverse(x, esize<E>, 2))
MERGING_UNARY(Rev4V, (U64), Reverse(x, esize<E>, 4))
// clang-format on
