// Orders of elements, of vectors and of predicates.
#include "sve/model/permute.h"

#include "sve/model/predicate.h"
#include "sve/model/vector.h"

using namespace model;

namespace {

// Element e of the result is number choose(e, n) of both sources' elements, the first's first.
template <class E, class Choose>
VecV rearrange(const VecV& zn, const VecV& zm, const CpuContext* context, Choose choose) {
  const unsigned n = elements<E>(context);
  return map<E>(context, [&](unsigned e) {
    const unsigned source = choose(e, n);
    return get<E>(source < n ? zn : zm, source % n);
  });
}

template <class E, class Choose>
PredV rearrange(const PredV& pn, const PredV& pm, const CpuContext* context, Choose choose) {
  PredV result = {};
  const unsigned n = elements<E>(context);
  for (unsigned e = 0; e < n; e++) {
    const unsigned source = choose(e, n);
    set_group<E>(result, e, group<E>(source < n ? pn : pm, source % n));
  }
  return result;
}

unsigned reversed(unsigned e, unsigned n) { return n - 1 - e; }

// Elements from start on, taken at half the width and extended.
template <class E> VecV unpack(const VecV& zn, unsigned start, const CpuContext* context) {
  using Signed = std::conditional_t<sizeof(E) == 2, int8_t,
                                    std::conditional_t<sizeof(E) == 4, int16_t, int32_t>>;
  using Half = std::conditional_t<is_unsigned<E>, std::make_unsigned_t<Signed>, Signed>;
  return map<E>(context, [&](unsigned e) { return static_cast<E>(get<Half>(zn, start + e)); });
}

PredV unpack(const PredV& pn, unsigned start, const CpuContext* context) {
  return map_bits<uint16_t>(context, [&](unsigned e) { return bit(pn, start + e); });
}

template <class E>
VecV splice(const PredV& pg, const VecV& first, const VecV& second, CpuContext* context) {
  VecV result;
  const unsigned n = elements<E>(context);
  const int last = FindLastActive(pg, esize<E>, context);
  unsigned filled = 0;
  bool started = false;
  for (int i = 0; i <= last; i++) {
    const auto e = static_cast<unsigned>(i);
    started = started || active<E>(pg, e);
    if (started)
      set<E>(result, filled++, get<E>(first, e));
  }
  for (unsigned e = 0; filled < n; e++)
    set<E>(result, filled++, get<E>(second, e));
  return result;
}

template <class E> VecV compress(const PredV& pg, const VecV& zn, const CpuContext* context) {
  VecV result = {};
  unsigned filled = 0;
  for (unsigned e = 0; e < elements<E>(context); e++)
    if (active<E>(pg, e))
      set<E>(result, filled++, get<E>(zn, e));
  return result;
}

}  // namespace

// The operation of vectors and of predicates, and the source of element e of n.
#define REARRANGEMENT(operation, ...)                                                              \
  SVE_EACH(REARRANGE_VECTORS, operation##VV, (U8, U16, U32, U64), __VA_ARGS__)                     \
  SVE_EACH(REARRANGE_PREDICATES, operation##PP, (P8, P16, P32, P64), __VA_ARGS__)
#define REARRANGE_VECTORS(type, operation, ...)                                                    \
  MODEL_DEFINE(type, operation, VecV, (VecV zn, VecV zm)) {                                        \
    return rearrange<model::type>(                                                                 \
        zn, zm, context,                                                                           \
        []([[maybe_unused]] unsigned e, [[maybe_unused]] unsigned n) { return __VA_ARGS__; });     \
  }
#define REARRANGE_PREDICATES(type, operation, ...)                                                 \
  MODEL_DEFINE(type, operation, PredV, (PredV pn, PredV pm)) {                                     \
    return rearrange<model::type>(                                                                 \
        pn, pm, context,                                                                           \
        []([[maybe_unused]] unsigned e, [[maybe_unused]] unsigned n) { return __VA_ARGS__; });     \
  }

REARRANGEMENT(Zip1, e % 2 * n + e / 2)
REARRANGEMENT(Zip2, e % 2 * n + n / 2 + e / 2)
REARRANGEMENT(Uzp1, 2 * e)
REARRANGEMENT(Uzp2, 2 * e + 1)
REARRANGEMENT(Trn1, e % 2 == 0 ? e : n + e - 1)
REARRANGEMENT(Trn2, e % 2 == 0 ? e + 1 : n + e)

#define REVERSE_VECTOR(type, operation, ...)                                                       \
  MODEL_DEFINE(type, operation, VecV, (VecV zn)) {                                                 \
    return rearrange<model::type>(zn, zn, context, reversed);                                      \
  }
#define REVERSE_PREDICATE(type, operation, ...)                                                    \
  MODEL_DEFINE(type, operation, PredV, (PredV pn)) {                                               \
    return rearrange<model::type>(pn, pn, context, reversed);                                      \
  }
#define UNPACK_LOW(type, operation, ...)                                                           \
  MODEL_DEFINE(type, operation, VecV, (VecV zn)) { return unpack<model::type>(zn, 0, context); }
#define UNPACK_HIGH(type, operation, ...)                                                          \
  MODEL_DEFINE(type, operation, VecV, (VecV zn)) {                                                 \
    return unpack<model::type>(zn, elements<model::type>(context), context);                       \
  }
// An index that is not below the element count gives 0.
#define TABLE(type, operation, ...)                                                                \
  MODEL_DEFINE(type, operation, VecV, (VecV zn, VecV zm)) {                                        \
    using E = model::type;                                                                         \
    return map<E>(context, [&](unsigned e) {                                                       \
      const E index = get<E>(zm, e);                                                               \
      return index < elements<E>(context) ? get<E>(zn, static_cast<unsigned>(index)) : E{0};       \
    });                                                                                            \
  }
#define SPLICE(type, operation, ...)                                                               \
  MODEL_DEFINE(type, operation, VecV, (PredV pg, VecV old, VecV zn)) {                             \
    return splice<model::type>(pg, old, zn, context);                                              \
  }
#define COMPRESS(type, operation, ...)                                                             \
  MODEL_DEFINE(type, operation, VecV, (PredV pg, VecV zn)) {                                       \
    return compress<model::type>(pg, zn, context);                                                 \
  }

SVE_EACH(REVERSE_VECTOR, ReverseV, (U8, U16, U32, U64), )
SVE_EACH(REVERSE_PREDICATE, ReverseP, (P8, P16, P32, P64), )
SVE_EACH(UNPACK_LOW, UnpackLoV, (S16, S32, S64, U16, U32, U64), )
SVE_EACH(UNPACK_HIGH, UnpackHiV, (S16, S32, S64, U16, U32, U64), )
SVE_EACH(TABLE, TblVV, (U8, U16, U32, U64), )
SVE_EACH(SPLICE, SpliceVV, (U8, U16, U32, U64), )
SVE_EACH(COMPRESS, CompressVV, (U32, U64), )

PredV VecPUnpackLoP(PredV pn, CpuContext* context) { return unpack(pn, 0, context); }

PredV VecPUnpackHiP(PredV pn, CpuContext* context) {
  return unpack(pn, vector_bytes(context) / 2, context);
}

// A position beyond the vector counts as 0.
VecV VecU8SlideVI(VecV old, VecV zm, uint64_t position, CpuContext* context) {
  const unsigned start = position < vector_bytes(context) ? static_cast<unsigned>(position) : 0;
  return rearrange<uint8_t>(old, zm, context, [&](unsigned e, unsigned) { return start + e; });
}
