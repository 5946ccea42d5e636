#include "sve/fp/convert.h"

#include <algorithm>

#include "sve/fp/steps.h"

namespace {

using fp::Unpacked;
using Double = FPFormat<std::uint64_t>;

/// The NaN in the other format: sign and top of the payload, quiet, or the default NaN under DN.
template <FPBits To, FPBits From> To convert_nan(From op, int sign, int mode, int& flags) {
  using F = FPFormat<From>;
  using G = FPFormat<To>;
  if (F::is_signalling_nan(op))
    flags |= FPSCR_IOC;
  if (mode & fp::mode_dn)
    return G::default_nan;
  const From fraction = op & F::fraction_mask;
  To payload;
  if constexpr (sizeof(To) > sizeof(From))
    payload = To{fraction} << (G::fraction_bits - F::fraction_bits);
  else
    payload = static_cast<To>(fraction >> (F::fraction_bits - G::fraction_bits));
  return G::with_sign(sign, To(G::default_nan | payload));
}

/// To a narrower format. `alternative` replaces infinities and NaNs of half precision.
template <FPBits To, FPBits From>
To narrow(From op, FPRounding rounding, int mode, bool alternative, int& flags) {
  using F = FPFormat<From>;
  using G = FPFormat<To>;
  const Unpacked<From> a = fp_unpack(op, mode, flags);
  if (a.is_special() && alternative) {
    flags |= FPSCR_IOC;
    return G::with_sign(a.sign, a.is_nan() ? To{0} : To(G::sign_bit - 1));
  }
  if (a.is_nan())
    return convert_nan<To>(op, a.sign, mode, flags);
  if (a.is_infinite())
    return G::with_sign(a.sign, G::infinity);
  if (a.is_zero())
    return G::with_sign(a.sign, 0);
  // A denormal lacks the hidden bit that the rounder assumes, but lies so far below the range of
  // the result that only its being non-zero counts.
  if constexpr (sizeof(To) == 2)
    mode = (mode & ~fp::mode_fz16) | (alternative ? fp::mode_ahp : 0);
  const From folded = fp::shift_right_sticky(a.mantissa, F::fraction_bits - G::width);
  return fp_round(a.sign, a.exponent - F::bias + G::bias, static_cast<To>(folded), rounding, mode,
                  &flags);
}

/// To a wider format: always exact. `alternative` makes exponent 31 of half an ordinary one.
template <FPBits To, FPBits From> To widen(From op, int mode, bool alternative, int& flags) {
  using F = FPFormat<From>;
  using G = FPFormat<To>;
  Unpacked<From> a = fp_unpack(op, mode, flags);
  if (!alternative && a.is_nan())
    return convert_nan<To>(op, a.sign, mode, flags);
  if (!alternative && a.is_infinite())
    return G::with_sign(a.sign, G::infinity);
  if (a.is_zero())
    return G::with_sign(a.sign, 0);
  a.exponent += F::exponent_bits;
  const To top = To{fp_normalise(a.mantissa, a.exponent)} << (G::width - F::width);
  const To fraction = To(top << 1) >> (G::width - G::fraction_bits);
  const To exponent = static_cast<To>(a.exponent - F::bias + G::bias);
  return G::with_sign(a.sign, To(exponent << G::fraction_bits) | fraction);
}

/// The largest or smallest integer of the width, by sign.
std::uint64_t saturated(int width, int sign, bool is_unsigned) {
  const std::uint64_t all = ~std::uint64_t{0} >> (64 - width);
  if (is_unsigned)
    return sign ? 0 : all;
  return sign ? (all >> 1) + 1 : all >> 1;
}

/// Whether a 64-bit result fits a narrower width.
bool fits(std::uint64_t value, int width, bool is_unsigned) {
  if (is_unsigned)
    return value >> width == 0;
  const auto high = static_cast<std::int64_t>(value) >> (width - 1);
  return high == 0 || high == -1;
}

template <FPBits To, FPBits From>
To to_fixed(From op, int fbits, bool is_unsigned, FPRounding rounding, int mode, int& flags) {
  using F = FPFormat<From>;
  constexpr int width = FPFormat<To>::width;
  const Unpacked<From> a = fp_unpack(op, mode, flags);
  if (a.is_nan()) {
    flags |= FPSCR_IOC;
    return 0;
  }
  if (a.is_infinite()) {
    flags |= FPSCR_IOC;
    return static_cast<To>(saturated(width, a.sign, is_unsigned));
  }
  const std::uint64_t mantissa = std::uint64_t{a.mantissa}
                                 << (Double::fraction_bits - F::fraction_bits);
  const std::uint64_t value = FPToFixed_64(a.sign, a.exponent - F::bias + Double::bias + fbits,
                                           mantissa, is_unsigned, rounding, &flags);
  if constexpr (width < 64) {
    if (!fits(value, width, is_unsigned)) {
      flags = FPSCR_IOC;
      return static_cast<To>(saturated(width, a.sign, is_unsigned));
    }
  }
  return static_cast<To>(value);
}

template <FPBits T>
T round_to_integral(T op, FPRounding rounding, bool exact, int mode, int& flags) {
  using F = FPFormat<T>;
  const Unpacked<T> a = fp_unpack(op, mode, flags);
  if (a.is_nan())
    return fp_process_nan(op, mode, flags);
  if (a.is_zero())
    return F::with_sign(a.sign, 0);
  const int fraction_places = F::bias + F::fraction_bits - a.exponent;
  if (fraction_places <= 0)  // integral already, or an infinity
    return op;

  // Two bits more than the mantissa make room for the half and the sticky bit.
  const T value = fp::shift_right_sticky(T(a.mantissa << 2), fraction_places);
  const int error = value & 3;
  T integer = T(value >> 2);
  integer = T(integer + fp::rounds_up(rounding, a.sign, error, integer & 1));
  if (error && exact)
    flags |= FPSCR_IXC;
  if (integer == 0)
    return F::with_sign(a.sign, 0);
  int exponent = F::bias + F::width - 1;
  const T top = fp_normalise(integer, exponent);
  const T fraction = T(T(top << 1) >> (F::width - F::fraction_bits));
  return F::with_sign(a.sign, T(T(T(exponent) << F::fraction_bits) | fraction));
}

template <FPBits T> T scale_finite(const Unpacked<T>& a, int scale, int mode, int& flags) {
  constexpr int headroom = FPFormat<T>::exponent_bits;
  return fp::normalise_and_round<T>(a.sign, a.exponent + headroom + scale, a.mantissa,
                                    mode & fp::mode_rounding, mode, &flags);
}

/// op * 2^scale; a scale beyond `limit` gives what the limit gives.
template <FPBits T> T scale_by(T op, std::int64_t scale, int limit, FPSCR& fpscr) {
  const int mode = fp::mode_word(fpscr);
  int flags = 0;
  const Unpacked<T> a = fp_unpack(op, mode, flags);
  T result = op;
  if (a.is_nan())
    result = fp_process_nan(op, mode, flags);
  else if (a.is_zero())
    result = FPFormat<T>::with_sign(a.sign, 0);
  else if (!a.is_special())
    result = scale_finite(a, static_cast<int>(std::clamp<std::int64_t>(scale, -limit, limit)), mode,
                          flags);
  fpscr |= static_cast<FPSCR>(flags);
  return result;
}

// Beyond these every value of the format overflows or underflows.
constexpr int scale_limit_half = 60;
constexpr int scale_limit_single = 300;
constexpr int scale_limit_double = 3000;

}  // namespace

template <FPBits To, FPBits From> To FPConvert(From op, FPRounding rounding, FPSCR& fpscr) {
  const int mode = fp::mode_word(fpscr);
  const bool alternative = (sizeof(From) == 2 || sizeof(To) == 2) && (fpscr & FPSCR_AHP);
  int flags = 0;
  To result;
  if constexpr (sizeof(To) < sizeof(From))
    result = narrow<To>(op, rounding, mode, alternative, flags);
  else
    result = widen<To>(op, mode, alternative, flags);
  fpscr |= static_cast<FPSCR>(flags);
  return result;
}

std::uint64_t FPToFixed_64(int sign, int exponent, std::uint64_t mantissa, bool is_unsigned,
                           FPRounding rounding, int* flags) {
  constexpr int largest_exponent = Double::bias + 63;
  if (exponent > largest_exponent) {
    *flags = FPSCR_IOC;
    return saturated(64, sign, is_unsigned);
  }
  const std::uint64_t top = mantissa << Double::exponent_bits;
  const int shift = largest_exponent - exponent;
  // Below 2^62 the two bits under the unit exist; above, nothing is lost.
  const int error = shift < 2 ? 0 : static_cast<int>(fp::shift_right_sticky(top, shift - 2) & 3);
  std::uint64_t integer = shift < 64 ? top >> shift : 0;
  integer += fp::rounds_up(rounding, sign, error, integer & 1);
  const bool out_of_range =
      is_unsigned ? sign && integer != 0 : integer > saturated(64, sign, false);
  if (out_of_range) {
    *flags = FPSCR_IOC;
    return saturated(64, sign, is_unsigned);
  }
  if (error)
    *flags = FPSCR_IXC;
  return sign ? -integer : integer;
}

template <FPBits To, FPBits From>
To fplibFPToFixed(From op, int fbits, bool is_unsigned, FPRounding rounding, FPSCR& fpscr) {
  int flags = 0;
  const To result = to_fixed<To>(op, fbits, is_unsigned, rounding, fp::mode_word(fpscr), flags);
  fpscr |= static_cast<FPSCR>(flags);
  return result;
}

template <FPBits T>
T fplibFixedToFP(std::uint64_t op, int fbits, bool is_unsigned, FPRounding rounding, FPSCR& fpscr) {
  if (op == 0)
    return 0;
  const int sign = is_unsigned ? 0 : static_cast<int>(op >> 63);
  const int mode = fp::mode_word(fpscr) & (fp::mode_fz | fp::mode_dn);
  int flags = 0;
  const T result = fp::normalise_and_round<T>(sign, FPFormat<T>::bias + 63 - fbits, sign ? -op : op,
                                              rounding, mode, &flags);
  fpscr |= static_cast<FPSCR>(flags);
  return result;
}

template <FPBits T> T FPRoundInt(T op, FPRounding rounding, bool exact, FPSCR& fpscr) {
  int flags = 0;
  const T result = round_to_integral(op, rounding, exact, fp::mode_word(fpscr), flags);
  fpscr |= static_cast<FPSCR>(flags);
  return result;
}

std::uint16_t FPScale16(std::uint16_t op, std::int16_t scale, FPSCR& fpscr) {
  return scale_by(op, scale, scale_limit_half, fpscr);
}

std::uint32_t FPScale32(std::uint32_t op, std::int32_t scale, FPSCR& fpscr) {
  return scale_by(op, scale, scale_limit_single, fpscr);
}

std::uint64_t FPScale64(std::uint64_t op, std::int64_t scale, FPSCR& fpscr) {
  return scale_by(op, scale, scale_limit_double, fpscr);
}

std::uint16_t FPProcess16(std::uint16_t value, FPSCR& fpscr) { return FPScale16(value, 0, fpscr); }

std::uint32_t FPProcess32(std::uint32_t value, FPSCR& fpscr) { return FPScale32(value, 0, fpscr); }

std::uint64_t FPProcess64(std::uint64_t value, FPSCR& fpscr) { return FPScale64(value, 0, fpscr); }

template std::uint16_t FPConvert(std::uint32_t, FPRounding, FPSCR&);
template std::uint16_t FPConvert(std::uint64_t, FPRounding, FPSCR&);
template std::uint32_t FPConvert(std::uint16_t, FPRounding, FPSCR&);
template std::uint32_t FPConvert(std::uint64_t, FPRounding, FPSCR&);
template std::uint64_t FPConvert(std::uint16_t, FPRounding, FPSCR&);
template std::uint64_t FPConvert(std::uint32_t, FPRounding, FPSCR&);
template std::uint16_t fplibFPToFixed(std::uint16_t, int, bool, FPRounding, FPSCR&);
template std::uint32_t fplibFPToFixed(std::uint16_t, int, bool, FPRounding, FPSCR&);
template std::uint32_t fplibFPToFixed(std::uint32_t, int, bool, FPRounding, FPSCR&);
template std::uint32_t fplibFPToFixed(std::uint64_t, int, bool, FPRounding, FPSCR&);
template std::uint64_t fplibFPToFixed(std::uint16_t, int, bool, FPRounding, FPSCR&);
template std::uint64_t fplibFPToFixed(std::uint32_t, int, bool, FPRounding, FPSCR&);
template std::uint64_t fplibFPToFixed(std::uint64_t, int, bool, FPRounding, FPSCR&);
template std::uint16_t fplibFixedToFP(std::uint64_t, int, bool, FPRounding, FPSCR&);
template std::uint32_t fplibFixedToFP(std::uint64_t, int, bool, FPRounding, FPSCR&);
template std::uint64_t fplibFixedToFP(std::uint64_t, int, bool, FPRounding, FPSCR&);
template std::uint16_t FPRoundInt(std::uint16_t, FPRounding, bool, FPSCR&);
template std::uint32_t FPRoundInt(std::uint32_t, FPRounding, bool, FPSCR&);
template std::uint64_t FPRoundInt(std::uint64_t, FPRounding, bool, FPSCR&);
