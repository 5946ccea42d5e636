// The floating-point unit of a host that is not AArch64: the floating-point library, element by
// element, with a control and a status word of its own for each thread.
#pragma once

#include "host/fp_vector.h"
#include "sve/fp/fp.h"

namespace host::software {

// The application's control value is in the record alone.
inline constexpr bool control_is_in_force = false;

inline thread_local uint32_t fpcr = 0;
inline thread_local uint32_t fpsr = 0;

inline constexpr uint32_t exception_flags =
    FPSCR_IOC | FPSCR_DZC | FPSCR_OFC | FPSCR_UFC | FPSCR_IXC | FPSCR_IDC;

inline uint64_t read_fpcr() { return fpcr; }
inline void write_fpcr(uint64_t value) { fpcr = static_cast<uint32_t>(value); }
inline uint64_t read_fpsr() { return fpsr; }
inline void write_fpsr(uint64_t value) { fpsr = static_cast<uint32_t>(value); }

// One library operation under the control word, its flags added to the status word.
template <class Operation> inline auto run(Operation operation) {
  FPSCR word = fpcr & ~exception_flags;
  const auto result = operation(word);
  fpsr |= word & exception_flags;
  return result;
}

template <class T, class Operation>
inline fp_vector<T> each(fp_vector<T> a, fp_vector<T> b, Operation operation) {
  fp_vector<T> result;
  for (unsigned e = 0; e < 16 / sizeof(T); e++)
    result[e] = static_cast<T>(run([&](FPSCR& word) { return operation(T{a[e]}, T{b[e]}, word); }));
  return result;
}

template <class T, class Operation> inline fp_vector<T> each(fp_vector<T> a, Operation operation) {
  return each<T>(a, a, [&](T op, T, FPSCR& word) { return operation(op, word); });
}

// All ones where the condition holds.
template <class T, class Condition>
inline fp_vector<T> compare(fp_vector<T> a, fp_vector<T> b, Condition condition) {
  return each<T>(a, b, [&](T op1, T op2, FPSCR& word) {
    return condition(op1, op2, word) ? static_cast<T>(~T{0}) : T{0};
  });
}

#define HOST_FP_UNARY(name, operation)                                                             \
  template <class T> inline fp_vector<T> name(fp_vector<T> a) { return each<T>(a, operation<T>); }
#define HOST_FP_BINARY(name, operation)                                                            \
  template <class T> inline fp_vector<T> name(fp_vector<T> a, fp_vector<T> b) {                    \
    return each<T>(a, b, operation<T>);                                                            \
  }
#define HOST_FP_COMPARE(name, operation)                                                           \
  template <class T> inline fp_vector<T> name(fp_vector<T> a, fp_vector<T> b) {                    \
    return compare<T>(a, b, operation<T>);                                                         \
  }

HOST_FP_BINARY(fadd, FPAdd)
HOST_FP_BINARY(fsub, FPSub)
HOST_FP_BINARY(fmul, FPMul)
HOST_FP_BINARY(fdiv, FPDiv)
HOST_FP_BINARY(fmulx, FPMulX)
HOST_FP_BINARY(fmax, FPMax)
HOST_FP_BINARY(fmin, FPMin)
HOST_FP_BINARY(fmaxnm, FPMaxNum)
HOST_FP_BINARY(fminnm, FPMinNum)
HOST_FP_BINARY(frecps, FPRecipStepFused)
HOST_FP_BINARY(frsqrts, FPRSqrtStepFused)
HOST_FP_UNARY(frecpe, FPRecipEstimate)
HOST_FP_UNARY(frsqrte, FPRSqrtEstimate)
HOST_FP_UNARY(fsqrt, FPSqrt)
HOST_FP_COMPARE(fcmeq, FPCompareEQ)
HOST_FP_COMPARE(fcmge, FPCompareGE)
HOST_FP_COMPARE(fcmgt, FPCompareGT)

#undef HOST_FP_UNARY
#undef HOST_FP_BINARY
#undef HOST_FP_COMPARE

#define HOST_FP_ROUND(name, rounding, exact)                                                       \
  template <class T> inline fp_vector<T> name(fp_vector<T> a) {                                    \
    return each<T>(a, [](T op, FPSCR& word) { return FPRoundInt<T>(op, rounding, exact, word); }); \
  }

HOST_FP_ROUND(frinta, FPRounding_TIEAWAY, false)
HOST_FP_ROUND(frintm, FPRounding_NEGINF, false)
HOST_FP_ROUND(frintn, FPRounding_TIEEVEN, false)
HOST_FP_ROUND(frintp, FPRounding_POSINF, false)
HOST_FP_ROUND(frintx, FPRoundingMode(word), true)
HOST_FP_ROUND(frintz, FPRounding_ZERO, false)

#undef HOST_FP_ROUND

// Neighbours combined: those of a in the low half, those of b in the high one.
template <class T, class Operation>
inline fp_vector<T> pairwise(fp_vector<T> a, fp_vector<T> b, Operation operation) {
  constexpr unsigned half = 8 / sizeof(T);
  fp_vector<T> even, odd;
  for (unsigned e = 0; e < half; e++) {
    even[e] = a[2 * e];
    odd[e] = a[2 * e + 1];
    even[half + e] = b[2 * e];
    odd[half + e] = b[2 * e + 1];
  }
  return each<T>(even, odd, operation);
}

template <class T> inline fp_vector<T> fmaxnmp(fp_vector<T> a, fp_vector<T> b) {
  return pairwise<T>(a, b, FPMaxNum<T>);
}
template <class T> inline fp_vector<T> fminnmp(fp_vector<T> a, fp_vector<T> b) {
  return pairwise<T>(a, b, FPMinNum<T>);
}

// addend + a * b, with one rounding.
template <class T> inline fp_vector<T> fmla(fp_vector<T> addend, fp_vector<T> a, fp_vector<T> b) {
  fp_vector<T> result;
  for (unsigned e = 0; e < 16 / sizeof(T); e++)
    result[e] = run([&](FPSCR& word) { return FPMulAdd<T>(addend[e], a[e], b[e], word); });
  return result;
}

// Conversions between the formats, of the low or the high half of the elements. FZ16 has no part in
// them.

template <class To, class From> inline To convert(From op, FPRounding rounding) {
  return run([&](FPSCR& word) {
    word &= ~FPSCR_FZ16;
    return FPConvert<To>(op, rounding, word);
  });
}

template <class To, class From> inline fp_vector<To> widen(fp_vector<From> a, unsigned first) {
  fp_vector<To> result;
  for (unsigned e = 0; e < 16 / sizeof(To); e++)
    result[e] = convert<To, From>(a[first + e], FPRoundingMode(fpcr));
  return result;
}

template <class To, class From>
inline fp_vector<To> narrow(fp_vector<From> low, fp_vector<From> high, FPRounding rounding) {
  constexpr unsigned n = 16 / sizeof(From);
  fp_vector<To> result;
  for (unsigned e = 0; e < 2 * n; e++)
    result[e] = convert<To, From>(e < n ? low[e] : high[e - n], rounding);
  return result;
}

inline fp_vector<uint32_t> fcvtl(fp_vector<uint16_t> a) { return widen<uint32_t, uint16_t>(a, 0); }
inline fp_vector<uint32_t> fcvtl2(fp_vector<uint16_t> a) { return widen<uint32_t, uint16_t>(a, 4); }
inline fp_vector<uint64_t> fcvtl(fp_vector<uint32_t> a) { return widen<uint64_t, uint32_t>(a, 0); }
inline fp_vector<uint64_t> fcvtl2(fp_vector<uint32_t> a) { return widen<uint64_t, uint32_t>(a, 2); }
inline fp_vector<uint16_t> fcvtn(fp_vector<uint32_t> low, fp_vector<uint32_t> high) {
  return narrow<uint16_t, uint32_t>(low, high, FPRoundingMode(fpcr));
}
inline fp_vector<uint32_t> fcvtxn(fp_vector<uint64_t> low, fp_vector<uint64_t> high) {
  return narrow<uint32_t, uint64_t>(low, high, FPRounding_ODD);
}

// Conversions between an integer and a floating-point value. To and From are unsigned types of the
// two widths; integers narrower than the result's pattern are extended by their sign.

template <class To, class From> inline To to_integer(From op, bool is_unsigned) {
  return run(
      [&](FPSCR& word) { return fplibFPToFixed<To>(op, 0, is_unsigned, FPRounding_ZERO, word); });
}

template <class To> inline To from_integer(uint64_t op, bool is_unsigned) {
  return run([&](FPSCR& word) {
    return fplibFixedToFP<To>(op, 0, is_unsigned, FPRoundingMode(word), word);
  });
}

template <class T> inline uint64_t sign_extended(T op) {
  return static_cast<uint64_t>(static_cast<int64_t>(static_cast<std::make_signed_t<T>>(op)));
}

template <class T> inline fp_vector<T> fcvtzs(fp_vector<T> a) {
  return each<T>(
      a, [](T op, FPSCR& word) { return fplibFPToFixed<T>(op, 0, false, FPRounding_ZERO, word); });
}
template <class T> inline fp_vector<T> fcvtzu(fp_vector<T> a) {
  return each<T>(
      a, [](T op, FPSCR& word) { return fplibFPToFixed<T>(op, 0, true, FPRounding_ZERO, word); });
}
template <class T> inline fp_vector<T> scvtf(fp_vector<T> a) {
  return each<T>(a, [](T op, FPSCR& word) {
    return fplibFixedToFP<T>(sign_extended(op), 0, false, FPRoundingMode(word), word);
  });
}
template <class T> inline fp_vector<T> ucvtf(fp_vector<T> a) {
  return each<T>(a, [](T op, FPSCR& word) {
    return fplibFixedToFP<T>(op, 0, true, FPRoundingMode(word), word);
  });
}

// Conversions between sizes, on one element. Values of less than 64 bits lie in the low bits of the
// pattern; so do such results, with the high bits 0.
inline uint64_t fcvt_h2s(uint64_t a) {
  return convert<uint32_t>(static_cast<uint16_t>(a), FPRoundingMode(fpcr));
}
inline uint64_t fcvt_h2d(uint64_t a) {
  return convert<uint64_t>(static_cast<uint16_t>(a), FPRoundingMode(fpcr));
}
inline uint64_t fcvt_s2h(uint64_t a) {
  return convert<uint16_t>(static_cast<uint32_t>(a), FPRoundingMode(fpcr));
}
inline uint64_t fcvt_d2h(uint64_t a) { return convert<uint16_t>(a, FPRoundingMode(fpcr)); }
inline uint64_t fcvt_s2d(uint64_t a) {
  return run([&](FPSCR& word) {
    return FPConvert<uint64_t>(static_cast<uint32_t>(a), FPRoundingMode(word), word);
  });
}
inline uint64_t fcvt_d2s(uint64_t a) {
  return run([&](FPSCR& word) { return FPConvert<uint32_t>(a, FPRoundingMode(word), word); });
}
inline uint64_t fcvtzs_s2d(uint64_t a) {
  return to_integer<uint64_t>(static_cast<uint32_t>(a), false);
}
inline uint64_t fcvtzs_s2s(uint64_t a) {
  return to_integer<uint32_t>(static_cast<uint32_t>(a), false);
}
inline uint64_t fcvtzu_s2d(uint64_t a) {
  return to_integer<uint64_t>(static_cast<uint32_t>(a), true);
}
inline uint64_t fcvtzu_s2s(uint64_t a) {
  return to_integer<uint32_t>(static_cast<uint32_t>(a), true);
}
inline uint64_t fcvtzs_d2d(uint64_t a) { return to_integer<uint64_t>(a, false); }
inline uint64_t fcvtzu_d2d(uint64_t a) { return to_integer<uint64_t>(a, true); }
inline uint64_t fcvtzs_d2s(uint64_t a) { return to_integer<uint32_t>(a, false); }
inline uint64_t fcvtzu_d2s(uint64_t a) { return to_integer<uint32_t>(a, true); }
inline uint64_t scvtf_d2s(uint64_t a) { return from_integer<uint32_t>(a, false); }
inline uint64_t scvtf_d2d(uint64_t a) { return from_integer<uint64_t>(a, false); }
inline uint64_t ucvtf_d2s(uint64_t a) { return from_integer<uint32_t>(a, true); }
inline uint64_t ucvtf_d2d(uint64_t a) { return from_integer<uint64_t>(a, true); }
inline uint64_t scvtf_s2d(uint64_t a) {
  return from_integer<uint64_t>(sign_extended(static_cast<uint32_t>(a)), false);
}
inline uint64_t ucvtf_s2d(uint64_t a) {
  return from_integer<uint64_t>(static_cast<uint32_t>(a), true);
}

}  // namespace host::software
