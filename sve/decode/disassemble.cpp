#include "sve/decode/disassemble.h"

#include <array>
#include <bit>
#include <cstdio>
#include <string_view>

#include "sve/decode/model_forms.h"

namespace {

using namespace stubs;

// An operand of a word: how it prints, the number in it, and whether it is the default.
struct Operand {
  std::string text;
  long number = 0;
  bool is_default = false;
};

// The default of immediates is 0, where they may be left out at all.
Operand printed(long number) { return {std::to_string(number), number, number == 0}; }
Operand printed(int number) { return printed(long{number}); }
Operand printed(unsigned number) { return printed(static_cast<long>(number)); }
Operand printed(aarch64_z_reg reg) { return {aarch64_z_reg::zname[reg.index], reg.index}; }
Operand printed(aarch64_p_reg reg) { return {aarch64_p_reg::pname[reg.index]}; }
Operand printed(aarch64_i_reg reg) {
  const uint32_t width = reg.kind != aarch64_i_reg::none ? reg.kind : reg.dn_kind;
  return {width == element_doubleword ? aarch64_i_reg::xname[reg.index]
                                      : aarch64_i_reg::wname[reg.index]};
}
Operand printed(aarch64_i_rsp_reg reg) {
  if (reg.kind == element_doubleword)
    return {aarch64_i_rsp_reg::xname[reg.index]};
  return {reg.index == 31 ? "wsp" : aarch64_i_rsp_reg::wname[reg.index]};
}
Operand printed(aarch64_sve_fp_arith_imm immediate) { return printed(unsigned{immediate.value}); }
Operand printed(aarch64_sve_fp_dup_imm immediate) {
  char text[32];
  snprintf(text, sizeof text, "%.18e", immediate.wide);
  return {text};
}

constexpr const char* size_letters[] = {"b", "h", "s", "d", "q"};

template <class Form> Operand operand(uint32_t word) {
  if constexpr (requires { Form::scalar_bits; })
    return {size_letters[std::countr_zero(Form::scalar_bits / 8)] +
            std::to_string(Form::decode(word))};
  else
    return printed(Form::decode(word));
}

// The operand of a form for elements of a size.
template <template <class> class Form> Operand operand_of_size(uint32_t word, unsigned size) {
  switch (size) {
  case element_byte:
    return operand<Form<U8>>(word);
  case element_halfword:
    return operand<Form<U16>>(word);
  case element_word:
    return operand<Form<U32>>(word);
  case element_doubleword:
    return operand<Form<U64>>(word);
  default:
    return operand<Form<U128>>(word);
  }
}

Operand pattern(uint32_t word, unsigned) {
  static constexpr const char* small[] = {"pow2", "vl1", "vl2",  "vl3",  "vl4",  "vl5",   "vl6",
                                          "vl7",  "vl8", "vl16", "vl32", "vl64", "vl128", "vl256"};
  static constexpr const char* large[] = {"mul4", "mul3", "all"};
  const unsigned number = Pattern<U8>::decode(word);
  if (number < std::size(small))
    return {small[number]};
  if (number >= 29)
    return {large[number - 29], 0, number == 31};
  return {"#" + std::to_string(number)};
}

Operand prefetch(uint32_t word, unsigned) {
  static constexpr const char* operations[] = {"pldl1keep", "pldl1strm", "pldl2keep", "pldl2strm",
                                               "pldl3keep", "pldl3strm", nullptr,     nullptr,
                                               "pstl1keep", "pstl1strm", "pstl2keep", "pstl2strm",
                                               "pstl3keep", "pstl3strm", nullptr,     nullptr};
  const unsigned number = Prfop<U8>::decode(word);
  return {operations[number] != nullptr ? operations[number] : "#" + std::to_string(number)};
}

// Zero has two encodings.
template <template <class> class Form> Operand shifted(uint32_t word, unsigned) {
  const bool shifted_zero = field(word, 5, 9) == 0x100;
  return {shifted_zero ? "0, lsl #8" : std::to_string(Form<U8>::decode(word))};
}

Operand multiplier(uint32_t word, unsigned) {
  const unsigned number = Multiplier<U8>::decode(word);
  return {std::to_string(number), number, number == 1};
}

// The element of a bitmask immediate has the least size that its value repeats in.
unsigned bitmask_size(uint32_t word) {
  const unsigned period = field(word, 17, 1) << 6 | (~field(word, 5, 6) & 0x3f);
  const int bits = period == 0 ? 64 : std::bit_floor(period);
  return bits <= 8 ? 0 : std::countr_zero(static_cast<unsigned>(bits)) - 3;
}

Operand bitmask(uint32_t word, unsigned) {
  char text[32];
  const uint64_t value = BitmaskImm<U64>::decode(word).value;
  snprintf(text, sizeof text, "0x%llx",
           static_cast<unsigned long long>(value & (~0ull >> (64 - (8u << bitmask_size(word))))));
  return {text};
}

struct NamedForm {
  std::string_view name;
  Operand (*operand)(uint32_t word, unsigned size);
};

#define NAMED(form)                                                                                \
  { #form, operand_of_size < form> }
constexpr NamedForm forms[] = {
    NAMED(Zd),
    NAMED(Zdn),
    NAMED(Zda),
    NAMED(Zt),
    NAMED(Zn),
    NAMED(Zm),
    NAMED(Zm5),
    NAMED(Za),
    NAMED(Za5),
    NAMED(Zm3),
    NAMED(Zm4),
    NAMED(Vd),
    NAMED(Vdn),
    NAMED(Vn),
    NAMED(Dd),
    NAMED(Pd),
    NAMED(Pdn),
    NAMED(Pdm),
    NAMED(Pt),
    NAMED(Pn),
    NAMED(Pm),
    NAMED(Pg),
    NAMED(Pg4),
    NAMED(PgAt5),
    {"PgAt16", operand_of_size<PgAt16M>},
    NAMED(Rd),
    NAMED(Rdn),
    NAMED(Rn),
    NAMED(Rm),
    NAMED(Wdn),
    NAMED(Wn),
    NAMED(Wm),
    NAMED(Xd),
    NAMED(Xdn),
    NAMED(Xn),
    NAMED(Xm),
    NAMED(Base),
    NAMED(RnSP),
    NAMED(XdSP),
    NAMED(XnSPAt16),
    NAMED(SImm4At16),
    NAMED(SImm5At5),
    NAMED(SImm5At16),
    NAMED(SImm6At5),
    NAMED(SImm8At5),
    NAMED(SImm9),
    NAMED(UImm3At16),
    NAMED(UImm5At16),
    NAMED(SImm6At16),
    NAMED(UImm6At16),
    NAMED(UImm7At14),
    NAMED(UImm8At5),
    NAMED(RotAt10),
    NAMED(RotAt13),
    NAMED(RotAt16),
    NAMED(IndexAt19),
    NAMED(IndexAt20),
    NAMED(IndexAt22),
    NAMED(DupIndex),
    NAMED(ExtPosition),
    NAMED(FPConstant),
    NAMED(FPImm8),
    NAMED(LeftShiftAt5),
    NAMED(LeftShiftAt16),
    NAMED(RightShiftAt5),
    NAMED(RightShiftAt16),
    {"Pattern", pattern},
    {"Prfop", prefetch},
    {"Multiplier", multiplier},
    {"BitmaskImm", bitmask},
    {"SImm8Shifted", shifted<SImm8Shifted>},
    {"UImm8Shifted", shifted<UImm8Shifted>},
};
#undef NAMED

// Reads an assembly form from left to right.
class Printer {
public:
  Printer(const Row& row, uint32_t word)
      : rest_(row.assembly()), word_(word),
        size_(rest_.ends_with("#BitmaskImm") ? bitmask_size(word) : row.size) {}

  std::string print() {
    bool is_default;
    return until('\0', is_default);
  }

private:
  char next() const { return rest_.empty() ? '\0' : rest_.front(); }
  bool take(std::string_view text) {
    const bool there = rest_.starts_with(text);
    if (there)
      rest_.remove_prefix(text.size());
    return there;
  }

  std::string until(char end, bool& is_default) {
    std::string text;
    is_default = true;
    while (next() != end) {
      if (rest_.starts_with("{,"))
        text += optional(is_default);
      else if (take("{"))
        text += list();
      else if (take("#"))
        text += "#" + number(is_default);
      else if (isalpha(next()))
        text += word(is_default);
      else
        text += character();
    }
    return text;
  }

  std::string character() {
    const char c = rest_.front();
    rest_.remove_prefix(1);
    return std::string(1, c);
  }

  std::string_view name() {
    size_t length = 0;
    while (length < rest_.size() && isalnum(rest_[length]))
      length++;
    const std::string_view name = rest_.substr(0, length);
    rest_.remove_prefix(length);
    return name;
  }

  long integer() {
    long value = 0;
    for (; isdigit(next()); rest_.remove_prefix(1))
      value = 10 * value + (next() - '0');
    return value;
  }

  // A word that names a form, or one that stands for itself.
  Operand operand(std::string_view name) const {
    for (const NamedForm& form : forms)
      if (form.name == name)
        return form.operand(word_, size_);
    if (name == "T")
      return {size_letters[size_], 0, true};
    std::string text(name);
    for (char& c : text)
      c = static_cast<char>(tolower(c));
    return {text, 0, true};
  }

  std::string word(bool& is_default) {
    const Operand found = operand(name());
    is_default &= found.is_default;
    return found.text;
  }

  std::string number(bool& is_default) {
    if (!isalpha(next())) {  // as it stands
      const size_t length = rest_.find_first_not_of("0123456789.");
      const std::string text(rest_.substr(0, length));
      rest_.remove_prefix(text.size());
      return text;
    }
    Operand found = operand(name());
    is_default &= found.is_default;
    if (take("(")) {
      const std::string_view texts = rest_.substr(0, rest_.find(')'));
      rest_.remove_prefix(texts.size() + 1);
      const size_t comma = texts.find(", ");
      return std::string(found.number == 0 ? texts.substr(0, comma) : texts.substr(comma + 2));
    }
    if (!take("*"))
      return found.text;
    found.number *= integer();
    if (take("+"))
      found.number += integer();
    return std::to_string(found.number);
  }

  // "{, ...}", perhaps with another one in it.
  std::string optional(bool& is_default) {
    take("{");
    bool inner_is_default;
    const std::string text = until('}', inner_is_default);
    take("}");
    is_default &= inner_is_default;
    return inner_is_default ? "" : text;
  }

  // Registers in a row; more than two whose numbers ascend are printed as a range.
  std::string list() {
    const auto first = static_cast<unsigned>(operand(name()).number);
    take(".");
    const std::string suffix = "." + operand(name()).text;
    const unsigned count = take(" x") ? static_cast<unsigned>(integer()) : 1;
    take("}");
    const auto at = [&](unsigned k) {
      return aarch64_z_reg::zname[(first + k) % z_registers] + suffix;
    };
    if (count > 2 && first + count <= z_registers)
      return "{" + at(0) + "-" + at(count - 1) + "}";
    std::string text = "{" + at(0);
    for (unsigned k = 1; k < count; k++)
      text += ", " + at(k);
    return text + "}";
  }

  std::string_view rest_;
  uint32_t word_;
  unsigned size_;
};

}  // namespace

std::string disassemble(const Row& row, uint32_t word) { return Printer(row, word).print(); }
