#include "sve/model/counting.h"

#include "sve/model/predicate.h"
#include "sve/model/saturation.h"
#include "sve/model/vector.h"

using namespace model;

namespace {

constexpr int word_bits = 32, doubleword_bits = 64;

template <class E>
uint64_t pattern_count(uint64_t pattern, uint64_t multiplier, const CpuContext* context) {
  const uint64_t n = VecTrueILength(pattern, static_cast<int>(elements<E>(context)));
  return n + n * multiplier;
}

template <class E> uint64_t active_count(const PredV& predicate, const CpuContext* context) {
  uint64_t count = 0;
  const unsigned n = elements<E>(context);
  for (unsigned e = 0; e < n; e++)
    count += active<E>(predicate, e);
  return count;
}

// A 32-bit value as a scalar of the type's sign.
template <class E> uint64_t word(uint64_t x) {
  return is_unsigned<E> ? raw(static_cast<uint32_t>(x)) : raw(static_cast<int32_t>(x));
}

template <class E> uint64_t clamp(WideInt i) { return SatQ(i, esize<E>, is_unsigned<E>).value; }

}  // namespace

// A line is the operation, its types and the result in terms of count and, for a scalar, old or,
// for a vector, its element x.
#define PATTERN_SCALAR(operation, types, ...)                                                      \
  SVE_EACH(PATTERN_SCALAR_FUNCTION, operation, types, __VA_ARGS__)
#define PATTERN_SCALAR_FUNCTION(type, operation, ...)                                              \
  MODEL_DEFINE(type, operation, uint64_t, (uint64_t old, uint64_t pattern, uint64_t multiplier)) { \
    using E = model::type;                                                                         \
    const uint64_t count = pattern_count<E>(pattern, multiplier, context);                         \
    return __VA_ARGS__;                                                                            \
  }
#define ACTIVE_SCALAR(operation, types, ...)                                                       \
  SVE_EACH(ACTIVE_SCALAR_FUNCTION, operation, types, __VA_ARGS__)
#define ACTIVE_SCALAR_FUNCTION(type, operation, ...)                                               \
  MODEL_DEFINE(type, operation, uint64_t, (PredV pn, uint64_t old)) {                              \
    using E = model::type;                                                                         \
    const uint64_t count = active_count<E>(pn, context);                                           \
    return __VA_ARGS__;                                                                            \
  }
#define PATTERN_VECTOR(operation, types, ...)                                                      \
  SVE_EACH(PATTERN_VECTOR_FUNCTION, operation, types, __VA_ARGS__)
#define PATTERN_VECTOR_FUNCTION(type, operation, ...)                                              \
  MODEL_DEFINE(type, operation, VecV, (VecV old, uint64_t pattern, uint64_t multiplier)) {         \
    using E = model::type;                                                                         \
    const uint64_t count = pattern_count<E>(pattern, multiplier, context);                         \
    return map<E>(context, [&](unsigned e) {                                                       \
      const E x = get<E>(old, e);                                                                  \
      return static_cast<E>(__VA_ARGS__);                                                          \
    });                                                                                            \
  }
#define ACTIVE_VECTOR(operation, types, ...)                                                       \
  SVE_EACH(ACTIVE_VECTOR_FUNCTION, operation, types, __VA_ARGS__)
#define ACTIVE_VECTOR_FUNCTION(type, operation, ...)                                               \
  MODEL_DEFINE(type, operation, VecV, (PredV pn, VecV old)) {                                      \
    using E = model::type;                                                                         \
    const uint64_t count = active_count<E>(pn, context);                                           \
    return map<E>(context, [&](unsigned e) {                                                       \
      const E x = get<E>(old, e);                                                                  \
      return static_cast<E>(__VA_ARGS__);                                                          \
    });                                                                                            \
  }

// clang-format off
PATTERN_SCALAR(IncrVLSI, (U8, U16, U32, U64), old + count)
PATTERN_SCALAR(DecrVLSI, (U8, U16, U32, U64), old - count)
PATTERN_SCALAR(QIncrVL4SI, (S8, S16, S32, S64, U8, U16, U32, U64), word<E>(SatAdd(old, count, word_bits, is_unsigned<E>)))
PATTERN_SCALAR(QIncrVL8SI, (S8, S16, S32, S64, U8, U16, U32, U64), SatAdd(old, count, doubleword_bits, is_unsigned<E>))
PATTERN_SCALAR(QDecrVL4SI, (S8, S16, S32, S64, U8, U16, U32, U64), word<E>(SatSub(old, count, word_bits, is_unsigned<E>)))
PATTERN_SCALAR(QDecrVL8SI, (S8, S16, S32, S64, U8, U16, U32, U64), SatSub(old, count, doubleword_bits, is_unsigned<E>))

ACTIVE_SCALAR(IncrSCountPS, (U8, U16, U32, U64), old + count)
ACTIVE_SCALAR(DecrSCountPS, (U8, U16, U32, U64), old - count)
ACTIVE_SCALAR(QIncrSCount4PS, (S8, S16, S32, S64, U8, U16, U32, U64), word<E>(SatAdd(old, count, word_bits, is_unsigned<E>)))
ACTIVE_SCALAR(QIncrSCount8PS, (S8, S16, S32, S64, U8, U16, U32, U64), SatAdd(old, count, doubleword_bits, is_unsigned<E>))
ACTIVE_SCALAR(QDecrSCount4PS, (S8, S16, S32, S64, U8, U16, U32, U64), word<E>(SatSub(old, count, word_bits, is_unsigned<E>)))
ACTIVE_SCALAR(QDecrSCount8PS, (S8, S16, S32, S64, U8, U16, U32, U64), SatSub(old, count, doubleword_bits, is_unsigned<E>))

PATTERN_VECTOR(IncrVLVI, (U16, U32, U64), raw(x) + count)
PATTERN_VECTOR(DecrVLVI, (U16, U32, U64), raw(x) - count)
PATTERN_VECTOR(QIncrVLVI, (S16, S32, S64, U16, U32, U64), clamp<E>(exact(x) + UInt(count, 64)))
PATTERN_VECTOR(QDecrVLVI, (S16, S32, S64, U16, U32, U64), clamp<E>(exact(x) - UInt(count, 64)))

ACTIVE_VECTOR(IncrCountPV, (U16, U32, U64), raw(x) + count)
ACTIVE_VECTOR(DecrCountPV, (U16, U32, U64), raw(x) - count)
ACTIVE_VECTOR(QIncrCountPV, (S16, S32, S64, U16, U32, U64), SatAdd(raw(x), count, esize<E>, is_unsigned<E>))
ACTIVE_VECTOR(QDecrCountPV, (S16, S32, S64, U16, U32, U64), SatSub(raw(x), count, esize<E>, is_unsigned<E>))
// clang-format on

#define COUNT_PATTERN(type, operation, ...)                                                        \
  MODEL_DEFINE(type, operation, uint64_t, (uint64_t pattern, uint64_t multiplier)) {               \
    return pattern_count<model::type>(pattern, multiplier, context);                               \
  }
#define COUNT_ACTIVE(type, operation, ...)                                                         \
  MODEL_DEFINE(type, operation, uint64_t, (PredV pg, PredV pn)) {                                  \
    uint64_t count = 0;                                                                            \
    for (unsigned e = 0; e < elements<model::type>(context); e++)                                  \
      count += active<model::type>(pg, e) && active<model::type>(pn, e);                           \
    return count;                                                                                  \
  }
#define INDEX(type, operation, ...)                                                                \
  MODEL_DEFINE(type, operation, VecV, (uint64_t base, uint64_t step)) {                            \
    using E = model::type;                                                                         \
    return map<E>(context, [&](unsigned e) { return static_cast<E>(base + e * step); });           \
  }

SVE_EACH(COUNT_PATTERN, CountVLSI, (U8, U16, U32, U64), )
SVE_EACH(COUNT_ACTIVE, SCountP, (U8, U16, U32, U64), )
SVE_EACH(INDEX, IndexII, (S8, S16, S32, S64), )
SVE_EACH(INDEX, IndexIS, (S8, S16, S32, S64), )
SVE_EACH(INDEX, IndexSI, (S8, S16, S32, S64), )
SVE_EACH(INDEX, IndexSS, (S8, S16, S32, S64), )

uint64_t VecS64VLX(uint64_t multiplier, CpuContext* context) {
  return vector_bytes(context) * multiplier;
}

uint64_t VecS64AddVLX(uint64_t x, uint64_t multiplier, CpuContext* context) {
  return x + vector_bytes(context) * multiplier;
}

uint64_t VecS64AddPLX(uint64_t x, uint64_t multiplier, CpuContext* context) {
  return x + context->vl * multiplier;
}
