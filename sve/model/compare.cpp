#include "sve/model/compare.h"

#include "sve/model/predicate.h"
#include "sve/model/vector.h"

using namespace model;

namespace {

// Any element or second operand, extended to 64 bits by the type's sign.
template <class E> using Extended = std::conditional_t<is_unsigned<E>, uint64_t, int64_t>;

template <class E, class Second, class Relation>
PredV compare(const PredV& pg, const VecV& zn, CpuContext* context, Second second,
              Relation relation) {
  const PredV result = map_active_bits<E>(pg, context, [&](unsigned e) {
    return relation(static_cast<Extended<E>>(get<E>(zn, e)), static_cast<Extended<E>>(second(e)));
  });
  PredSetNZCV(pg, result, esize<E>, context);
  return result;
}

}  // namespace

// The operation, its types, and the relation of a and b.
#define COMPARE(kind, operation, types, ...) SVE_EACH(COMPARE_##kind, operation, types, __VA_ARGS__)
#define COMPARE_ELEMENTS(type, operation, ...)                                                     \
  MODEL_DEFINE(type, operation, PredV, (PredV pg, VecV zn, VecV zm)) {                             \
    using E = model::type;                                                                         \
    return compare<E>(                                                                             \
        pg, zn, context, [&](unsigned e) { return get<E>(zm, e); },                                \
        [](auto a, auto b) { return __VA_ARGS__; });                                               \
  }
#define COMPARE_WIDE(type, operation, ...)                                                         \
  MODEL_DEFINE(type, operation, PredV, (PredV pg, VecV zn, VecV zm)) {                             \
    using E = model::type;                                                                         \
    return compare<E>(                                                                             \
        pg, zn, context, [&](unsigned e) { return wide<E>(zm, e); },                               \
        [](auto a, auto b) { return __VA_ARGS__; });                                               \
  }
#define COMPARE_IMMEDIATE(type, operation, ...)                                                    \
  MODEL_DEFINE(type, operation, PredV, (PredV pg, VecV zn, uint64_t imm)) {                        \
    using E = model::type;                                                                         \
    return compare<E>(                                                                             \
        pg, zn, context, [&](unsigned) { return imm; },                                            \
        [](auto a, auto b) { return __VA_ARGS__; });                                               \
  }

// clang-format off
COMPARE(ELEMENTS, CmpFlgEQVVZ, (S8, S16, S32, S64), a == b)
COMPARE(ELEMENTS, CmpFlgNEVVZ, (S8, S16, S32, S64), a != b)
COMPARE(ELEMENTS, CmpFlgGEVVZ, (S8, S16, S32, S64, U8, U16, U32, U64), a >= b)
COMPARE(ELEMENTS, CmpFlgGTVVZ, (S8, S16, S32, S64, U8, U16, U32, U64), a > b)

COMPARE(WIDE, CmpFlgEQVWZ, (S8, S16, S32), a == b)
COMPARE(WIDE, CmpFlgNEVWZ, (S8, S16, S32), a != b)
COMPARE(WIDE, CmpFlgGEVWZ, (S8, S16, S32, U8, U16, U32), a >= b)
COMPARE(WIDE, CmpFlgGTVWZ, (S8, S16, S32, U8, U16, U32), a > b)
COMPARE(WIDE, CmpFlgLEVWZ, (S8, S16, S32, U8, U16, U32), a <= b)
COMPARE(WIDE, CmpFlgLTVWZ, (S8, S16, S32, U8, U16, U32), a < b)

COMPARE(IMMEDIATE, CmpFlgEQVIZ, (S8, S16, S32, S64), a == b)
COMPARE(IMMEDIATE, CmpFlgNEVIZ, (S8, S16, S32, S64), a != b)
COMPARE(IMMEDIATE, CmpFlgGEVIZ, (S8, S16, S32, S64, U8, U16, U32, U64), a >= b)
COMPARE(IMMEDIATE, CmpFlgGTVIZ, (S8, S16, S32, S64, U8, U16, U32, U64), a > b)
COMPARE(IMMEDIATE, CmpFlgLEVIZ, (S8, S16, S32, S64, U8, U16, U32, U64), a <= b)
COMPARE(IMMEDIATE, CmpFlgLTVIZ, (S8, S16, S32, S64, U8, U16, U32, U64), a < b)
// clang-format on
