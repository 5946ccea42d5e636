// Integer reductions of the active elements, in ascending order.
#include <limits>

#include "sve/model/family.h"
#include "sve/model/integer.h"
#include "sve/model/vector.h"
#include "sve/model/wide_integer.h"

using namespace model;

namespace {

template <class E, class Operation>
uint64_t fold(const PredV& pg, const VecV& zn, const CpuContext* context, uint64_t start,
              Operation operation) {
  const unsigned n = elements<E>(context);
  for (unsigned e = 0; e < n; e++)
    if (active<E>(pg, e))
      start = operation(start, raw(get<E>(zn, e)));
  return start;
}

}  // namespace

// The operation, its types, the start, and the step in x, what there is so far, and y, an element.
#define REDUCTION(operation, types, ...) SVE_EACH(REDUCTION_FUNCTION, operation, types, __VA_ARGS__)
#define REDUCTION_FUNCTION(type, operation, start, ...)                                            \
  MODEL_DEFINE(type, operation, uint64_t, (PredV pg, VecV zn)) {                                   \
    using E = model::type;                                                                         \
    return fold<E>(pg, zn, context, raw(start),                                                    \
                   [](uint64_t x, uint64_t y) { return __VA_ARGS__; });                            \
  }

// clang-format off
REDUCTION(AddReduceV, (S8, S16, S32, U8, U16, U32, U64), 0, x + y)
REDUCTION(AndReduceV, (U8, U16, U32, U64), std::numeric_limits<E>::max(), x & y)
REDUCTION(OrReduceV, (U8, U16, U32, U64), 0, x | y)
REDUCTION(XorReduceV, (U8, U16, U32, U64), 0, x ^ y)
REDUCTION(MaxReduceV, (S8, S16, S32, S64, U8, U16, U32, U64), std::numeric_limits<E>::min(), Max(x, y, esize<E>, is_unsigned<E>))
REDUCTION(MinReduceV, (S8, S16, S32, S64, U8, U16, U32, U64), std::numeric_limits<E>::max(), Min(x, y, esize<E>, is_unsigned<E>))
// clang-format on
