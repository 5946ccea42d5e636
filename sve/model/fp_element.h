// The element step of floating-point families, and their definitions.
//
// A table line is the operation, its types and the expression of the result element. In the
// expression fpscr is the element's control and status word, which goes to the library. At the
// vector length of this build the same expression works on whole vectors, if the host's unit has
// all that it calls; the library then does what the unit cannot.
#pragma once

#include "sve/fp/format.h"
#include "sve/model/family.h"
#include "sve/model/flags.h"
#include "sve/model/vector.h"

#ifdef MODEL_OF_BUILT_LENGTH
#include "sve/model/host_lanes.h"
#endif

namespace model {

// Each element starts with the controls alone, and adds its flags. Nothing is ever cleared.
template <class Operation> inline auto step(CpuContext* context, Operation operation) {
  FPSCR fpscr = context->fpcr & ~fpsr_bits;
  const auto result = operation(fpscr);
  context->fpsr = (context->fpsr | fpscr) & fpsr_bits;
  return result;
}

// Conversions know neither the alternative half precision nor flushing of half precision.
template <class Operation> inline auto conversion_step(CpuContext* context, Operation operation) {
  FPSCR fpscr = context->fpcr & ~(fpsr_bits | FPSCR_FZ16 | FPSCR_AHP);
  const auto result = operation(fpscr);
  context->fpsr = (context->fpsr | fpscr) & fpsr_bits;
  return result;
}

template <class E>
requires std::is_integral_v<E>
constexpr E magnitude(E x) { return static_cast<E>(x & ~FPFormat<E>::sign_bit); }

// The element of that number in each element's 128-bit segment, for all elements.
template <class E>
inline VecV spread_indexed(const VecV& vector, uint64_t index, const CpuContext* context) {
  constexpr unsigned in_segment = segment_bytes / sizeof(E);
  return map<E>(context, [&](unsigned e) {
    return get<E>(vector, (e & ~(in_segment - 1)) + static_cast<unsigned>(index));
  });
}

// The operation with the elements e of the sources.
template <class E, class Operation, class... Sources>
inline auto library_step(CpuContext* context, unsigned e, Operation operation,
                         const Sources&... sources) {
  return step(context, [&](FPSCR& fpscr) { return operation(get<E>(sources, e)..., fpscr); });
}

// The operation on each element, on each active one, and on each active one as a relation. Not
// inline: they keep their registers out of the way of those who take the host's road.
template <class E, class Operation, class... Sources>
[[gnu::noinline]] VecV library_map(CpuContext* context, Operation operation, Sources... sources) {
  return map<E>(
      context, [&](unsigned e) -> E { return library_step<E>(context, e, operation, sources...); });
}
template <class E, class Operation, class... Sources>
[[gnu::noinline]] VecV library_merge(VecV old, PredV pg, CpuContext* context, Operation operation,
                                     Sources... sources) {
  return merge<E>(old, pg, context, [&](unsigned e) -> E {
    return library_step<E>(context, e, operation, sources...);
  });
}
template <class E, class Operation, class... Sources>
[[gnu::noinline]] PredV library_compare(PredV pg, CpuContext* context, Operation operation,
                                        Sources... sources) {
  return map_active_bits<E>(pg, context, [&](unsigned e) -> bool {
    return library_step<E>(context, e, operation, sources...);
  });
}

#ifdef MODEL_OF_BUILT_LENGTH

template <class E, class Operation, class... Sources>
inline VecV fp_map(CpuContext* context, Operation operation, Sources... sources) {
  if constexpr (on_host<E, Operation, Sources...>)
    if (host_agrees<E>(context, elements_of<E>(sources)...)) {
      HostUnit unit(context);
      return value_of<E>(on_host_unit<E>(unit, operation, elements_of<E>(sources)...));
    }
  return library_map<E>(context, operation, sources...);
}

// On the host, inactive elements of the sources are harmless ones.
template <class E, class Operation, class... Sources>
inline VecV fp_merge(VecV old, PredV pg, CpuContext* context, Operation operation,
                     Sources... sources) {
  if constexpr (on_host<E, Operation, Sources...>) {
    const vector<E> mask = active_mask<E>(pg);
    const auto operand = [&](const VecV& source) {
      return select<E>(mask, elements_of<E>(source), all_harmless<E>());
    };
    if (host_agrees<E>(context, operand(sources)...)) {
      HostUnit unit(context);
      return value_of<E>(select<E>(mask, on_host_unit<E>(unit, operation, operand(sources)...),
                                   elements_of<E>(old)));
    }
  }
  return library_merge<E>(old, pg, context, operation, sources...);
}

template <class E, class Operation, class... Sources>
inline PredV fp_compare(PredV pg, CpuContext* context, Operation operation, Sources... sources) {
  if constexpr (on_host<E, Operation, Sources...>) {
    const vector<E> mask = active_mask<E>(pg);
    const auto operand = [&](const VecV& source) {
      return select<E>(mask, elements_of<E>(source), all_harmless<E>());
    };
    if (host_agrees<E>(context, operand(sources)...)) {
      HostUnit unit(context);
      const vector<E> relation = on_host_unit<E>(unit, operation, operand(sources)...);
      return {reinterpret_cast<PredV::Words>(relation & mask & E{1})};
    }
  }
  return library_compare<E>(pg, context, operation, sources...);
}

#else

template <class E, class Operation, class... Sources>
inline VecV fp_map(CpuContext* context, Operation operation, const Sources&... sources) {
  return library_map<E>(context, operation, sources...);
}
template <class E, class Operation, class... Sources>
inline VecV fp_merge(const VecV& old, const PredV& pg, CpuContext* context, Operation operation,
                     const Sources&... sources) {
  return library_merge<E>(old, pg, context, operation, sources...);
}
template <class E, class Operation, class... Sources>
inline PredV fp_compare(const PredV& pg, CpuContext* context, Operation operation,
                        const Sources&... sources) {
  return library_compare<E>(pg, context, operation, sources...);
}

#endif

}  // namespace model

// The expression of one to three elements, or operands of whole vectors.
#define FP_OF_1(...) [](auto x, auto& fpscr) -> decltype(__VA_ARGS__) { return __VA_ARGS__; }
#define FP_OF_2(...)                                                                               \
  [](auto a, auto b, auto& fpscr) -> decltype(__VA_ARGS__) { return __VA_ARGS__; }
#define FP_OF_3(...)                                                                               \
  [](auto a, auto b, auto c, auto& fpscr) -> decltype(__VA_ARGS__) { return __VA_ARGS__; }

// Merging: sources a, the old destination, and b; or one source x.
#define FP_MERGING(operation, types, ...)                                                          \
  SVE_EACH(FP_MERGING_FUNCTION, operation, types, __VA_ARGS__)
#define FP_MERGING_FUNCTION(type, operation, ...)                                                  \
  MODEL_DEFINE(type, operation, VecV, (VecV old, PredV pg, VecV zn)) {                             \
    return fp_merge<model::type>(old, pg, context, FP_OF_2(__VA_ARGS__), old, zn);                 \
  }
#define FP_MERGING_UNARY(operation, types, ...)                                                    \
  SVE_EACH(FP_MERGING_UNARY_FUNCTION, operation, types, __VA_ARGS__)
#define FP_MERGING_UNARY_FUNCTION(type, operation, ...)                                            \
  MODEL_DEFINE(type, operation, VecV, (VecV old, PredV pg, VecV zn)) {                             \
    return fp_merge<model::type>(old, pg, context, FP_OF_1(__VA_ARGS__), zn);                      \
  }

// Merging: sources a, the old destination, b and c.
#define FP_FUSED(operation, types, ...) SVE_EACH(FP_FUSED_FUNCTION, operation, types, __VA_ARGS__)
#define FP_FUSED_FUNCTION(type, operation, ...)                                                    \
  MODEL_DEFINE(type, operation, VecV, (VecV old, PredV pg, VecV zn, VecV zm)) {                    \
    return fp_merge<model::type>(old, pg, context, FP_OF_3(__VA_ARGS__), old, zn, zm);             \
  }

// Without predicate: one source x, or sources a and b.
#define FP_PLAIN_UNARY(operation, types, ...)                                                      \
  SVE_EACH(FP_PLAIN_UNARY_FUNCTION, operation, types, __VA_ARGS__)
#define FP_PLAIN_UNARY_FUNCTION(type, operation, ...)                                              \
  MODEL_DEFINE(type, operation, VecV, (VecV zn)) {                                                 \
    return fp_map<model::type>(context, FP_OF_1(__VA_ARGS__), zn);                                 \
  }
#define FP_PLAIN_BINARY(operation, types, ...)                                                     \
  SVE_EACH(FP_PLAIN_BINARY_FUNCTION, operation, types, __VA_ARGS__)
#define FP_PLAIN_BINARY_FUNCTION(type, operation, ...)                                             \
  MODEL_DEFINE(type, operation, VecV, (VecV zn, VecV zm)) {                                        \
    return fp_map<model::type>(context, FP_OF_2(__VA_ARGS__), zn, zm);                             \
  }
