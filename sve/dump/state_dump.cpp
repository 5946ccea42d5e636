#include "sve/dump/state_dump.h"

#include <strings.h>

#include <bit>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <type_traits>

#include "sve/state/operands.h"

int SVE_Printer::print(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int result = vfprintf(stderr, format, arguments);
  va_end(arguments);
  return result;
}

namespace {

constexpr char all = 'a';

// ---- the query ----------------------------------------------------------------------------------

char lower(char letter) { return static_cast<char>(letter | 0x20); }

bool parse_word(SVE_Printer& request, const char* query) {
  for (const char* word : {"help", "ip", "cc"})
    if (strcasecmp(query, word) == 0) {
      request.reg_class = word[0];
      return true;
    }
  return false;
}

// Returns the number of characters that belong to class, register and element. A form fits when
// all of it does, which is when its end is stored.
int parse_selection(SVE_Printer& request, const char* query) {
  char letter[2] = {all};
  unsigned reg = 0;
  unsigned element = 0;
  int end = 0;
  const auto select = [&](char reg_class, uint32_t reg_index, uint32_t element_index) {
    request.reg_class = lower(reg_class);
    request.reg_index = reg_index;
    request.element_index = element_index;
    return end;
  };
  if (sscanf(query, "%1[zpZP]%u[%u]%n", letter, &reg, &element, &end), end != 0)
    return select(letter[0], reg, element);
  if (sscanf(query, "%1[zpZP][%u]%n", letter, &element, &end), end != 0)
    return select(letter[0], all_indices, element);
  if (sscanf(query, "%1[zpZP]%u%n", letter, &reg, &end), end != 0)
    return select(letter[0], reg, all_indices);
  if (sscanf(query, "%1[zpZP]%n", letter, &end), end != 0)
    return select(letter[0], all_indices, all_indices);
  if (sscanf(query, "[%u]%n", &element, &end), end != 0)
    return select(all, all_indices, element);
  return 0;
}

void parse_format(SVE_Printer& request, const char* rest) {
  char size[2] = {all};
  char type[2] = {all};
  if (sscanf(rest, ".%1[dshbDSHB].%1[xfusXFUS]", size, type) == 2 ||
      sscanf(rest, ".%1[dshbDSHB]", size) == 1 || sscanf(rest, "..%1[xfusXFUS]", type) == 1) {
    request.size = lower(size[0]);
    request.type = lower(type[0]);
  }
}

SVE_Printer parse(cpu_state* state, const char* query) {
  SVE_Printer request = {state, all, all, all, all_indices, all_indices};
  if (query != nullptr && !parse_word(request, query))
    parse_format(request, query + parse_selection(request, query));
  return request;
}

bool selects(char asked, char letter) { return asked == all || asked == letter; }

bool selects(uint32_t asked, uint32_t index) { return asked == all_indices || asked == index; }

// ---- groups -------------------------------------------------------------------------------------

// Goes in front of each item of a list.
struct Separator {
  const char* text = "";

  void print(SVE_Printer& out) {
    out.print("%s", text);
    text = ", ";
  }
};

template <class Element>
void print_type_group(SVE_Printer& out, char type, unsigned elements, Element print_element) {
  Separator separator;
  out.print("%c = {", type);
  for (unsigned e = 0; e < elements; e++)
    if (selects(out.element_index, e)) {
      separator.print(out);
      print_element(e);
    }
  out.print("}");
}

template <class Sizes> void print_line(SVE_Printer& out, const char* name, Sizes print_sizes) {
  if (out.element_index == all_indices)
    out.print("%s\t\t{", name);
  else
    out.print("%s[%i]\t\t{", name, static_cast<int>(out.element_index));
  print_sizes();
  out.print("}\n");
}

// ---- Z registers --------------------------------------------------------------------------------

// A smaller binary floating-point format in double precision, exactly. Done on the bits, since the
// caller may be a debugger that stopped a thread with FPCR.FZ set.
template <unsigned exponent_bits, unsigned fraction_bits> double widen(uint64_t bits) {
  constexpr uint64_t exponent_max = (1u << exponent_bits) - 1;
  constexpr uint64_t bias_difference = 1023 - exponent_max / 2;
  constexpr uint64_t infinity = 0x7ff;
  constexpr unsigned wide_fraction_bits = 52;
  const uint64_t sign = bits >> (exponent_bits + fraction_bits) << 63;
  uint64_t exponent = bits >> fraction_bits & exponent_max;
  uint64_t fraction = bits & ((1ull << fraction_bits) - 1);
  if (exponent == 0 && fraction == 0)
    return std::bit_cast<double>(sign);
  if (exponent == 0) {
    const unsigned shift = fraction_bits + 1 - std::bit_width(fraction);
    fraction = fraction << shift & ((1ull << fraction_bits) - 1);
    exponent = bias_difference + 1 - shift;
  } else {
    exponent = exponent == exponent_max ? infinity : exponent + bias_difference;
  }
  return std::bit_cast<double>(sign | exponent << wide_fraction_bits |
                               fraction << (wide_fraction_bits - fraction_bits));
}

double as_double(uint64_t bits) { return std::bit_cast<double>(bits); }
double as_double(uint32_t bits) { return widen<8, 23>(bits); }
double as_double(uint16_t bits) { return widen<5, 10>(bits); }

template <class T> struct ZFormat;
template <> struct ZFormat<uint64_t> {
  static constexpr char size = 'd';
  static constexpr const char *x = "0x%016lx", *u = "%lu", *s = "%li";
};
template <> struct ZFormat<uint32_t> {
  static constexpr char size = 's';
  static constexpr const char *x = " 0x%08x", *u = "% 11u", *s = "% 11i";
};
template <> struct ZFormat<uint16_t> {
  static constexpr char size = 'h';
  static constexpr const char *x = "0x%04hx", *u = "% 6hu", *s = "% 6hi";
};
template <> struct ZFormat<uint8_t> {
  static constexpr char size = 'b';
  static constexpr const char *x = "0x%02hhx", *u = "% 4hhu", *s = "% 4hhi";
};

template <class T> void print_z_element(SVE_Printer& out, char type, T value) {
  using Format = ZFormat<T>;
  if (type == 'x')
    out.print(Format::x, value);
  else if (type == 'u')
    out.print(Format::u, value);
  else if (type == 's')
    out.print(Format::s, static_cast<std::make_signed_t<T>>(value));
  else if constexpr (sizeof(T) > 1)
    out.print("% f", as_double(value));
}

template <class T> void print_z_size(SVE_Printer& out, Separator& separator, const uint8_t* slot) {
  if (!selects(out.size, ZFormat<T>::size))
    return;
  separator.print(out);
  out.print("%c = {", ZFormat<T>::size);
  Separator types;
  for (char type : {'x', 'f', 'u', 's'}) {
    if (!selects(out.type, type) || (type == 'f' && sizeof(T) == 1))
      continue;
    types.print(out);
    print_type_group(out, type, vector_bytes / sizeof(T), [&](unsigned e) {
      T value;
      memcpy(&value, slot + e * sizeof value, sizeof value);
      print_z_element(out, type, value);
    });
  }
  out.print("}");
}

void print_z(SVE_Printer& out, unsigned number) {
  const uint8_t* const slot = out.state->z[number];
  print_line(out, aarch64_z_reg::zname[number], [&] {
    Separator separator;
    print_z_size<uint64_t>(out, separator, slot);
    print_z_size<uint32_t>(out, separator, slot);
    print_z_size<uint16_t>(out, separator, slot);
    print_z_size<uint8_t>(out, separator, slot);
  });
}

// ---- P registers --------------------------------------------------------------------------------

struct PFormat {
  char group;
  const char* element;
};

// A size of a predicate element has one type group, whatever type is asked.
struct PSize {
  char size;
  size_t bytes;
  PFormat x, u, s, other;
};

constexpr PSize p_sizes[] = {
    {'d', 8, {'x', "% 18i"}, {'u', "%i"}, {'u', "%i"}, {'u', "%i"}},
    {'s', 4, {'x', "% 11i"}, {'u', "% 11i"}, {'s', "% 11i"}, {'u', "%i"}},
    {'h', 2, {'x', "% 6i"}, {'u', "% 6i"}, {'s', "% 6i"}, {'u', "%i"}},
    {'b', 1, {'x', "% 4i"}, {'u', "% 4i"}, {'s', "% 4i"}, {'u', "%i"}},
};

const PFormat& p_format(const PSize& size, char type) {
  switch (type) {
  case 'x':
    return size.x;
  case 'u':
    return size.u;
  case 's':
    return size.s;
  default:
    return size.other;
  }
}

void print_p(SVE_Printer& out, unsigned number) {
  const uint8_t* const slot = out.state->p[number];
  print_line(out, aarch64_p_reg::pname[number], [&] {
    Separator separator;
    for (const PSize& size : p_sizes) {
      if (!selects(out.size, size.size))
        continue;
      const PFormat& format = p_format(size, out.type);
      separator.print(out);
      out.print("%c = {", size.size);
      print_type_group(out, format.group, vector_bytes / size.bytes,
                       [&](unsigned e) { out.print(format.element, slot[e * size.bytes] & 1); });
      out.print("}");
    }
  });
}

// ---- the rest -----------------------------------------------------------------------------------

void print_condition_codes(SVE_Printer& out) {
  const uint64_t nzcv = out.state->nzcv;
  const auto mark = [](bool negated) { return negated ? '!' : '\0'; };
  out.print("cc\t\t");
  out.print("N[%cFirstActive]", mark((nzcv & flag_n) == 0));
  out.print(" Z[%cNoneActive]", mark((nzcv & flag_z) == 0));
  out.print(" C[%cLastActive]", mark((nzcv & flag_c) != 0));
  out.print(" V[%i]", static_cast<int>(nzcv & flag_v));
  out.print("\n");
}

constexpr const char* help_text =
    "\n"
    "Prints the contents of selected SVE state to stderr.\n"
    "\n"
    "Usage:\n"
    "\t \"<register_class><register_idx>[<element_idx].<element_size>.<element_type>\"\n"
    "\n"
    "Examples:\n"
    "\t \"\"        - Print all available SVE state.\n"
    "\t \"z\"       - Print all data vectors.\n"
    "\t \"p\"       - Print all predicate vectors.\n"
    "\t \"z0\"      - Print the first data vector.\n"
    "\t \"z0[1]\"   - Print the second element of the first data vectors.\n"
    "\t \"[1]\"     - Print the second element of all vectors.\n"
    "\t \".d.f\"    - Print all 64bit floating point vector elements.\n"
    "\t \"[4].h.s\" - Print the fifth 16bit signed element of all vectors.\n"
    "\t \"p.h\"     - Print all 16bit elements of all predicate vectors.\n"
    "\t \"p..x\"    - Print all element sizes of all predicate vectors in hex.\n"
    "\t \"ip\"      - Print the instruction pointer.\n"
    "\t \"cc\"      - Print the condition codes.\n"
    "\n"
    "WARNING: Values are only correct during emulation.\n"
    "         A message will be printed if this is not the case.\n";

}  // namespace

int dump_state(cpu_state* state, const char* query, unsigned int reg_index,
               unsigned int element_index) {
  SVE_Printer out = parse(state, query);
  if (reg_index != all_indices)
    out.reg_index = reg_index;
  if (element_index != all_indices)
    out.element_index = element_index;
  const bool no_index = out.reg_index == all_indices && out.element_index == all_indices;

  if (selects(out.reg_class, 'z'))
    for (unsigned n = 0; n < z_registers; n++)
      if (selects(out.reg_index, n))
        print_z(out, n);
  if (selects(out.reg_class, 'p'))
    for (unsigned n = 0; n < p_registers; n++)
      if (selects(out.reg_index, n))
        print_p(out, n);
  if (selects(out.reg_class, 'i') && no_index) {
    out.print("ip\t\t");
    out.print("%p", reinterpret_cast<void*>(state->pc));
    out.print("\n");
  }
  if (selects(out.reg_class, 'c') && no_index)
    print_condition_codes(out);
  if (out.reg_class == 'h')
    out.print("%s", help_text);
  return 0;
}

int info_all_registers(cpu_state* state, const char* query) {
  return dump_state(state, query, all_indices, all_indices);
}
