// Dot products of quarter-width elements.
#include "sve/model/family.h"
#include "sve/model/integer.h"
#include "sve/model/vector.h"

using namespace model;

namespace {

constexpr unsigned products = 4;  // for each element of the result

template <class E> struct Quarter;
template <> struct Quarter<int32_t> { using type = int8_t; };
template <> struct Quarter<uint32_t> { using type = uint8_t; };
template <> struct Quarter<int64_t> { using type = int16_t; };
template <> struct Quarter<uint64_t> { using type = uint16_t; };

// Element e of the result, from the second source's group of products at element with.
template <class E>
E dot(const VecV& zn, const VecV& zm, const VecV& old, unsigned e, unsigned with) {
  using Q = typename Quarter<E>::type;
  uint64_t sum = 0;
  for (unsigned j = 0; j < products; j++)
    sum += raw(get<Q>(zn, products * e + j)) * raw(get<Q>(zm, products * with + j));
  return static_cast<E>(sum + raw(get<E>(old, e)));
}

// The first element of e's 128-bit segment.
template <class E> unsigned segment_start(unsigned e) {
  return e & ~(segment_bytes / sizeof(E) - 1);
}

}  // namespace

#define DOT(type, operation, ...)                                                                  \
  MODEL_DEFINE(type, operation, VecV, (VecV zn, VecV zm, VecV old)) {                              \
    using E = model::type;                                                                         \
    return map<E>(context, [&](unsigned e) { return dot<E>(zn, zm, old, e, e); });                 \
  }
#define DOT_INDEXED(type, operation, ...)                                                          \
  MODEL_DEFINE(type, operation, VecV, (VecV zn, VecV zm, VecV old, uint64_t index)) {              \
    using E = model::type;                                                                         \
    return map<E>(context, [&](unsigned e) {                                                       \
      return dot<E>(zn, zm, old, e, segment_start<E>(e) + static_cast<unsigned>(index));           \
    });                                                                                            \
  }

SVE_EACH(DOT, DotVVVX, (S32, U32, S64, U64), )
SVE_EACH(DOT_INDEXED, DotVVVIX, (S32, U32, S64, U64), )
