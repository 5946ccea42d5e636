// Floating-point arithmetic with one rounding of at most two sources.
#include "sve/fp/add_mul.h"
#include "sve/fp/compare.h"
#include "sve/fp/convert.h"
#include "sve/fp/divide_root.h"
#include "sve/model/element_wise.h"
#include "sve/model/floating_point.h"
#include "sve/model/fp_element.h"

using namespace model;

namespace {

uint16_t scale(uint16_t x, uint16_t by, FPSCR& fpscr) {
  return FPScale16(x, static_cast<int16_t>(by), fpscr);
}
uint32_t scale(uint32_t x, uint32_t by, FPSCR& fpscr) {
  return FPScale32(x, static_cast<int32_t>(by), fpscr);
}
uint64_t scale(uint64_t x, uint64_t by, FPSCR& fpscr) {
  return FPScale64(x, static_cast<int64_t>(by), fpscr);
}

// The constant of an immediate form in each precision.
struct Constant {
  uint16_t half;
  uint32_t single;
  uint64_t wide;
};
constexpr Constant zero{0, 0, 0}, half{0x3800, 0x3f000000, 0x3fe0000000000000},
    one{FPFormat<uint16_t>::one, FPFormat<uint32_t>::one, FPFormat<uint64_t>::one},
    two{FPFormat<uint16_t>::two, FPFormat<uint32_t>::two, FPFormat<uint64_t>::two};

template <class E> VecV all_elements(const Constant& constant, const CpuContext* context) {
  return map<E>(context, [&](unsigned) -> E {
    return sizeof(E) == 2 ? constant.half : sizeof(E) == 4 ? constant.single : constant.wide;
  });
}

}  // namespace

// clang-format off
FP_MERGING(AddVVM, (F16, F32, D64), FPAdd(a, b, fpscr))
FP_MERGING(SubVVM, (F16, F32, D64), FPSub(a, b, fpscr))
FP_MERGING(SubRVVM, (F16, F32, D64), FPSub(b, a, fpscr))
FP_MERGING(AbdVVM, (F16, F32, D64), magnitude(FPSub(a, b, fpscr)))
FP_MERGING(MulVVM, (F16, F32, D64), FPMul(a, b, fpscr))
FP_MERGING(MulXVVM, (F16, F32, D64), FPMulX(a, b, fpscr))
FP_MERGING(DivVVM, (F16, F32, D64), FPDiv(a, b, fpscr))
FP_MERGING(DivRVVM, (F16, F32, D64), FPDiv(b, a, fpscr))
FP_MERGING(MaxVVM, (F16, F32, D64), FPMax(a, b, fpscr))
FP_MERGING(MinVVM, (F16, F32, D64), FPMin(a, b, fpscr))
FP_MERGING(MaxNumVVM, (F16, F32, D64), FPMaxNum(a, b, fpscr))
FP_MERGING(MinNumVVM, (F16, F32, D64), FPMinNum(a, b, fpscr))
FP_MERGING(ScaleVVM, (F16, F32, D64), scale(a, b, fpscr))
FP_MERGING_UNARY(SqrtVM, (F16, F32, D64), FPSqrt(x, fpscr))

MERGING_UNARY(AbsVM, (F16, F32, D64), magnitude(x))
MERGING_UNARY(NegVM, (F16, F32, D64), FPNeg(x))

FP_PLAIN_BINARY(AddVVX, (F16, F32, D64), FPAdd(a, b, fpscr))
FP_PLAIN_BINARY(SubVVX, (F16, F32, D64), FPSub(a, b, fpscr))
FP_PLAIN_BINARY(MulVVX, (F16, F32, D64), FPMul(a, b, fpscr))
// clang-format on

// The operation, its types, the constants of immediate 0 and 1, and the expression of a and b, the
// constant.
#define FP_CONSTANT(operation, ...)                                                                \
  SVE_EACH(FP_CONSTANT_FUNCTION, operation, (F16, F32, D64), __VA_ARGS__)
#define FP_CONSTANT_FUNCTION(type, operation, constant_0, constant_1, ...)                         \
  MODEL_DEFINE(type, operation, VecV, (VecV old, PredV pg, uint64_t imm)) {                        \
    using E = model::type;                                                                         \
    return fp_merge<E>(old, pg, context, FP_OF_2(__VA_ARGS__), old,                                \
                       all_elements<E>(imm != 0 ? constant_1 : constant_0, context));              \
  }

// clang-format off
FP_CONSTANT(AddVIM, half, one, FPAdd(a, b, fpscr))
FP_CONSTANT(SubVIM, half, one, FPSub(a, b, fpscr))
FP_CONSTANT(SubRVIM, half, one, FPSub(b, a, fpscr))
FP_CONSTANT(MulVIM, half, two, FPMul(a, b, fpscr))
FP_CONSTANT(MaxVIM, zero, one, FPMax(a, b, fpscr))
FP_CONSTANT(MinVIM, zero, one, FPMin(a, b, fpscr))
FP_CONSTANT(MaxNumVIM, zero, one, FPMaxNum(a, b, fpscr))
FP_CONSTANT(MinNumVIM, zero, one, FPMinNum(a, b, fpscr))
// clang-format on

#define FP_MULTIPLY_INDEXED(type, operation, ...)                                                  \
  MODEL_DEFINE(type, operation, VecV, (VecV zn, VecV zm, uint64_t index)) {                        \
    using E = model::type;                                                                         \
    return fp_map<E>(context, FP_OF_2(FPMul(a, b, fpscr)), zn,                                     \
                     spread_indexed<E>(zm, index, context));                                       \
  }
SVE_EACH(FP_MULTIPLY_INDEXED, MulVVIX, (F16, F32, D64), )
