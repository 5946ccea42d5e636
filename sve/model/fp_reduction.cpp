// Floating-point reductions.
#include <array>
#include <bit>

#include "sve/fp/add_mul.h"
#include "sve/fp/compare.h"
#include "sve/model/floating_point.h"
#include "sve/model/fp_element.h"

using namespace model;

namespace {

template <class E> constexpr unsigned most_elements = longest_vl * 64 / esize<E>;

// Adjacent elements pair first, the lower one as first operand, until one is left. Inactive
// elements, and those up to the next power of two, count as the identity: they are operands, too.
template <class E, class Operation>
E tree(const PredV& pg, const VecV& zn, CpuContext* context, E identity, Operation operation) {
  std::array<E, most_elements<E>> nodes;
  const unsigned n = elements<E>(context);
  unsigned width = std::bit_ceil(n);
  for (unsigned e = 0; e < width; e++)
    nodes[e] = e < n && active<E>(pg, e) ? get<E>(zn, e) : identity;
  for (; width > 1; width /= 2)
    for (unsigned i = 0; i < width / 2; i++)
      nodes[i] = step(
          context, [&](FPSCR& fpscr) { return operation(nodes[2 * i], nodes[2 * i + 1], fpscr); });
  return nodes[0];
}

template <class E> constexpr E minus_infinity = FPFormat<E>::with_sign(1, FPFormat<E>::infinity);

}  // namespace

// The operation, its identity and the expression of a and b.
#define FP_REDUCTION(operation, identity, ...)                                                     \
  SVE_EACH(FP_REDUCTION_FUNCTION, operation, (F16, F32, D64), identity, __VA_ARGS__)
#define FP_REDUCTION_FUNCTION(type, operation, identity, ...)                                      \
  MODEL_DEFINE(type, operation, uint64_t, (PredV pg, VecV zn)) {                                   \
    using E = model::type;                                                                         \
    return tree<E>(pg, zn, context, identity, [](E a, E b, FPSCR& fpscr) { return __VA_ARGS__; }); \
  }

FP_REDUCTION(AddReduceFV, 0, FPAdd(a, b, fpscr))
FP_REDUCTION(MaxReduceFV, minus_infinity<E>, FPMax(a, b, fpscr))
FP_REDUCTION(MinReduceFV, FPFormat<E>::infinity, FPMin(a, b, fpscr))
FP_REDUCTION(MaxNumReduceFV, FPFormat<E>::default_nan, FPMaxNum(a, b, fpscr))
FP_REDUCTION(MinNumReduceFV, FPFormat<E>::default_nan, FPMinNum(a, b, fpscr))

// Strictly in order, behind the scalar. Inactive elements leave no trace.
#define FP_ORDERED_SUM(type, operation, ...)                                                       \
  MODEL_DEFINE(type, operation, uint64_t, (PredV pg, uint64_t old, VecV zn)) {                     \
    using E = model::type;                                                                         \
    auto sum = static_cast<E>(old);                                                                \
    for (unsigned e = 0; e < elements<E>(context); e++)                                            \
      if (active<E>(pg, e))                                                                        \
        sum = step(context, [&](FPSCR& fpscr) { return FPAdd(sum, get<E>(zn, e), fpscr); });       \
    return sum;                                                                                    \
  }
SVE_EACH(FP_ORDERED_SUM, AddReduceAV, (F16, F32, D64), )
