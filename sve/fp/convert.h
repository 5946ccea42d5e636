// Conversions between formats and to and from integers, rounding to integral values, scaling.
// The result type is the first template argument; the operand's is deduced.
#pragma once

#include "sve/fp/format.h"

/// op in another format, rounded by `rounding`. To and from half precision AHP selects the
/// alternative format, which has no infinities and NaNs. A half result is never flushed; a half
/// operand is under FZ16. The caller clears AHP and FZ16 where the architecture ignores them.
template <FPBits To, FPBits From> To FPConvert(From op, FPRounding rounding, FPSCR& fpscr);

/// op * 2^fbits as an integer of the width of To, signed or unsigned, rounded by any mode but
/// FPRounding_ODD. Out of range it saturates with IOC alone; a NaN gives 0 with IOC. To is at
/// least as wide as From, or 32 bits.
template <FPBits To, FPBits From>
To fplibFPToFixed(From op, int fbits, bool is_unsigned, FPRounding rounding, FPSCR& fpscr);

/// The core of fplibFPToFixed, to 64 bits: `mantissa` has its hidden bit at bit 52, `exponent` is
/// biased as in double precision. *flags becomes IOC or IXC where they apply, and else is kept.
std::uint64_t FPToFixed_64(int sign, int exponent, std::uint64_t mantissa, bool is_unsigned,
                           FPRounding rounding, int* flags);

/// The integer op, signed or unsigned, divided by 2^fbits (0 to 64), rounded. FZ16 has no effect.
template <FPBits T>
T fplibFixedToFP(std::uint64_t op, int fbits, bool is_unsigned, FPRounding rounding, FPSCR& fpscr);

/// op rounded to an integral value in its own format, by any mode but FPRounding_ODD. Only with
/// `exact` is a changed value inexact. A zero result keeps the sign of op.
template <FPBits T> T FPRoundInt(T op, FPRounding rounding, bool exact, FPSCR& fpscr);

// op * 2^scale, rounded by RMode.
std::uint16_t FPScale16(std::uint16_t op, std::int16_t scale, FPSCR& fpscr);
std::uint32_t FPScale32(std::uint32_t op, std::int32_t scale, FPSCR& fpscr);
std::uint64_t FPScale64(std::uint64_t op, std::int64_t scale, FPSCR& fpscr);

// The canonical form of a value: NaNs processed, denormals flushed where the controls say so.
std::uint16_t FPProcess16(std::uint16_t value, FPSCR& fpscr);
std::uint32_t FPProcess32(std::uint32_t value, FPSCR& fpscr);
std::uint64_t FPProcess64(std::uint64_t value, FPSCR& fpscr);
