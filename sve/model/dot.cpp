// Dot products of quarter-width elements.
#include "sve/model/family.h"
#include "sve/model/integer.h"
#include "sve/model/vector.h"

using namespace model;

namespace {

constexpr unsigned products = 4;  // for each element of the result

// The quarter of that number of an element, extended by the element's sign.
template <class E> E quarter(E x, unsigned j) {
  constexpr unsigned width = esize<E> / products;
  return static_cast<E>(raw(x) << (esize<E> - (j + 1) * width)) >> (esize<E> - width);
}

// Element e of the result, from the second source's group of products at element with.
template <class E>
E dot(const VecV& zn, const VecV& zm, const VecV& old, unsigned e, unsigned with) {
  const E n = get<E>(zn, e), m = get<E>(zm, with);
  E sum = get<E>(old, e);
  for (unsigned j = 0; j < products; j++)  // modulo the element
    sum = static_cast<E>(raw(sum) + raw(quarter(n, j)) * raw(quarter(m, j)));
  return sum;
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
