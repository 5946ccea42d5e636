// Shifts. A count is unsigned and is not cut to the element's width: one of that width or more
// leaves 0 or the sign.
#include "sve/model/bits.h"
#include "sve/model/element_wise.h"
#include "sve/model/integer.h"

using namespace model;

namespace {

template <class E> E right(E x, uint64_t count) {
  const bool beyond = count >= esize<E>;
  if constexpr (is_unsigned<E>)
    return beyond ? E{0} : static_cast<E>(x >> count);
  else
    return static_cast<E>(x >> (beyond ? esize<E> - 1 : count));
}

template <class E> E left(E x, uint64_t count) {
  return count < esize<E> ? static_cast<E>(raw(x) << count) : E{0};
}

// Rounds toward zero, where a plain shift rounds toward minus infinity. count: up to the width.
template <class E> E divide_by_power(E x, uint64_t count) {
  using Sum = std::conditional_t<sizeof(E) == 8, WideInt, int64_t>;
  const Sum bias = x < 0 ? (Sum{1} << count) - 1 : 0;
  return static_cast<E>((x + bias) >> count);
}

}  // namespace

// clang-format off
MERGING_BINARY(ShlVVM, (U8, U16, U32, U64), left(a, b))
MERGING_BINARY(ShlRVVM, (U8, U16, U32, U64), left(b, a))
MERGING_BINARY(ShrVVM, (S8, S16, S32, S64, U8, U16, U32, U64), right(a, static_cast<std::make_unsigned_t<E>>(b)))
MERGING_BINARY(ShrRVVM, (S8, S16, S32, S64, U8, U16, U32, U64), right(b, static_cast<std::make_unsigned_t<E>>(a)))

MERGING_WIDE(ShlVWM, (U8, U16, U32), left(x, count))
MERGING_WIDE(ShrVWM, (S8, S16, S32, U8, U16, U32), right(x, count))
PLAIN_WIDE(ShlVWX, (U8, U16, U32), left(x, count))
PLAIN_WIDE(ShrVWX, (S8, S16, S32, U8, U16, U32), right(x, count))

MERGING_IMMEDIATE(ShlVIM, (U8, U16, U32, U64), left(x, count))
MERGING_IMMEDIATE(ShrVIM, (S8, S16, S32, S64, U8, U16, U32, U64), right(x, count))
MERGING_IMMEDIATE(ShrDVIM, (S8, S16, S32, S64), divide_by_power(x, count))
PLAIN_IMMEDIATE(ShlVIX, (U8, U16, U32, U64), left(x, imm))
PLAIN_IMMEDIATE(ShrVIX, (S8, S16, S32, S64, U8, U16, U32, U64), right(x, imm))
// clang-format on
