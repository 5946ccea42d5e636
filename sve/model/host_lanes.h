// Floating-point operations of the model on the host's unit, at the vector length of this build:
// the functions of the floating-point library, overloaded for whole vectors.
//
// Single and double precision are the host's own. Of half precision a host may have no more than
// the conversions, so it goes by a wider format, and comes out as one operation of half precision
// would give it, bit for bit and flag for flag:
//
// - By single precision. 24 bits are at least twice 11 and two more, so that the second rounding of
//   a sum, difference, product, quotient or root gives what a single rounding would have given.
//   Every finite half, and every such result, is a normal single: FZ has no effect. A result that
//   is tiny as a half is exact as a single, or at least not near enough to any half to become one,
//   so that the narrowing finds all of underflow, overflow and inexactness that there is.
// - Fused operations by double precision. The product is exact. If the sum is not, the smaller term
//   lies far below half a unit of the larger one's last place, or the result overflows: in both
//   cases the sum's own rounding, in the same direction, changes nothing. Then to single, rounded
//   to odd, which keeps on which side of a half the sum lies, and to half by the mode in force.
//
// Quiet NaNs keep their payload on the way. A signalling one would not be told from them behind the
// first conversion, and flushing by FZ16 is not the conversions': the library does both.
#pragma once

#include <cstddef>
#include <utility>

#include "host/fp_unit.h"
#include "sve/fp/format.h"
#include "sve/model/context.h"
#include "sve/model/flags.h"

namespace model {

template <class T> using vector = host::fp_vector<T>;

// The host's unit with the context's controls, for the time of one instruction, whose flags it adds
// to the context. The unit's own registers are left as they were found.
class HostUnit {
public:
  explicit HostUnit(CpuContext* context)
      : context_(context), saved_(host::read_fpcr()), saved_status_(host::read_fpsr()),
        control_(context->fpcr & (3u << FPSCR_RMODE_SHIFT | FPSCR_FZ | FPSCR_DN)) {
    if (saved_ != control_)
      host::write_fpcr(control_);
    host::write_fpsr(0);
  }
  HostUnit(const HostUnit&) = delete;
  HostUnit& operator=(const HostUnit&) = delete;
  ~HostUnit() {
    context_->fpsr = (context_->fpsr | static_cast<uint32_t>(host::read_fpsr())) & fpsr_bits;
    host::write_fpsr(saved_status_);
    if (saved_ != control_)
      host::write_fpcr(saved_);
  }

  operator FPSCR() const { return control_; }
  void raise(uint32_t flag) { context_->fpsr |= flag; }

private:
  CpuContext* context_;
  uint64_t saved_;
  uint64_t saved_status_;
  uint32_t control_;
};

// The elements of a vector in a format that is theirs or wider, lowest first. What an operation
// makes of operands is not one itself: it is still to be rounded to the element.
template <class T, unsigned n> struct Operand { vector<T> part[n]; };
template <class T, unsigned n> struct Result { vector<T> part[n]; };
template <class T, unsigned n> struct ResultMagnitude { Result<T, n> result; };
template <class T, unsigned n> struct Relation { vector<T> part[n]; };  // all ones, or 0

template <template <class, unsigned> class To, class T, unsigned n, class Function, class... From>
inline To<T, n> part_by_part(Function function, const From&... from) {
  To<T, n> to;
  for (unsigned i = 0; i < n; i++)
    to.part[i] = function(from.part[i]...);
  return to;
}

// Two operands, by the host instruction of that name.
#define HOST_BINARY(operation, Outcome, instruction)                                               \
  template <class T, unsigned n>                                                                   \
  inline Outcome<T, n> operation(const Operand<T, n>& a, const Operand<T, n>& b, HostUnit&) {      \
    return part_by_part<Outcome, T, n>(                                                            \
        [](vector<T> x, vector<T> y) { return host::instruction<T>(x, y); }, a, b);                \
  }
HOST_BINARY(FPAdd, Result, fadd)
HOST_BINARY(FPSub, Result, fsub)
HOST_BINARY(FPMul, Result, fmul)
HOST_BINARY(FPMulX, Result, fmulx)
HOST_BINARY(FPDiv, Result, fdiv)
HOST_BINARY(FPMax, Result, fmax)
HOST_BINARY(FPMin, Result, fmin)
HOST_BINARY(FPMaxNum, Result, fmaxnm)
HOST_BINARY(FPMinNum, Result, fminnm)
HOST_BINARY(FPCompareEQ, Relation, fcmeq)
HOST_BINARY(FPCompareGE, Relation, fcmge)
HOST_BINARY(FPCompareGT, Relation, fcmgt)
#undef HOST_BINARY

template <class T, unsigned n> inline Result<T, n> FPSqrt(const Operand<T, n>& a, HostUnit&) {
  return part_by_part<Result, T, n>([](vector<T> x) { return host::fsqrt<T>(x); }, a);
}

template <class T, unsigned n>
inline Result<T, n> FPRoundInt(const Operand<T, n>& a, FPRounding rounding, bool exact, HostUnit&) {
  return part_by_part<Result, T, n>(
      [=](vector<T> x) {
        if (exact)  // by the mode in force
          return host::frintx<T>(x);
        switch (rounding) {
        case FPRounding_TIEEVEN:
          return host::frintn<T>(x);
        case FPRounding_POSINF:
          return host::frintp<T>(x);
        case FPRounding_NEGINF:
          return host::frintm<T>(x);
        case FPRounding_ZERO:
          return host::frintz<T>(x);
        default:
          return host::frinta<T>(x);
        }
      },
      a);
}

// Only where the format is the element's own, or wide enough for a fused operation.
template <class T, unsigned n>
requires(n == 1 || sizeof(T) == 8) inline Result<T, n> FPMulAdd(const Operand<T, n>& addend,
                                                                const Operand<T, n>& a,
                                                                const Operand<T, n>& b, HostUnit&) {
  return part_by_part<Result, T, n>(
      [](vector<T> x, vector<T> y, vector<T> z) { return host::fmla<T>(x, y, z); }, addend, a, b);
}
template <class T> inline Result<T, 1> FPRSqrtEstimate(const Operand<T, 1>& a, HostUnit&) {
  return {{host::frsqrte<T>(a.part[0])}};
}
template <class T>
inline Result<T, 1> FPRSqrtStepFused(const Operand<T, 1>& a, const Operand<T, 1>& b, HostUnit&) {
  return {{host::frsqrts<T>(a.part[0], b.part[0])}};
}

// Unordered: a NaN does not equal itself.
template <class T, unsigned n>
inline Relation<T, n> FPCompareUN(const Operand<T, n>& a, const Operand<T, n>& b, HostUnit&) {
  return part_by_part<Relation, T, n>(
      [](vector<T> x, vector<T> y) { return ~(host::fcmeq<T>(x, x) & host::fcmeq<T>(y, y)); }, a,
      b);
}

template <class T, unsigned n> inline Relation<T, n> operator!(const Relation<T, n>& a) {
  return part_by_part<Relation, T, n>([](vector<T> x) { return ~x; }, a);
}

// Bits alone.
template <class Vector> inline Vector without_sign(Vector a) {
  using T = std::remove_reference_t<decltype(a[0])>;
  return a & static_cast<T>(~FPFormat<T>::sign_bit);
}
template <class T, unsigned n> inline Operand<T, n> FPNeg(const Operand<T, n>& a) {
  return part_by_part<Operand, T, n>([](vector<T> x) { return x ^ FPFormat<T>::sign_bit; }, a);
}
template <class T, unsigned n> inline Operand<T, n> magnitude(const Operand<T, n>& a) {
  return part_by_part<Operand, T, n>([](vector<T> x) { return without_sign(x); }, a);
}
template <class T, unsigned n> inline ResultMagnitude<T, n> magnitude(const Result<T, n>& a) {
  return {a};
}

// What operands of E are: in their own format, or of half precision in single or in double.
template <class E> struct OperandOf { using type = Operand<E, 1>; };
template <> struct OperandOf<uint16_t> { using type = Operand<uint32_t, 2>; };
template <class E> struct FusedOperandOf { using type = Operand<E, 1>; };
template <> struct FusedOperandOf<uint16_t> { using type = Operand<uint64_t, 4>; };

template <class E> inline void widen(vector<E> from, Operand<E, 1>& to) { to.part[0] = from; }
inline void widen(vector<uint16_t> from, Operand<uint32_t, 2>& to) {
  to = {{host::fcvtl(from), host::fcvtl2(from)}};
}
inline void widen(vector<uint16_t> from, Operand<uint64_t, 4>& to) {
  const vector<uint32_t> low = host::fcvtl(from), high = host::fcvtl2(from);
  to = {{host::fcvtl(low), host::fcvtl2(low), host::fcvtl(high), host::fcvtl2(high)}};
}

template <class E> inline vector<E> narrow(const Result<E, 1>& from) { return from.part[0]; }
inline vector<uint16_t> narrow(const Result<uint32_t, 2>& from) {
  return host::fcvtn(from.part[0], from.part[1]);
}
inline vector<uint16_t> narrow(const Result<uint64_t, 4>& from) {
  return host::fcvtn(host::fcvtxn(from.part[0], from.part[1]),
                     host::fcvtxn(from.part[2], from.part[3]));
}
template <class T, unsigned n> inline auto narrow(const ResultMagnitude<T, n>& from) {
  return without_sign(narrow(from.result));
}
template <class E> inline vector<E> narrow(const Relation<E, 1>& from) { return from.part[0]; }
inline vector<uint16_t> narrow(const Relation<uint32_t, 2>& from) {
  return __builtin_shufflevector(reinterpret_cast<vector<uint16_t>>(from.part[0]),
                                 reinterpret_cast<vector<uint16_t>>(from.part[1]), 0, 2, 4, 6, 8,
                                 10, 12, 14);
}

// Whether there are overloads for all that the operation, on so many elements E, calls.
template <class Operand, class Operation, class... Sources>
inline constexpr bool takes = requires(Operation operation, HostUnit& unit, Sources... source) {
  operation((static_cast<void>(source), Operand{})..., unit);
};
template <class E, class Operation, class... Sources>
inline constexpr bool on_host = takes<typename OperandOf<E>::type, Operation, Sources...> ||
                                takes<typename FusedOperandOf<E>::type, Operation, Sources...>;

// Whether the host gives what the library would.
template <class E, class... Sources>
inline bool host_agrees(const CpuContext* context, Sources... sources) {
  if constexpr (sizeof(E) == sizeof(uint16_t)) {
    using F = FPFormat<uint16_t>;
    const auto signalling = [](vector<uint16_t> x) {
      const vector<uint16_t> above_infinity = (x & uint16_t{0x7fff}) - uint16_t(F::infinity + 1);
      return above_infinity < uint16_t(F::quiet_bit - 1);
    };
    const auto any = reinterpret_cast<vector<uint64_t>>((signalling(sources) | ...));
    return (context->fpcr & FPSCR_FZ16) == 0 && (any[0] | any[1]) == 0;
  } else {
    return true;
  }
}

// The operation on whole vectors.
template <class E, class Operation, class... Sources>
inline vector<E> on_host_unit(HostUnit& unit, Operation operation, Sources... sources) {
  constexpr bool direct = takes<typename OperandOf<E>::type, Operation, Sources...>;
  using Wide = typename std::conditional_t<direct, OperandOf<E>, FusedOperandOf<E>>::type;
  const auto widened = [](vector<E> from) {
    Wide to;
    widen(from, to);
    return to;
  };
  return narrow(operation(widened(sources)..., unit));
}

template <class E> inline vector<E> elements_of(const VecV& value) {
  return reinterpret_cast<vector<E>>(value.bytes);
}
template <class E> inline VecV value_of(vector<E> elements) {
  return {reinterpret_cast<VecV::Bytes>(elements)};
}

// All ones in the active elements.
template <class E> inline vector<E> active_mask(const PredV& pg) {
  return -(reinterpret_cast<vector<E>>(pg.words) & E{1});
}

template <class E> inline vector<E> select(vector<E> mask, vector<E> chosen, vector<E> other) {
  return (chosen & mask) | (other & ~mask);
}

// 1.0 is the operand on which no operation raises a flag.
template <class E> inline constexpr E harmless = FPFormat<E>::one;
template <class E> inline vector<E> all_harmless() { return vector<E>{} + harmless<E>; }

}  // namespace model
