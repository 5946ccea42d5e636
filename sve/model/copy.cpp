// Extraction of the last active element, duplication, insertion, selection.
#include "sve/model/permute.h"
#include "sve/model/predicate.h"
#include "sve/model/vector.h"

using namespace model;

namespace {

// The element behind the last active one, element 0 being behind the highest.
template <class E> E after_last(const VecV& zn, int last, const CpuContext* context) {
  return get<E>(zn, static_cast<unsigned>(last + 1) % elements<E>(context));
}

template <class E> VecV broadcast(E x, const CpuContext* context) {
  return map<E>(context, [&](unsigned) { return x; });
}

}  // namespace

#define LAST_A(type, operation, ...)                                                               \
  MODEL_DEFINE(type, operation, uint64_t, (PredV pg, VecV zn)) {                                   \
    using E = model::type;                                                                         \
    return after_last<E>(zn, FindLastActive(pg, esize<E>, context), context);                      \
  }
#define LAST_B(type, operation, ...)                                                               \
  MODEL_DEFINE(type, operation, uint64_t, (PredV pg, VecV zn)) {                                   \
    using E = model::type;                                                                         \
    const int last = FindLastActive(pg, esize<E>, context);                                        \
    return get<E>(zn, last < 0 ? elements<E>(context) - 1 : static_cast<unsigned>(last));          \
  }
#define CONDITIONAL_A(type, operation, ...)                                                        \
  MODEL_DEFINE(type, operation, uint64_t, (PredV pg, uint64_t old, VecV zn)) {                     \
    using E = model::type;                                                                         \
    const int last = FindLastActive(pg, esize<E>, context);                                        \
    return last < 0 ? static_cast<E>(old) : after_last<E>(zn, last, context);                      \
  }
#define CONDITIONAL_B(type, operation, ...)                                                        \
  MODEL_DEFINE(type, operation, uint64_t, (PredV pg, uint64_t old, VecV zn)) {                     \
    using E = model::type;                                                                         \
    const int last = FindLastActive(pg, esize<E>, context);                                        \
    return last < 0 ? static_cast<E>(old) : get<E>(zn, static_cast<unsigned>(last));               \
  }
#define CONDITIONAL_VECTOR_A(type, operation, ...)                                                 \
  MODEL_DEFINE(type, operation, VecV, (PredV pg, VecV old, VecV zn)) {                             \
    using E = model::type;                                                                         \
    const int last = FindLastActive(pg, esize<E>, context);                                        \
    return last < 0 ? old : broadcast<E>(after_last<E>(zn, last, context), context);               \
  }
#define CONDITIONAL_VECTOR_B(type, operation, ...)                                                 \
  MODEL_DEFINE(type, operation, VecV, (PredV pg, VecV old, VecV zn)) {                             \
    using E = model::type;                                                                         \
    const int last = FindLastActive(pg, esize<E>, context);                                        \
    return last < 0 ? old : broadcast<E>(get<E>(zn, static_cast<unsigned>(last)), context);        \
  }

// clang-format off
SVE_EACH(LAST_A, LastAV, (U8, U16, U32, U64, B8, H16, F32, D64), )
SVE_EACH(LAST_B, LastBV, (U8, U16, U32, U64, B8, H16, F32, D64), )
SVE_EACH(CONDITIONAL_A, CondXASV, (U8, U16, U32, U64, B8, H16, F32, D64), )
SVE_EACH(CONDITIONAL_B, CondXBSV, (U8, U16, U32, U64, B8, H16, F32, D64), )
SVE_EACH(CONDITIONAL_VECTOR_A, VCondXAVV, (U8, U16, U32, U64), )
SVE_EACH(CONDITIONAL_VECTOR_B, VCondXBVV, (U8, U16, U32, U64), )
// clang-format on

#define DUPLICATE(type, operation, ...)                                                            \
  MODEL_DEFINE(type, operation, VecV, (uint64_t scalar)) {                                         \
    return broadcast(static_cast<model::type>(scalar), context);                                   \
  }
#define DUPLICATE_MERGING(type, operation, ...)                                                    \
  MODEL_DEFINE(type, operation, VecV, (VecV old, PredV pg, uint64_t scalar)) {                     \
    using E = model::type;                                                                         \
    return merge<E>(old, pg, context, [&](unsigned) { return static_cast<E>(scalar); });           \
  }
#define DUPLICATE_ZEROING(type, operation, ...)                                                    \
  MODEL_DEFINE(type, operation, VecV, (PredV pg, uint64_t scalar)) {                               \
    using E = model::type;                                                                         \
    return zero_inactive<E>(pg, context, [&](unsigned) { return static_cast<E>(scalar); });        \
  }
// An index that is not below the element count gives 0.
#define DUPLICATE_ELEMENT(type, operation, ...)                                                    \
  MODEL_DEFINE(type, operation, VecV, (VecV zn, uint64_t index)) {                                 \
    using E = model::type;                                                                         \
    const bool exists = index < elements<E>(context);                                              \
    return broadcast<E>(exists ? get<E>(zn, static_cast<unsigned>(index)) : E{0}, context);        \
  }
#define INSERT(type, operation, ...)                                                               \
  MODEL_DEFINE(type, operation, VecV, (VecV old, uint64_t scalar)) {                               \
    using E = model::type;                                                                         \
    return map<E>(context, [&](unsigned e) {                                                       \
      return e == 0 ? static_cast<E>(scalar) : get<E>(old, e - 1);                                 \
    });                                                                                            \
  }
#define MOVE_MERGING(type, operation, ...)                                                         \
  MODEL_DEFINE(type, operation, VecV, (VecV old, PredV pg, VecV zn)) {                             \
    using E = model::type;                                                                         \
    return merge<E>(old, pg, context, [&](unsigned e) { return get<E>(zn, e); });                  \
  }
#define MOVE_ZEROING(type, operation, ...)                                                         \
  MODEL_DEFINE(type, operation, VecV, (PredV pg, VecV zn)) {                                       \
    using E = model::type;                                                                         \
    return zero_inactive<E>(pg, context, [&](unsigned e) { return get<E>(zn, e); });               \
  }
#define SELECT(type, operation, ...)                                                               \
  MODEL_DEFINE(type, operation, VecV, (PredV pg, VecV zn, VecV zm)) {                              \
    using E = model::type;                                                                         \
    return merge<E>(zm, pg, context, [&](unsigned e) { return get<E>(zn, e); });                   \
  }

// clang-format off
SVE_EACH(DUPLICATE, DupI, (S8, S16, S32, S64, F16, F32, D64), )
SVE_EACH(DUPLICATE, DupMaskI, (S64), )
SVE_EACH(DUPLICATE, DupS, (U8, U16, U32, U64), )
SVE_EACH(DUPLICATE_MERGING, DupIM, (S8, S16, S32, S64, F16, F32, D64), )
SVE_EACH(DUPLICATE_MERGING, DupSM, (U8, U16, U32, U64, B8, H16, F32, D64), )
SVE_EACH(DUPLICATE_ZEROING, DupIZ, (S8, S16, S32, S64), )
SVE_EACH(DUPLICATE_ELEMENT, ExtDupVI, (U8, U16, U32, U64, U128), )
SVE_EACH(INSERT, InsertS, (U8, U16, U32, U64, B8, H16, F32, D64), )
SVE_EACH(MOVE_MERGING, MovePrefix1VM, (U8, U16, U32, U64), )
SVE_EACH(MOVE_ZEROING, MovePrefix1VZ, (U8, U16, U32, U64), )
SVE_EACH(SELECT, SelVV, (U8, U16, U32, U64), )
// clang-format on

VecV VecU32SpecialMoveV(VecV zn, CpuContext* context) {
  return map<uint32_t>(context, [&](unsigned e) { return get<uint32_t>(zn, e); });
}
