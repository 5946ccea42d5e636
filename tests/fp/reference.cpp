#include "tests/fp/reference.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "tests/fp/natural.h"

namespace reference {
namespace {

/// (magnitude + d) * 2^exponent, where d is 0, or with `more` some value strictly between 0 and 1.
struct Exact {
  bool negative = false;
  Natural magnitude;
  int exponent = 0;
  bool more = false;
};

enum class Kind { zero, finite, infinite, nan };

struct Operand {
  Kind kind;
  bool negative;
  Exact value;
};

bool flushes(Format f, const Controls& c) { return f.width == 16 ? c.fz16 : c.fz; }

std::uint64_t signed_bits(Format f, bool negative, std::uint64_t magnitude) {
  return magnitude | (negative ? f.sign() : 0);
}

Operand decode(Format f, std::uint64_t op, const Controls& c, unsigned& flags,
               bool no_specials = false) {
  const bool negative = op & f.sign();
  const int field = static_cast<int>(op >> f.fraction_bits()) & f.infinite_exponent();
  const std::uint64_t fraction = op & ((std::uint64_t{1} << f.fraction_bits()) - 1);
  if (field == f.infinite_exponent() && !no_specials)
    return {fraction ? Kind::nan : Kind::infinite, negative, {}};
  if (field == 0 && fraction != 0 && flushes(f, c)) {
    if (f.width != 16)
      flags |= input_denormal;
    return {Kind::zero, negative, {}};
  }
  if (field == 0 && fraction == 0)
    return {Kind::zero, negative, {}};
  const std::uint64_t hidden = field ? std::uint64_t{1} << f.fraction_bits() : 0;
  const int exponent = std::max(field, 1) - f.bias() - f.fraction_bits();
  return {Kind::finite, negative, {negative, Natural(hidden | fraction), exponent}};
}

enum class Side { exact, below_half, half, above_half };

/// Splits a value into whole units of 2^unit and what is left.
std::pair<Natural, Side> split(const Exact& v, int unit) {
  const int shift = unit - v.exponent;
  if (shift <= 0) {
    if (v.more)
      std::abort();  // the caller kept too few bits to know
    return {v.magnitude << -shift, Side::exact};
  }
  const bool half = v.magnitude.bit(shift - 1);
  const bool rest = v.magnitude.any_below(shift - 1) || v.more;
  const Side side =
      half ? (rest ? Side::above_half : Side::half) : (rest ? Side::below_half : Side::exact);
  return {v.magnitude >> shift, side};
}

/// The neighbour that the mode picks: `lower`, or one more.
Natural pick(const Natural& lower, Side side, bool negative, int rounding) {
  bool upper = false;
  switch (rounding) {
  case nearest_even:
    upper = side == Side::above_half || (side == Side::half && lower.is_odd());
    break;
  case nearest_away:
    upper = side == Side::above_half || side == Side::half;
    break;
  case up:
    upper = side != Side::exact && !negative;
    break;
  case down:
    upper = side != Side::exact && negative;
    break;
  case to_odd:
    upper = side != Side::exact && !lower.is_odd();
    break;
  default:
    break;
  }
  return upper ? lower + 1 : lower;
}

Outcome overflowed(Format f, bool negative, int rounding, unsigned flags) {
  const bool to_infinity =
      rounding == nearest_even || (rounding == up && !negative) || (rounding == down && negative);
  return {signed_bits(f, negative, f.infinity() - (to_infinity ? 0 : 1)),
          flags | overflow | inexact};
}

/// Rounds a non-zero value. Tininess is detected before rounding.
Outcome round(Format f, const Exact& v, int rounding, bool flush, bool alternative,
              unsigned flags) {
  const int smallest = 1 - f.bias();
  const int largest = alternative ? f.bias() + 1 : f.bias();
  const int top = v.exponent + v.magnitude.bit_length() - 1;
  const bool tiny = top < smallest;
  if (tiny && flush)
    return {signed_bits(f, v.negative, 0), flags | underflow};

  const int unit = std::max(top, smallest) - f.fraction_bits();
  const auto [lower, side] = split(v, unit);
  const Natural whole = pick(lower, side, v.negative, rounding);
  if (!whole.is_zero() && whole.bit_length() - 1 + unit > largest) {
    if (alternative)
      return {signed_bits(f, v.negative, f.sign() - 1), flags | invalid};
    return overflowed(f, v.negative, rounding, flags);
  }
  if (side != Side::exact)
    flags |= inexact | (tiny ? underflow : 0u);
  // In units of the smallest denormal of its binade, a value's pattern is a plain sum.
  const auto binades = static_cast<std::uint64_t>(unit + f.fraction_bits() - smallest);
  const std::uint64_t pattern = (binades << f.fraction_bits()) + whole.low64();
  return {signed_bits(f, v.negative, pattern), flags};
}

Outcome round(Format f, const Exact& v, const Controls& c, unsigned flags) {
  return round(f, v, c.rounding, flushes(f, c), false, flags);
}

Outcome exact_zero(Format f, const Controls& c, unsigned flags) {
  return {signed_bits(f, c.rounding == down, 0), flags};
}

Outcome invalid_result(Format f, unsigned flags) { return {f.default_nan(), flags | invalid}; }

Outcome nan_result(Format f, std::uint64_t op, const Controls& c, unsigned flags) {
  if (f.is_signalling(op))
    flags |= invalid;
  return {c.dn ? f.default_nan() : op | f.quiet(), flags};
}

/// Finds the NaN that decides among operands: signalling ones first, then in order.
template <typename... Ops> const std::uint64_t* deciding_nan(Format f, const Ops&... ops) {
  const std::uint64_t* found = nullptr;
  ((found = !found && f.is_signalling(ops) ? &ops : found), ...);
  ((found = !found && f.is_nan(ops) ? &ops : found), ...);
  return found;
}

Exact sum(const Exact& a, const Exact& b) {
  const int exponent = std::min(a.exponent, b.exponent);
  const Natural x = a.magnitude << (a.exponent - exponent);
  const Natural y = b.magnitude << (b.exponent - exponent);
  if (a.negative == b.negative)
    return {a.negative, x + y, exponent};
  return x >= y ? Exact{a.negative, x - y, exponent} : Exact{b.negative, y - x, exponent};
}

Exact product(const Exact& a, const Exact& b) {
  return {a.negative != b.negative, a.magnitude * b.magnitude, a.exponent + b.exponent};
}

/// The sum of what is infinite, zero or finite, but no NaN.
Outcome add_operands(Format f, const Operand& a, const Operand& b, const Controls& c,
                     unsigned flags) {
  if (a.kind == Kind::infinite && b.kind == Kind::infinite && a.negative != b.negative)
    return invalid_result(f, flags);
  if (a.kind == Kind::infinite || b.kind == Kind::infinite)
    return {signed_bits(f, a.kind == Kind::infinite ? a.negative : b.negative, f.infinity()),
            flags};
  if (a.kind == Kind::zero && b.kind == Kind::zero && a.negative == b.negative)
    return {signed_bits(f, a.negative, 0), flags};
  const Exact total = a.kind == Kind::zero   ? b.value
                      : b.kind == Kind::zero ? a.value
                                             : sum(a.value, b.value);
  if (total.magnitude.is_zero() || (a.kind == Kind::zero && b.kind == Kind::zero))
    return exact_zero(f, c, flags);
  return round(f, total, c, flags);
}

bool is_invalid_product(const Operand& a, const Operand& b) {
  return (a.kind == Kind::infinite && b.kind == Kind::zero) ||
         (a.kind == Kind::zero && b.kind == Kind::infinite);
}

Operand product(const Operand& a, const Operand& b) {
  const bool negative = a.negative != b.negative;
  if (a.kind == Kind::infinite || b.kind == Kind::infinite)
    return {Kind::infinite, negative, {}};
  if (a.kind == Kind::zero || b.kind == Kind::zero)
    return {Kind::zero, negative, {}};
  return {Kind::finite, negative, product(a.value, b.value)};
}

Outcome multiply(Format f, std::uint64_t op_a, std::uint64_t op_b, bool extended,
                 const Controls& c) {
  unsigned flags = 0;
  const Operand a = decode(f, op_a, c, flags), b = decode(f, op_b, c, flags);
  if (const std::uint64_t* nan = deciding_nan(f, op_a, op_b))
    return nan_result(f, *nan, c, flags);
  const Operand p = product(a, b);
  if (is_invalid_product(a, b)) {
    const std::uint64_t two = static_cast<std::uint64_t>(f.bias() + 1) << f.fraction_bits();
    return extended ? Outcome{signed_bits(f, p.negative, two), flags} : invalid_result(f, flags);
  }
  if (p.kind == Kind::finite)
    return round(f, p.value, c, flags);
  return {signed_bits(f, p.negative, p.kind == Kind::infinite ? f.infinity() : 0), flags};
}

}  // namespace

Outcome add(Format f, std::uint64_t op_a, std::uint64_t op_b, const Controls& c) {
  unsigned flags = 0;
  const Operand a = decode(f, op_a, c, flags), b = decode(f, op_b, c, flags);
  if (const std::uint64_t* nan = deciding_nan(f, op_a, op_b))
    return nan_result(f, *nan, c, flags);
  return add_operands(f, a, b, c, flags);
}

Outcome subtract(Format f, std::uint64_t a, std::uint64_t b, const Controls& c) {
  return add(f, a, f.is_nan(b) ? b : b ^ f.sign(), c);
}

Outcome multiply(Format f, std::uint64_t a, std::uint64_t b, const Controls& c) {
  return multiply(f, a, b, false, c);
}

Outcome multiply_extended(Format f, std::uint64_t a, std::uint64_t b, const Controls& c) {
  return multiply(f, a, b, true, c);
}

Outcome multiply_add(Format f, std::uint64_t addend, std::uint64_t op_a, std::uint64_t op_b,
                     const Controls& c) {
  unsigned flags = 0;
  const Operand s = decode(f, addend, c, flags);
  const Operand a = decode(f, op_a, c, flags), b = decode(f, op_b, c, flags);
  const std::uint64_t* nan = deciding_nan(f, addend, op_a, op_b);
  if (is_invalid_product(a, b) && !f.is_signalling(addend))
    return invalid_result(f, flags);
  if (nan)
    return nan_result(f, *nan, c, flags);
  return add_operands(f, s, product(a, b), c, flags);
}

Outcome divide(Format f, std::uint64_t op_a, std::uint64_t op_b, const Controls& c) {
  unsigned flags = 0;
  const Operand a = decode(f, op_a, c, flags), b = decode(f, op_b, c, flags);
  if (const std::uint64_t* nan = deciding_nan(f, op_a, op_b))
    return nan_result(f, *nan, c, flags);
  const bool negative = a.negative != b.negative;
  if (a.kind == b.kind && a.kind != Kind::finite)
    return invalid_result(f, flags);
  if (b.kind == Kind::zero && a.kind == Kind::finite)
    return {signed_bits(f, negative, f.infinity()), flags | division_by_zero};
  if (a.kind == Kind::infinite || b.kind == Kind::zero)
    return {signed_bits(f, negative, f.infinity()), flags};
  if (a.kind == Kind::zero || b.kind == Kind::infinite)
    return {signed_bits(f, negative, 0), flags};
  const int shift = 2 * f.width;
  Natural rest;
  Exact q{negative, Natural::quotient(a.value.magnitude << shift, b.value.magnitude, rest),
          a.value.exponent - b.value.exponent - shift};
  q.more = !rest.is_zero();
  return round(f, q, c, flags);
}

Outcome square_root(Format f, std::uint64_t op, const Controls& c) {
  unsigned flags = 0;
  const Operand a = decode(f, op, c, flags);
  if (a.kind == Kind::nan)
    return nan_result(f, op, c, flags);
  if (a.kind == Kind::zero)
    return {signed_bits(f, a.negative, 0), flags};
  if (a.negative)
    return invalid_result(f, flags);
  if (a.kind == Kind::infinite)
    return {op, flags};
  const int odd = a.value.exponent & 1;
  const int shift = 2 * f.width + odd;
  const Natural radicand = a.value.magnitude << shift;
  Exact r{false, Natural::root(radicand), (a.value.exponent - shift) / 2};
  r.more = r.magnitude * r.magnitude != radicand;
  return round(f, r, c, flags);
}

Outcome newton_step(Format f, unsigned constant, int scale, std::uint64_t op_a, std::uint64_t op_b,
                    const Controls& c) {
  unsigned flags = 0;
  op_a ^= f.sign();
  const Operand a = decode(f, op_a, c, flags), b = decode(f, op_b, c, flags);
  if (const std::uint64_t* nan = deciding_nan(f, op_a, op_b))
    return nan_result(f, *nan, c, flags);
  const Operand p = product(a, b);
  Exact total{false, constant, scale};
  if (p.kind == Kind::infinite && !is_invalid_product(a, b))
    return {signed_bits(f, p.negative, f.infinity()), flags};
  if (p.kind == Kind::finite) {
    Exact scaled = p.value;
    scaled.exponent += scale;
    total = sum(total, scaled);
  }
  return total.magnitude.is_zero() ? exact_zero(f, c, flags) : round(f, total, c, flags);
}

Outcome square_with_sign(Format f, std::uint64_t op, std::uint64_t sign_source, const Controls& c) {
  unsigned flags = 0;
  const Operand a = decode(f, op, c, flags);
  if (a.kind == Kind::nan)
    return nan_result(f, op, c, flags);
  const std::uint64_t sign = sign_source & 1 ? f.sign() : 0;
  if (a.kind != Kind::finite)
    return {(a.kind == Kind::infinite ? f.infinity() : 0) | sign, flags};
  const Outcome rounded = round(f, product(a.value, a.value), c, flags);
  return {rounded.bits | sign, rounded.flags};
}

Outcome convert(Format from, Format to, std::uint64_t op, int rounding, const Controls& c) {
  unsigned flags = 0;
  const bool from_alternative = from.width == 16 && c.ahp;
  const bool to_alternative = to.width == 16 && c.ahp;
  const Operand a = decode(from, op, c, flags, from_alternative);
  if (a.kind == Kind::nan) {
    if (from.is_signalling(op))
      flags |= invalid;
    if (to_alternative)
      return {signed_bits(to, a.negative, 0), flags | invalid};
    if (c.dn)
      return {to.default_nan(), flags};
    const int gained = to.fraction_bits() - from.fraction_bits();
    const std::uint64_t fraction = op & ((std::uint64_t{1} << from.fraction_bits()) - 1);
    const std::uint64_t payload = gained >= 0 ? fraction << gained : fraction >> -gained;
    return {signed_bits(to, a.negative, to.default_nan() | payload), flags};
  }
  if (a.kind == Kind::infinite)
    return to_alternative ? Outcome{signed_bits(to, a.negative, to.sign() - 1), flags | invalid}
                          : Outcome{signed_bits(to, a.negative, to.infinity()), flags};
  if (a.kind == Kind::zero)
    return {signed_bits(to, a.negative, 0), flags};
  const bool flush = to.width < from.width && to.width != 16 && c.fz;
  return round(to, a.value, rounding, flush, to_alternative, flags);
}

Outcome to_fixed(Format from, int width, std::uint64_t op, int fbits, bool is_unsigned,
                 int rounding, const Controls& c) {
  unsigned flags = 0;
  const Operand a = decode(from, op, c, flags);
  const std::uint64_t mask = ~std::uint64_t{0} >> (64 - width);
  if (a.kind == Kind::nan)
    return {0, flags | invalid};
  if (a.kind == Kind::zero)
    return {0, flags};
  const Natural largest_positive = is_unsigned ? mask : mask >> 1;
  const Natural largest_negative = is_unsigned ? Natural(0) : largest_positive + 1;
  const Natural& limit = a.negative ? largest_negative : largest_positive;
  const std::uint64_t saturated = (a.negative ? -limit.low64() : limit.low64()) & mask;
  if (a.kind == Kind::infinite)
    return {saturated, flags | invalid};
  const auto [lower, side] = split(a.value, -fbits);
  const Natural whole = pick(lower, side, a.negative, rounding);
  if (whole > limit)
    return {saturated, flags | invalid};
  const std::uint64_t magnitude = whole.low64();
  return {(a.negative ? -magnitude : magnitude) & mask,
          flags | (side == Side::exact ? 0u : inexact)};
}

Outcome from_fixed(Format to, std::uint64_t op, int fbits, bool is_unsigned, int rounding,
                   const Controls& c) {
  if (op == 0)
    return {0, 0};
  const bool negative = !is_unsigned && op >> 63;
  const Exact value{negative, Natural(negative ? -op : op), -fbits};
  return round(to, value, rounding, to.width != 16 && c.fz, false, 0);
}

Outcome round_to_integral(Format f, std::uint64_t op, int rounding, bool exact, const Controls& c) {
  unsigned flags = 0;
  const Operand a = decode(f, op, c, flags);
  if (a.kind == Kind::nan)
    return nan_result(f, op, c, flags);
  if (a.kind == Kind::infinite)
    return {op, flags};
  if (a.kind == Kind::zero)
    return {signed_bits(f, a.negative, 0), flags};
  const auto [lower, side] = split(a.value, 0);
  const Natural whole = pick(lower, side, a.negative, rounding);
  if (exact && side != Side::exact)
    flags |= inexact;
  if (whole.is_zero())
    return {signed_bits(f, a.negative, 0), flags};
  return round(f, {a.negative, whole, 0}, to_zero, false, false, flags);
}

Outcome scale(Format f, std::uint64_t op, std::int64_t by, const Controls& c) {
  unsigned flags = 0;
  const Operand a = decode(f, op, c, flags);
  if (a.kind == Kind::nan)
    return nan_result(f, op, c, flags);
  if (a.kind == Kind::infinite)
    return {op, flags};
  if (a.kind == Kind::zero)
    return {signed_bits(f, a.negative, 0), flags};
  Exact value = a.value;
  // Far beyond every format, and far from overflowing the int.
  value.exponent += static_cast<int>(std::clamp<std::int64_t>(by, -10000, 10000));
  return round(f, value, c, flags);
}

}  // namespace reference
