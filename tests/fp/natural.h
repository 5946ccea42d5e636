// Natural numbers of any size, slow and obvious: what the floating-point reference computes with.
#pragma once

#include <bit>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <vector>

class Natural {
public:
  Natural(std::uint64_t value = 0) : limbs(value ? 1 : 0, value) {}

  bool is_zero() const { return limbs.empty(); }
  bool is_odd() const { return bit(0); }
  std::uint64_t low64() const { return limbs.empty() ? 0 : limbs[0]; }

  /// The number of bits without leading zeros.
  int bit_length() const {
    return limbs.empty() ? 0 : 64 * static_cast<int>(limbs.size()) - std::countl_zero(limbs.back());
  }

  bool bit(int n) const {
    const auto limb = static_cast<std::size_t>(n / 64);
    return limb < limbs.size() && (limbs[limb] >> (n % 64) & 1);
  }

  /// Whether any of the lowest n bits is set.
  bool any_below(int n) const {
    for (int i = 0; i < n && i < bit_length(); ++i) {
      if (i % 64 == 0 && i + 64 <= n && limbs[static_cast<std::size_t>(i / 64)] == 0)
        i += 63;
      else if (bit(i))
        return true;
    }
    return false;
  }

  std::strong_ordering operator<=>(const Natural& other) const {
    if (limbs.size() != other.limbs.size())
      return limbs.size() <=> other.limbs.size();
    for (std::size_t i = limbs.size(); i-- > 0;) {
      if (limbs[i] != other.limbs[i])
        return limbs[i] <=> other.limbs[i];
    }
    return std::strong_ordering::equal;
  }
  bool operator==(const Natural& other) const = default;

  Natural& operator+=(const Natural& other) {
    if (limbs.size() < other.limbs.size())
      limbs.resize(other.limbs.size());
    bool carry = false;
    for (std::size_t i = 0; i < limbs.size(); ++i) {
      const std::uint64_t with_carry = limbs[i] + carry;
      carry = carry && with_carry == 0;
      limbs[i] = with_carry + other.limb(i);
      carry = carry || limbs[i] < with_carry;
    }
    if (carry)
      limbs.push_back(1);
    return *this;
  }

  /// Subtracts; `other` must not be the greater.
  Natural& operator-=(const Natural& other) {
    bool borrow = false;
    for (std::size_t i = 0; i < limbs.size(); ++i) {
      const std::uint64_t left = limbs[i], right = other.limb(i);
      limbs[i] = left - right - borrow;
      borrow = left < right || (left == right && borrow);
    }
    trim();
    return *this;
  }

  friend Natural operator+(Natural a, const Natural& b) { return a += b; }
  friend Natural operator-(Natural a, const Natural& b) { return a -= b; }

  friend Natural operator*(const Natural& a, const Natural& b) {
    Natural product;
    product.limbs.resize(a.limbs.size() + b.limbs.size());
    for (std::size_t i = 0; i < a.limbs.size(); ++i) {
      std::uint64_t carry = 0;
      for (std::size_t j = 0; j < b.limbs.size() || carry; ++j) {
        const Wide sum = Wide{a.limbs[i]} * b.limb(j) + product.limbs[i + j] + carry;
        product.limbs[i + j] = static_cast<std::uint64_t>(sum);
        carry = static_cast<std::uint64_t>(sum >> 64);
      }
    }
    product.trim();
    return product;
  }

  friend Natural operator<<(const Natural& a, int shift) {
    Natural result;
    if (a.is_zero())
      return result;
    const auto skip = static_cast<std::size_t>(shift / 64);
    result.limbs.resize(a.limbs.size() + skip + 1);
    for (std::size_t i = 0; i < a.limbs.size(); ++i) {
      const Wide moved = Wide{a.limbs[i]} << (shift % 64);
      result.limbs[i + skip] |= static_cast<std::uint64_t>(moved);
      result.limbs[i + skip + 1] |= static_cast<std::uint64_t>(moved >> 64);
    }
    result.trim();
    return result;
  }

  friend Natural operator>>(const Natural& a, int shift) {
    Natural result;
    const auto skip = static_cast<std::size_t>(shift / 64);
    if (skip >= a.limbs.size())
      return result;
    result.limbs.resize(a.limbs.size() - skip);
    for (std::size_t i = 0; i < result.limbs.size(); ++i) {
      const Wide two = Wide{a.limb(i + skip + 1)} << 64 | a.limbs[i + skip];
      result.limbs[i] = static_cast<std::uint64_t>(two >> (shift % 64));
    }
    result.trim();
    return result;
  }

  /// The truncated quotient, by long division one bit at a time; `rest` becomes the remainder.
  static Natural quotient(const Natural& dividend, const Natural& divisor, Natural& rest) {
    Natural result;
    rest = 0;
    for (int i = dividend.bit_length() - 1; i >= 0; --i) {
      rest += rest;
      result += result;
      if (dividend.bit(i))
        rest += 1;
      if (rest >= divisor) {
        rest -= divisor;
        result += 1;
      }
    }
    return result;
  }

  /// The truncated square root, one bit at a time from the top.
  static Natural root(const Natural& square) {
    Natural result;
    for (int i = square.bit_length() / 2; i >= 0; --i) {
      const Natural candidate = result + (Natural(1) << i);
      if (candidate * candidate <= square)
        result = candidate;
    }
    return result;
  }

private:
  __extension__ typedef unsigned __int128 Wide;

  std::uint64_t limb(std::size_t i) const { return i < limbs.size() ? limbs[i] : 0; }
  void trim() {
    while (!limbs.empty() && limbs.back() == 0)
      limbs.pop_back();
  }

  std::vector<std::uint64_t> limbs;  // lowest first, the last one not 0
};
