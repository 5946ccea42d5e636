// Fused multiply-accumulate, and the complex forms.
#include "sve/fp/add_mul.h"
#include "sve/fp/compare.h"
#include "sve/model/floating_point.h"
#include "sve/model/fp_element.h"

using namespace model;

namespace {

template <class E> E negated_if(bool condition, E x) { return condition ? FPNeg(x) : x; }

// Element e of old plus zn rotated by a quarter turn, or by three.
template <class E>
E complex_add(const VecV& old, const VecV& zn, unsigned e, uint64_t rotation, FPSCR& fpscr) {
  const bool real = e % 2 == 0;
  const E other_part = get<E>(zn, e ^ 1);
  return FPAdd(get<E>(old, e), negated_if(real == (rotation == 0), other_part), fpscr);
}

// Element e of old plus a part of zn's pair times zm's, with that pair's number of zm.
template <class E>
E complex_multiply_add(const VecV& old, const VecV& zn, const VecV& zm, unsigned e,
                       unsigned zm_pair, uint64_t rotation, FPSCR& fpscr) {
  const bool real = e % 2 == 0, odd_turn = rotation % 2 != 0, half_turn = rotation >= 2;
  const E n = get<E>(zn, (e & ~1u) + odd_turn);
  const E m = get<E>(zm, 2 * zm_pair + (real == odd_turn));
  const bool negative = real ? odd_turn != half_turn : half_turn;
  return FPMulAdd(get<E>(old, e), n, negated_if(negative, m), fpscr);
}

template <class E> unsigned indexed_pair(unsigned e, uint64_t index) {
  constexpr unsigned pairs = segment_bytes / (2 * sizeof(E));
  return e / 2 / pairs * pairs + static_cast<unsigned>(index);
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

#define FP_FUSED_INDEXED(type, operation, negative)                                                \
  MODEL_DEFINE(type, operation, VecV, (VecV zn, VecV zm, VecV old, uint64_t index)) {              \
    using E = model::type;                                                                         \
    return map<E>(context, [&](unsigned e) {                                                       \
      return step(context, [&](FPSCR& fpscr) {                                                     \
        return FPMulAdd(get<E>(old, e), negated_if(negative, get<E>(zn, e)),                       \
                        get_indexed<E>(zm, e, index), fpscr);                                      \
      });                                                                                          \
    });                                                                                            \
  }
#define FP_COMPLEX_ADD(type, operation, ...)                                                       \
  MODEL_DEFINE(type, operation, VecV, (VecV old, PredV pg, VecV zn, uint64_t rotation)) {          \
    using E = model::type;                                                                         \
    return merge<E>(old, pg, context, [&](unsigned e) {                                            \
      return step(context,                                                                         \
                  [&](FPSCR& fpscr) { return complex_add<E>(old, zn, e, rotation, fpscr); });      \
    });                                                                                            \
  }
#define FP_COMPLEX_MULTIPLY(type, operation, ...)                                                  \
  MODEL_DEFINE(type, operation, VecV, (VecV old, PredV pg, VecV zn, VecV zm, uint64_t rotation)) { \
    using E = model::type;                                                                         \
    return merge<E>(old, pg, context, [&](unsigned e) {                                            \
      return step(context, [&](FPSCR& fpscr) {                                                     \
        return complex_multiply_add<E>(old, zn, zm, e, e / 2, rotation, fpscr);                    \
      });                                                                                          \
    });                                                                                            \
  }
#define FP_COMPLEX_INDEXED(type, operation, ...)                                                   \
  MODEL_DEFINE(type, operation, VecV,                                                              \
               (VecV zn, VecV zm, VecV old, uint64_t rotation, uint64_t index)) {                  \
    using E = model::type;                                                                         \
    return map<E>(context, [&](unsigned e) {                                                       \
      return step(context, [&](FPSCR& fpscr) {                                                     \
        return complex_multiply_add<E>(old, zn, zm, e, indexed_pair<E>(e, index), rotation,        \
                                       fpscr);                                                     \
      });                                                                                          \
    });                                                                                            \
  }

SVE_EACH(FP_FUSED_INDEXED, FMAVVVIX, (F16, F32, D64), false)
SVE_EACH(FP_FUSED_INDEXED, FMSVVVIX, (F16, F32, D64), true)
SVE_EACH(FP_COMPLEX_ADD, FCADDVVM, (F16, F32, D64), )
SVE_EACH(FP_COMPLEX_MULTIPLY, FCMLAVVVM, (F16, F32, D64), )
SVE_EACH(FP_COMPLEX_INDEXED, FCMLAVVVIX, (F16, F32), )
