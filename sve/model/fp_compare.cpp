// Floating-point compares into a predicate. They leave the condition flags alone.
#include "sve/fp/compare.h"
#include "sve/model/floating_point.h"
#include "sve/model/fp_element.h"

using namespace model;

// The operation and the relation of a and b; b is +0 where there is no second source.
#define FP_COMPARE(operation, ...)                                                                 \
  SVE_EACH(FP_COMPARE_FUNCTION, operation, (F16, F32, D64), __VA_ARGS__)
#define FP_COMPARE_FUNCTION(type, operation, ...)                                                  \
  MODEL_DEFINE(type, operation, PredV, (PredV pg, VecV zn, VecV zm)) {                             \
    return fp_compare<model::type>(pg, context, FP_OF_2(__VA_ARGS__), zn, zm);                     \
  }
#define FP_COMPARE_ZERO(operation, ...)                                                            \
  SVE_EACH(FP_COMPARE_ZERO_FUNCTION, operation, (F16, F32, D64), __VA_ARGS__)
#define FP_COMPARE_ZERO_FUNCTION(type, operation, ...)                                             \
  MODEL_DEFINE(type, operation, PredV, (PredV pg, VecV zn)) {                                      \
    return fp_compare<model::type>(pg, context, FP_OF_2(__VA_ARGS__), zn, VecV{});                 \
  }

FP_COMPARE(CmpEQVVZ, FPCompareEQ(a, b, fpscr))
FP_COMPARE(CmpNEVVZ, !FPCompareEQ(a, b, fpscr))
FP_COMPARE(CmpGEVVZ, FPCompareGE(a, b, fpscr))
FP_COMPARE(CmpGTVVZ, FPCompareGT(a, b, fpscr))
FP_COMPARE(CmpUNVVZ, FPCompareUN(a, b, fpscr))
FP_COMPARE(AcGEVVZ, FPCompareGE(magnitude(a), magnitude(b), fpscr))
FP_COMPARE(AcGTVVZ, FPCompareGT(magnitude(a), magnitude(b), fpscr))

FP_COMPARE_ZERO(CmpEQV0Z, FPCompareEQ(a, b, fpscr))
FP_COMPARE_ZERO(CmpNEV0Z, !FPCompareEQ(a, b, fpscr))
FP_COMPARE_ZERO(CmpGEV0Z, FPCompareGE(a, b, fpscr))
FP_COMPARE_ZERO(CmpGTV0Z, FPCompareGT(a, b, fpscr))
FP_COMPARE_ZERO(CmpLEV0Z, FPCompareGE(b, a, fpscr))
FP_COMPARE_ZERO(CmpLTV0Z, FPCompareGT(b, a, fpscr))
