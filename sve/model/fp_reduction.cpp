// Floating-point reductions.
#include <array>
#include <bit>

#include "sve/fp/add_mul.h"
#include "sve/fp/compare.h"
#include "sve/model/floating_point.h"
#include "sve/model/fp_element.h"

using namespace model;

namespace {

// Adjacent elements pair first, the lower one as first operand, until one is left. Inactive
// elements, and those up to the next power of two, count as the identity: they are operands, too.
template <class E, class Operation>
uint64_t library_tree(PredV pg, VecV zn, CpuContext* context, E identity, Operation operation) {
  std::array<E, longest_vl * 64 / esize<E>> nodes;
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

// Strictly in order, behind the scalar. Inactive elements leave no trace.
template <class E, class Operation>
uint64_t library_sum(PredV pg, E sum, VecV zn, CpuContext* context, Operation add) {
  for (unsigned e = 0; e < elements<E>(context); e++)
    if (active<E>(pg, e))
      sum = step(context, [&](FPSCR& fpscr) { return add(sum, get<E>(zn, e), fpscr); });
  return sum;
}

#ifdef MODEL_OF_BUILT_LENGTH

// Every second element, from the first or the second on, in the low half, and harmless ones above.
template <class E, unsigned first, size_t... i>
vector<E> every_second(vector<E> from, std::index_sequence<i...>) {
  constexpr size_t n = sizeof...(i);
  return __builtin_shufflevector(from, all_harmless<E>(), (i < n / 2 ? 2 * i + first : n + i)...);
}

// Above the nodes of a level stand sums or extremes of harmless ones, which are harmless, too.
template <class E, class Operation>
uint64_t tree(PredV pg, VecV zn, CpuContext* context, E identity, Operation operation) {
  vector<E> nodes = select<E>(active_mask<E>(pg), elements_of<E>(zn), vector<E>{} + identity);
  if (!host_agrees<E>(context, nodes))
    return library_tree<E>(pg, zn, context, identity, operation);
  constexpr auto indices = std::make_index_sequence<sizeof(VecV) / sizeof(E)>{};
  HostUnit unit(context);
  for (size_t width = indices.size(); width > 1; width /= 2)
    nodes = on_host_unit<E>(unit, operation, every_second<E, 0>(nodes, indices),
                            every_second<E, 1>(nodes, indices));
  return nodes[0];
}

template <class E, class Operation>
uint64_t ordered_sum(PredV pg, E old, VecV zn, CpuContext* context, Operation add) {
  const auto lowest = [](E x) {
    vector<E> lanes = all_harmless<E>();
    lanes[0] = x;
    return lanes;
  };
  const vector<E> elements = select<E>(active_mask<E>(pg), elements_of<E>(zn), all_harmless<E>());
  if (!host_agrees<E>(context, elements, lowest(old)))
    return library_sum<E>(pg, old, zn, context, add);
  HostUnit unit(context);
  vector<E> sum = lowest(old);
  for (unsigned e = 0; e < sizeof(VecV) / sizeof(E); e++)
    if (active<E>(pg, e))
      sum = on_host_unit<E>(unit, add, lowest(sum[0]), lowest(elements[e]));
  return sum[0];
}

#else

template <class E, class Operation>
uint64_t tree(const PredV& pg, const VecV& zn, CpuContext* context, E identity,
              Operation operation) {
  return library_tree<E>(pg, zn, context, identity, operation);
}
template <class E, class Operation>
uint64_t ordered_sum(const PredV& pg, E old, const VecV& zn, CpuContext* context, Operation add) {
  return library_sum<E>(pg, old, zn, context, add);
}

#endif

template <class E> constexpr E minus_infinity = FPFormat<E>::with_sign(1, FPFormat<E>::infinity);

}  // namespace

// The operation, its identity and the expression of a and b.
#define FP_REDUCTION(operation, identity, ...)                                                     \
  SVE_EACH(FP_REDUCTION_FUNCTION, operation, (F16, F32, D64), identity, __VA_ARGS__)
#define FP_REDUCTION_FUNCTION(type, operation, identity, ...)                                      \
  MODEL_DEFINE(type, operation, uint64_t, (PredV pg, VecV zn)) {                                   \
    using E = model::type;                                                                         \
    return tree<E>(pg, zn, context, identity, FP_OF_2(__VA_ARGS__));                               \
  }

FP_REDUCTION(AddReduceFV, 0, FPAdd(a, b, fpscr))
FP_REDUCTION(MaxReduceFV, minus_infinity<E>, FPMax(a, b, fpscr))
FP_REDUCTION(MinReduceFV, FPFormat<E>::infinity, FPMin(a, b, fpscr))
FP_REDUCTION(MaxNumReduceFV, FPFormat<E>::default_nan, FPMaxNum(a, b, fpscr))
FP_REDUCTION(MinNumReduceFV, FPFormat<E>::default_nan, FPMinNum(a, b, fpscr))

#define FP_ORDERED_SUM(type, operation, ...)                                                       \
  MODEL_DEFINE(type, operation, uint64_t, (PredV pg, uint64_t old, VecV zn)) {                     \
    using E = model::type;                                                                         \
    return ordered_sum<E>(pg, static_cast<E>(old), zn, context, FP_OF_2(FPAdd(a, b, fpscr)));      \
  }
SVE_EACH(FP_ORDERED_SUM, AddReduceAV, (F16, F32, D64), )
