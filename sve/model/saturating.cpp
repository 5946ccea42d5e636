// Saturating addition and subtraction.
#include "sve/model/element_wise.h"
#include "sve/model/integer.h"
#include "sve/model/saturation.h"

using namespace model;

namespace {

template <class E> uint64_t clamp(WideInt i) { return SatQ(i, esize<E>, is_unsigned<E>).value; }
template <class E> WideInt exact(E x) { return Int(raw(x), esize<E>, is_unsigned<E>); }

}  // namespace

// clang-format off
PLAIN_BINARY(QAddVVX, (S8, S16, S32, S64, U8, U16, U32, U64), SatAdd(raw(a), raw(b), esize<E>, is_unsigned<E>))
PLAIN_BINARY(QSubVVX, (S8, S16, S32, S64, U8, U16, U32, U64), SatSub(raw(a), raw(b), esize<E>, is_unsigned<E>))

// The immediate is unsigned also for signed elements.
PLAIN_IMMEDIATE(QAddVIX, (S8, S16, S32, S64, U8, U16, U32, U64), clamp<E>(exact(x) + UInt(imm, 64)))
PLAIN_IMMEDIATE(QSubVIX, (S8, S16, S32, S64, U8, U16, U32, U64), clamp<E>(exact(x) - UInt(imm, 64)))
// clang-format on
