// Saturating addition and subtraction.
#include <limits>

#include "sve/model/bits.h"
#include "sve/model/element_wise.h"
#include "sve/model/integer.h"

using namespace model;

namespace {

// Wide enough for a sum or difference of elements, and of an element and an immediate.
template <class E>
using Exact = std::conditional_t<(sizeof(E) < 4), int32_t,
                                 std::conditional_t<sizeof(E) == 4, int64_t, WideInt>>;

template <class E> E clamp(Exact<E> i) {
  constexpr Exact<E> least = std::numeric_limits<E>::min(), most = std::numeric_limits<E>::max();
  return static_cast<E>(i < least ? least : i > most ? most : i);
}

}  // namespace

// clang-format off
PLAIN_BINARY(QAddVVX, (S8, S16, S32, S64, U8, U16, U32, U64), clamp<E>(Exact<E>{a} + Exact<E>{b}))
PLAIN_BINARY(QSubVVX, (S8, S16, S32, S64, U8, U16, U32, U64), clamp<E>(Exact<E>{a} - Exact<E>{b}))

// The immediate is unsigned also for signed elements.
PLAIN_IMMEDIATE(QAddVIX, (S8, S16, S32, S64, U8, U16, U32, U64), clamp<E>(Exact<E>{x} + static_cast<uint32_t>(imm)))
PLAIN_IMMEDIATE(QSubVIX, (S8, S16, S32, S64, U8, U16, U32, U64), clamp<E>(Exact<E>{x} - static_cast<uint32_t>(imm)))
// clang-format on
