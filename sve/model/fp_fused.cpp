// Fused multiply-accumulate, and the complex forms.
#include "sve/fp/add_mul.h"
#include "sve/fp/compare.h"
#include "sve/model/floating_point.h"
#include "sve/model/fp_element.h"

using namespace model;

namespace {

template <class E> E negated_if(bool condition, E x) { return condition ? FPNeg(x) : x; }

// zn rotated by a quarter turn, or by three.
template <class E> VecV turned(const VecV& zn, uint64_t rotation, const CpuContext* context) {
  return map<E>(context, [&](unsigned e) {
    const bool real = e % 2 == 0;
    return negated_if(real == (rotation == 0), get<E>(zn, e ^ 1));
  });
}

// One part of each pair, in both of its places.
template <class E> VecV both_parts(const VecV& pairs, bool imaginary, const CpuContext* context) {
  if (imaginary)
    return map<E>(context, [&](unsigned e) { return get<E>(pairs, e | 1); });
  return map<E>(context, [&](unsigned e) { return get<E>(pairs, e & ~1u); });
}

// What the rotation multiplies with: zm's pairs, exchanged by an odd turn, with their signs.
template <class E> VecV multiplicand(const VecV& zm, uint64_t rotation, const CpuContext* context) {
  const bool odd_turn = rotation % 2 != 0, half_turn = rotation >= 2;
  const E real_sign = odd_turn != half_turn ? FPFormat<E>::sign_bit : E{0};
  const E imaginary_sign = half_turn ? FPFormat<E>::sign_bit : E{0};
  const auto sign = [=](unsigned e) { return e % 2 == 0 ? real_sign : imaginary_sign; };
  if (odd_turn)
    return map<E>(context, [&](unsigned e) { return E(get<E>(zm, e ^ 1) ^ sign(e)); });
  return map<E>(context, [&](unsigned e) { return E(get<E>(zm, e) ^ sign(e)); });
}

// The pair of that number of each 128-bit segment, for all of the segment's pairs.
template <class E>
VecV spread_indexed_pair(const VecV& zm, uint64_t index, const CpuContext* context) {
  constexpr unsigned pairs = segment_bytes / (2 * sizeof(E));
  return map<E>(context, [&](unsigned e) {
    const unsigned pair = e / 2 / pairs * pairs + static_cast<unsigned>(index);
    return get<E>(zm, 2 * pair + e % 2);
  });
}

}  // namespace

// clang-format off
FP_FUSED(FMAVVVM, (F16, F32, D64), FPMulAdd(a, b, c, fpscr))
FP_FUSED(FMSVVVM, (F16, F32, D64), FPMulAdd(a, FPNeg(b), c, fpscr))
FP_FUSED(FNMAVVVM, (F16, F32, D64), FPMulAdd(FPNeg(a), FPNeg(b), c, fpscr))
FP_FUSED(FNMSVVVM, (F16, F32, D64), FPMulAdd(FPNeg(a), b, c, fpscr))
FP_FUSED(FMADDVVVM, (F16, F32, D64), FPMulAdd(c, a, b, fpscr))
FP_FUSED(FMSUBVVVM, (F16, F32, D64), FPMulAdd(c, FPNeg(a), b, fpscr))
FP_FUSED(FNMADDVVVM, (F16, F32, D64), FPMulAdd(FPNeg(c), FPNeg(a), b, fpscr))
FP_FUSED(FNMSUBVVVM, (F16, F32, D64), FPMulAdd(FPNeg(c), a, b, fpscr))
// clang-format on

#define FP_FUSED_INDEXED(type, operation, ...)                                                     \
  MODEL_DEFINE(type, operation, VecV, (VecV zn, VecV zm, VecV old, uint64_t index)) {              \
    using E = model::type;                                                                         \
    return fp_map<E>(context, FP_OF_3(__VA_ARGS__), old, zn,                                       \
                     spread_indexed<E>(zm, index, context));                                       \
  }
#define FP_COMPLEX_ADD(type, operation, ...)                                                       \
  MODEL_DEFINE(type, operation, VecV, (VecV old, PredV pg, VecV zn, uint64_t rotation)) {          \
    using E = model::type;                                                                         \
    return fp_merge<E>(old, pg, context, FP_OF_2(FPAdd(a, b, fpscr)), old,                         \
                       turned<E>(zn, rotation, context));                                          \
  }
#define FP_COMPLEX_MULTIPLY(type, operation, ...)                                                  \
  MODEL_DEFINE(type, operation, VecV, (VecV old, PredV pg, VecV zn, VecV zm, uint64_t rotation)) { \
    using E = model::type;                                                                         \
    return fp_merge<E>(old, pg, context, FP_OF_3(FPMulAdd(a, b, c, fpscr)), old,                   \
                       both_parts<E>(zn, rotation % 2 != 0, context),                              \
                       multiplicand<E>(zm, rotation, context));                                    \
  }
#define FP_COMPLEX_INDEXED(type, operation, ...)                                                   \
  MODEL_DEFINE(type, operation, VecV,                                                              \
               (VecV zn, VecV zm, VecV old, uint64_t rotation, uint64_t index)) {                  \
    using E = model::type;                                                                         \
    return fp_map<E>(                                                                              \
        context, FP_OF_3(FPMulAdd(a, b, c, fpscr)), old,                                           \
        both_parts<E>(zn, rotation % 2 != 0, context),                                             \
        multiplicand<E>(spread_indexed_pair<E>(zm, index, context), rotation, context));           \
  }

SVE_EACH(FP_FUSED_INDEXED, FMAVVVIX, (F16, F32, D64), FPMulAdd(a, b, c, fpscr))
SVE_EACH(FP_FUSED_INDEXED, FMSVVVIX, (F16, F32, D64), FPMulAdd(a, FPNeg(b), c, fpscr))
SVE_EACH(FP_COMPLEX_ADD, FCADDVVM, (F16, F32, D64), )
SVE_EACH(FP_COMPLEX_MULTIPLY, FCMLAVVVM, (F16, F32, D64), )
SVE_EACH(FP_COMPLEX_INDEXED, FCMLAVVVIX, (F16, F32), )
