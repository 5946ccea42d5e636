// The element step of floating-point families, and their definitions.
//
// A table line is the operation, its types and the expression of the result element. In the
// expression fpscr is the element's control and status word, which goes to the library.
#pragma once

#include "sve/fp/format.h"
#include "sve/model/family.h"
#include "sve/model/vector.h"

namespace model {

// N, Z, C, V, QC and the six cumulative flags: what FPSR has of a control and status word.
inline constexpr uint32_t fpsr_bits = 0xf800009f;

// Each element starts with the controls alone, and adds its flags. Nothing is ever cleared.
template <class Operation> inline auto step(CpuContext* context, Operation operation) {
  FPSCR fpscr = context->fpcr;
  const auto result = operation(fpscr);
  context->fpsr = (context->fpsr | fpscr) & fpsr_bits;
  return result;
}

// Conversions know neither the alternative half precision nor flushing of half precision.
template <class Operation> inline auto conversion_step(CpuContext* context, Operation operation) {
  FPSCR fpscr = context->fpcr & ~(FPSCR_FZ16 | FPSCR_AHP);
  const auto result = operation(fpscr);
  context->fpsr = (context->fpsr | fpscr) & fpsr_bits;
  return result;
}

template <class E> constexpr E magnitude(E x) { return static_cast<E>(x & ~FPFormat<E>::sign_bit); }

// The element of that number in e's 128-bit segment.
template <class E> inline E get_indexed(const VecV& vector, unsigned e, uint64_t index) {
  const unsigned start = e & ~(segment_bytes / static_cast<unsigned>(sizeof(E)) - 1);
  return get<E>(vector, start + static_cast<unsigned>(index));
}

}  // namespace model

// Merging: sources a, the old destination, and b; or one source b.
#define FP_MERGING(operation, types, ...)                                                          \
  SVE_EACH(FP_MERGING_FUNCTION, operation, types, __VA_ARGS__)
#define FP_MERGING_FUNCTION(type, operation, ...)                                                  \
  MODEL_DEFINE(type, operation, VecV, (VecV old, PredV pg, VecV zn)) {                             \
    using E = model::type;                                                                         \
    return merge<E>(old, pg, context, [&](unsigned e) {                                            \
      [[maybe_unused]] const E a = get<E>(old, e), b = get<E>(zn, e);                              \
      return step(context, [&](FPSCR& fpscr) -> E { return __VA_ARGS__; });                        \
    });                                                                                            \
  }

// Merging: sources a, the old destination, b and c.
#define FP_FUSED(operation, types, ...) SVE_EACH(FP_FUSED_FUNCTION, operation, types, __VA_ARGS__)
#define FP_FUSED_FUNCTION(type, operation, ...)                                                    \
  MODEL_DEFINE(type, operation, VecV, (VecV old, PredV pg, VecV zn, VecV zm)) {                    \
    using E = model::type;                                                                         \
    return merge<E>(old, pg, context, [&](unsigned e) {                                            \
      const E a = get<E>(old, e), b = get<E>(zn, e), c = get<E>(zm, e);                            \
      return step(context, [&](FPSCR& fpscr) -> E { return __VA_ARGS__; });                        \
    });                                                                                            \
  }

// Without predicate: one source x, or sources a and b.
#define FP_PLAIN_UNARY(operation, types, ...)                                                      \
  SVE_EACH(FP_PLAIN_UNARY_FUNCTION, operation, types, __VA_ARGS__)
#define FP_PLAIN_UNARY_FUNCTION(type, operation, ...)                                              \
  MODEL_DEFINE(type, operation, VecV, (VecV zn)) {                                                 \
    using E = model::type;                                                                         \
    return map<E>(context, [&](unsigned e) {                                                       \
      const E x = get<E>(zn, e);                                                                   \
      return step(context, [&](FPSCR& fpscr) -> E { return __VA_ARGS__; });                        \
    });                                                                                            \
  }
#define FP_PLAIN_BINARY(operation, types, ...)                                                     \
  SVE_EACH(FP_PLAIN_BINARY_FUNCTION, operation, types, __VA_ARGS__)
#define FP_PLAIN_BINARY_FUNCTION(type, operation, ...)                                             \
  MODEL_DEFINE(type, operation, VecV, (VecV zn, VecV zm)) {                                        \
    using E = model::type;                                                                         \
    return map<E>(context, [&](unsigned e) {                                                       \
      const E a = get<E>(zn, e), b = get<E>(zm, e);                                                \
      return step(context, [&](FPSCR& fpscr) -> E { return __VA_ARGS__; });                        \
    });                                                                                            \
  }
