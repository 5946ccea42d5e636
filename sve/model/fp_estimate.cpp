// Estimates, the steps that refine them, and the trigonometric and exponential accelerators.
#include "sve/fp/estimate.h"

#include "sve/fp/accelerator.h"
#include "sve/fp/compare.h"
#include "sve/model/element_wise.h"
#include "sve/model/floating_point.h"
#include "sve/model/fp_element.h"

using namespace model;

namespace {

// One or x by bit 0 of selector, negated by bit 1. Bits alone: no value is special.
template <class E> E select_coefficient(E x, E selector) {
  const E chosen = (selector & 1) != 0 ? FPFormat<E>::one : x;
  return (selector & 2) != 0 ? FPNeg(chosen) : chosen;
}

}  // namespace

// clang-format off
FP_PLAIN_UNARY(RecpEV, (F16, F32, D64), FPRecipEstimate(x, fpscr))
FP_PLAIN_UNARY(RSqrtEV, (F16, F32, D64), FPRSqrtEstimate(x, fpscr))
FP_PLAIN_BINARY(RecpSVV, (F16, F32, D64), FPRecipStepFused(a, b, fpscr))
FP_PLAIN_BINARY(RSqrtSVV, (F16, F32, D64), FPRSqrtStepFused(a, b, fpscr))
FP_MERGING_UNARY(RecpXVM, (F16, F32, D64), FPRecpX(x, fpscr))

FP_PLAIN_BINARY(TRISMULVV, (F16, F32, D64), FPTRISMUL(a, b, fpscr))
PLAIN_UNARY(EXPAV, (F16, F32, D64), FPEXPA(x))
PLAIN_BINARY(TRISSELVV, (F16, F32, D64), select_coefficient(a, b))
// clang-format on

#define FP_SERIES_TERM(type, operation, ...)                                                       \
  MODEL_DEFINE(type, operation, VecV, (VecV old, VecV zn, uint64_t imm)) {                         \
    using E = model::type;                                                                         \
    return map<E>(context, [&](unsigned e) {                                                       \
      return step(context, [&](FPSCR& fpscr) {                                                     \
        return FPTRIMADD(imm, get<E>(old, e), get<E>(zn, e), fpscr);                               \
      });                                                                                          \
    });                                                                                            \
  }
SVE_EACH(FP_SERIES_TERM, TRIMADDVVI, (F16, F32, D64), )
