#include "sve/state/operands.h"

#include <cstddef>

namespace {

// Register names by rule: a letter, the number, a suffix. The texts are laid out at compile time.
template <size_t N> struct NameTexts {
  char text[N][8] = {};

  constexpr NameTexts(char letter, const char* suffix) {
    for (size_t n = 0; n < N; n++) {
      char* out = text[n];
      *out++ = letter;
      if (n >= 10)
        *out++ = static_cast<char>('0' + n / 10);
      *out++ = static_cast<char>('0' + n % 10);
      for (const char* c = suffix; *c != 0; c++)
        *out++ = *c;
    }
  }
};

template <size_t N> constexpr std::array<const char*, N> pointers(const NameTexts<N>& texts) {
  std::array<const char*, N> table{};
  for (size_t n = 0; n < N; n++)
    table[n] = texts.text[n];
  return table;
}

constexpr register_name_table with_31(register_name_table table, const char* name) {
  table[31] = name;
  return table;
}

constexpr NameTexts<32> z('z', ""), z_b('z', ".b"), z_h('z', ".h"), z_s('z', ".s"), z_d('z', ".d");
constexpr NameTexts<16> p('p', ""), p_m('p', "/m"), p_z('p', "/z");
constexpr NameTexts<16> p_b('p', ".b"), p_h('p', ".h"), p_s('p', ".s"), p_d('p', ".d");
constexpr NameTexts<32> w('w', ""), x('x', "");

}  // namespace

constinit const register_name_table aarch64_z_reg::zname = pointers(z);
constinit const register_name_table aarch64_z_reg::zname_b = pointers(z_b);
constinit const register_name_table aarch64_z_reg::zname_h = pointers(z_h);
constinit const register_name_table aarch64_z_reg::zname_s = pointers(z_s);
constinit const register_name_table aarch64_z_reg::zname_d = pointers(z_d);

constinit const predicate_name_table aarch64_p_reg::pname = pointers(p);
constinit const predicate_name_table aarch64_p_reg::pname_m = pointers(p_m);
constinit const predicate_name_table aarch64_p_reg::pname_z = pointers(p_z);
constinit const predicate_name_table aarch64_p_reg::pname_b = pointers(p_b);
constinit const predicate_name_table aarch64_p_reg::pname_h = pointers(p_h);
constinit const predicate_name_table aarch64_p_reg::pname_s = pointers(p_s);
constinit const predicate_name_table aarch64_p_reg::pname_d = pointers(p_d);

constinit const register_name_table aarch64_i_reg::wname = with_31(pointers(w), "wzr");
constinit const register_name_table aarch64_i_reg::xname = with_31(pointers(x), "xzr");
constinit const register_name_table aarch64_i_rsp_reg::wname = with_31(pointers(w), "illegal");
constinit const register_name_table aarch64_i_rsp_reg::xname = with_31(pointers(x), "sp");
