#include "sve/fp/accelerator.h"

#include <array>
#include <type_traits>

#include "sve/fp/add_mul.h"
#include "sve/fp/exponential_table.h"
#include "sve/fp/steps.h"

namespace {

constexpr int series_terms = 8;

/// The sine series, then the cosine series. The last bits are the architecture's, and differ from
/// the reciprocals of the factorials.
template <FPBits T> constexpr std::array<T, 2 * series_terms> coeff{};

// clang-format off
template <>
constexpr std::array<std::uint16_t, 2 * series_terms> coeff<std::uint16_t>{
    0x3c00, 0xb155, 0x2030, 0, 0, 0, 0, 0,
    0x3c00, 0xb800, 0x293a, 0, 0, 0, 0, 0,
};

template <>
constexpr std::array<std::uint32_t, 2 * series_terms> coeff<std::uint32_t>{
    0x3f800000, 0xbe2aaaab, 0x3c088886, 0xb95008b9, 0x36369d6d, 0, 0, 0,
    0x3f800000, 0xbf000000, 0x3d2aaaa6, 0xbab60705, 0x37cd37cc, 0, 0, 0,
};

template <>
constexpr std::array<std::uint64_t, 2 * series_terms> coeff<std::uint64_t>{
    0x3ff0000000000000, 0xbfc5555555555543, 0x3f8111111110f30c, 0xbf2a01a019b92fc6,
    0x3ec71de351f3d22b, 0xbe5ae5e2b60f7b91, 0x3de5d8408868552f, 0,
    0x3ff0000000000000, 0xbfe0000000000000, 0x3fa5555555555536, 0xbf56c16c16c13a0b,
    0x3efa01a019b1e8d8, 0xbe927e4f7282f468, 0x3e21ee96d2641b13, 0xbda8f76380fbb401,
};
// clang-format on

/// op1 squared: the sign of a finite or infinite result is 0.
template <FPBits T> T square(const fp::Unpacked<T>& a, int mode, int& flags) {
  using F = FPFormat<T>;
  if (a.is_infinite())
    return F::infinity;
  if (a.is_zero())
    return 0;
  constexpr int headroom = 2 * F::width - 1 - 2 * F::fraction_bits;
  return fp::normalise_and_round<T>(0, 2 * a.exponent - F::bias + headroom,
                                    fp::mantissa_product(a.mantissa, a.mantissa),
                                    mode & fp::mode_rounding, mode, &flags);
}

}  // namespace

template <FPBits T> T FPTRIMADD(std::uint64_t index, T op1, T op2, FPSCR& fpscr) {
  using F = FPFormat<T>;
  const std::uint64_t row = index + (op2 & F::sign_bit ? series_terms : 0);
  return FPMulAdd(coeff<T>[row], op1, T(op2 & ~F::sign_bit), fpscr);
}

template <FPBits T> T FPTRISMUL(T op1, T op2, FPSCR& fpscr) {
  const int mode = fp::mode_word(fpscr);
  int flags = 0;
  const fp::Unpacked<T> a = fp_unpack(op1, mode, flags);
  const T result = a.is_nan() ? fp_process_nan(op1, mode, flags)
                              : FPFormat<T>::with_sign(op2 & 1, square(a, mode, flags));
  fpscr |= static_cast<FPSCR>(flags);
  return result;
}

template <FPBits T> T FPEXPA(T op) {
  using F = FPFormat<T>;
  constexpr int index_bits = fp::exponential_index_bits<T>;
  const T exponent = T(op >> index_bits) & F::infinite_exponent;
  const auto fraction = static_cast<T>(fp::exponential_table<T>[op & ((1 << index_bits) - 1)]);
  return T(T(exponent << F::fraction_bits) | fraction);
}

template std::uint16_t FPTRIMADD(std::uint64_t, std::uint16_t, std::uint16_t, FPSCR&);
template std::uint32_t FPTRIMADD(std::uint64_t, std::uint32_t, std::uint32_t, FPSCR&);
template std::uint64_t FPTRIMADD(std::uint64_t, std::uint64_t, std::uint64_t, FPSCR&);
template std::uint16_t FPTRISMUL(std::uint16_t, std::uint16_t, FPSCR&);
template std::uint32_t FPTRISMUL(std::uint32_t, std::uint32_t, FPSCR&);
template std::uint64_t FPTRISMUL(std::uint64_t, std::uint64_t, FPSCR&);
template std::uint16_t FPEXPA(std::uint16_t);
template std::uint32_t FPEXPA(std::uint32_t);
template std::uint64_t FPEXPA(std::uint64_t);
