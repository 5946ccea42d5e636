// Operands and control words for the floating-point tests: interesting exponents times
// interesting significands, operands close to each other, and plain random ones.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "tests/fp/reference.h"

namespace cases {

/// The number of random cases for each operation and width: TAVOK_FP_CASES, or the default.
inline std::uint64_t count(std::uint64_t by_default) {
  const char* text = std::getenv("TAVOK_FP_CASES");
  return text ? std::strtoull(text, nullptr, 10) : by_default;
}

/// The exponent fields at which something changes: range ends, the unit, integer widths, and the
/// ranges of the narrower formats.
inline std::vector<int> exponents(reference::Format f) {
  std::vector<int> unbiased = {-1, 0, 1, 2};
  for (const int edge : {7, 8, 15, 16, 31, 32, 63, 64, f.fraction_bits(), -8, -9}) {
    for (const int near : {-1, 0, 1})
      unbiased.push_back(edge + near);
  }
  for (const reference::Format g : {reference::half, reference::single, reference::double_}) {
    const int smallest = 1 - g.bias();
    for (const int edge : {smallest, g.bias(), smallest - g.fraction_bits()}) {
      for (const int near : {-2, -1, 0, 1, 2})
        unbiased.push_back(edge + near);
    }
    unbiased.push_back(smallest / 2);
    unbiased.push_back(g.bias() / 2);
  }
  std::vector<int> fields = {0, 0, 1, f.infinite_exponent()};
  for (const int e : unbiased) {
    if (e + f.bias() >= 0 && e + f.bias() <= f.infinite_exponent())
      fields.push_back(e + f.bias());
  }
  return fields;
}

/// 0, 1, all ones, all but one, a walking bit, a walking hole, runs from either end.
inline std::vector<std::uint64_t> significands(reference::Format f) {
  const std::uint64_t all = (std::uint64_t{1} << f.fraction_bits()) - 1;
  std::vector<std::uint64_t> values = {0, 0, all};
  for (int i = 0; i < f.fraction_bits(); ++i) {
    const std::uint64_t bit = std::uint64_t{1} << i;
    for (const std::uint64_t value : {bit, all - bit, bit - 1, all - (bit - 1)})
      values.push_back(value);
  }
  return values;
}

/// Corners for a grid of two or three operands: few enough to visit all combinations.
inline std::vector<std::uint64_t> corners(reference::Format f, int operands) {
  const std::uint64_t all = (std::uint64_t{1} << f.fraction_bits()) - 1;
  const std::uint64_t top = f.quiet();
  std::vector<int> fields = {0, 1, f.bias(), f.infinite_exponent() - 1, f.infinite_exponent()};
  std::vector<std::uint64_t> fractions = {0, 1, top, all};
  if (operands < 3) {
    for (const int field : {2, f.fraction_bits(), f.bias() - 1, f.bias() + 1,
                            f.bias() + f.fraction_bits() / 2, f.bias() + f.fraction_bits() + 1})
      fields.push_back(field);
    for (const std::uint64_t fraction : {top | 1, top - 1, all - 1, all ^ top, std::uint64_t{2}})
      fractions.push_back(fraction);
  }
  if (operands < 2) {
    fields = exponents(f);
    fractions = significands(f);
  }
  std::vector<std::uint64_t> values;
  for (const int field : fields) {
    for (const std::uint64_t fraction : fractions) {
      const std::uint64_t value = static_cast<std::uint64_t>(field) << f.fraction_bits() | fraction;
      values.push_back(value);
      values.push_back(value | f.sign());
    }
  }
  return values;
}

class Source {
public:
  explicit Source(reference::Format format)
      : f(format), fields(exponents(format)), fractions(significands(format)) {}

  std::uint64_t random() { return engine(); }
  std::uint64_t below(std::uint64_t n) { return engine() % n; }

  /// One operand: a corner, a value near 1, or any pattern.
  std::uint64_t operand() {
    const std::uint64_t kind = below(8);
    const std::uint64_t any = random();
    if (kind == 0)
      return any & (f.sign() | (f.sign() - 1));
    std::uint64_t fraction = any & ((std::uint64_t{1} << f.fraction_bits()) - 1);
    auto field = static_cast<std::uint64_t>(f.bias()) + below(9) - 4;
    if (kind >= 3) {
      fraction = fractions[below(fractions.size())];
      field = static_cast<std::uint64_t>(fields[below(fields.size())]);
    }
    return (any & 1 ? f.sign() : 0) | field << f.fraction_bits() | fraction;
  }

  /// Another operand, now and then one close to `other`, negated or not: sums that cancel.
  std::uint64_t operand_beside(std::uint64_t other) {
    if (below(4) != 0)
      return operand();
    const std::uint64_t sign = random() & 1 ? f.sign() : 0;
    const std::uint64_t binade = below(4) == 0 ? std::uint64_t{1} << f.fraction_bits() : 0;
    return ((other + below(5) - 2 + binade) & (f.sign() - 1)) | sign;
  }

  /// An integer: any number of significant bits, at the ends of the widths, or random.
  std::uint64_t integer() {
    const std::uint64_t bits = random() >> below(64);
    switch (below(4)) {
    case 0:
      return bits;
    case 1:
      return -bits;
    case 2:
      return (std::uint64_t{1} << below(64)) + below(5) - 2;
    default:
      return -(std::uint64_t{1} << below(64)) + below(5) - 2;
    }
  }

  reference::Controls controls() {
    const std::uint64_t bits = random();
    return {static_cast<int>(bits & 3), (bits & 4) != 0, (bits & 8) != 0, (bits & 16) != 0,
            (bits & 0xe0) == 0};
  }

private:
  reference::Format f;
  std::vector<int> fields;
  std::vector<std::uint64_t> fractions;
  std::mt19937_64 engine{0x7461766f6b};
};

inline std::string describe(std::uint32_t word, const std::vector<std::uint64_t>& operands,
                            const reference::Outcome& got, const reference::Outcome& want) {
  char text[64];
  std::string line;
  for (const std::uint64_t op : operands) {
    std::snprintf(text, sizeof text, "%#llx ", static_cast<unsigned long long>(op));
    line += text;
  }
  const auto add = [&](const char* label, std::uint64_t value, std::uint32_t status) {
    std::snprintf(text, sizeof text, "%s %#llx, word %#x ", label,
                  static_cast<unsigned long long>(value), status);
    line += text;
  };
  std::snprintf(text, sizeof text, "with word %#x: ", word);
  line += text;
  add("got", got.bits, got.flags);
  add("want", want.bits, want.flags);
  return line;
}

}  // namespace cases
