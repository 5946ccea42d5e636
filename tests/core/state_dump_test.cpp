// What each query prints, to the letter.
#include "sve/dump/state_dump.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <string>

#include "tests/core/captured_stderr.h"

namespace {

using namespace std::string_literals;

std::string printed(cpu_state& state, const char* query, unsigned reg = all_indices,
                    unsigned element = all_indices) {
  return captured_stderr([&] { dump_state(&state, query, reg, element); });
}

// Doublewords of z, and what follows from them: bytes ascending, special numbers of every format.
cpu_state sample() {
  cpu_state state = {};
  state.pc = 0x400abc;
  std::mt19937_64 random(1);
  for (auto& z : state.z)
    for (uint8_t& byte : z)
      byte = static_cast<uint8_t>(random());
  for (auto& p : state.p)
    for (uint8_t& byte : p)
      byte = static_cast<uint8_t>(random());
  const uint64_t z0[] = {0xbff8000000000000, 0x7ff0000000000001};
  const uint32_t z1[] = {0x3fc00000, 0x00000001, 0xff800000, 0xffc00000};
  const uint16_t z2[] = {0x3c00, 0x8000, 0x7c00, 0xfe00, 0x03ff, 0x7bff, 0xc500, 0x0400};
  for (unsigned i = 0; i < vector_bytes; i++)
    state.z[3][i] = static_cast<uint8_t>(i * 17);
  memcpy(state.z[0], z0, sizeof z0);
  memcpy(state.z[1], z1, sizeof z1);
  memcpy(state.z[2], z2, sizeof z2);
  const uint8_t p0[] = {1, 0, 2, 3, 0, 1, 1, 1, 0xfe, 1, 0, 0, 0xff, 0, 1, 0};
  memcpy(state.p[0], p0, sizeof p0);
  return state;
}

TEST(StateDump, PrintsWhatIsAsked) {
  const struct {
    const char* query;
    std::string text;
  } cases[] = {
      {"z0.d.x", "z0\t\t{d = {x = {0xbff8000000000000, 0x7ff0000000000001}}}\n"},
      {"Z0.D.X", "z0\t\t{d = {x = {0xbff8000000000000, 0x7ff0000000000001}}}\n"},
      {"z0[1].d.x", "z0[1]\t\t{d = {x = {0x7ff0000000000001}}}\n"},
      {"z0[1].d", "z0[1]\t\t{d = {x = {0x7ff0000000000001}, f = { nan}, u = {9218868437227405313}, "
                  "s = {9218868437227405313}}}\n"},
      {"z0.d.f", "z0\t\t{d = {f = {-1.500000,  nan}}}\n"},
      {"z0.d.s", "z0\t\t{d = {s = {-4613937818241073152, 9218868437227405313}}}\n"},
      {"z1.s.x", "z1\t\t{s = {x = { 0x3fc00000,  0x00000001,  0xff800000,  0xffc00000}}}\n"},
      {"z1.s.f", "z1\t\t{s = {f = { 1.500000,  0.000000, -inf, -nan}}}\n"},
      {"z1.s.u", "z1\t\t{s = {u = { 1069547520,           1,  4286578688,  4290772992}}}\n"},
      {"z1.s.s", "z1\t\t{s = {s = { 1069547520,           1,    -8388608,    -4194304}}}\n"},
      {"z2.h.f", "z2\t\t{h = {f = { 1.000000, -0.000000,  inf, -nan,  0.000061,  65504.000000, "
                 "-5.000000,  0.000061}}}\n"},
      {"z2.h.x",
       "z2\t\t{h = {x = {0x3c00, 0x8000, 0x7c00, 0xfe00, 0x03ff, 0x7bff, 0xc500, 0x0400}}}\n"},
      {"z2.h.u", "z2\t\t{h = {u = { 15360,  32768,  31744,  65024,   1023,  31743,  50432,   "
                 "1024}}}\n"},
      {"z2.h.s", "z2\t\t{h = {s = { 15360, -32768,  31744,   -512,   1023,  31743, -15104,   "
                 "1024}}}\n"},
      {"z3.b.x", "z3\t\t{b = {x = {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88, 0x99, "
                 "0xaa, 0xbb, 0xcc, 0xdd, 0xee, 0xff}}}\n"},
      {"z3.b.u", "z3\t\t{b = {u = {   0,   17,   34,   51,   68,   85,  102,  119,  136,  153,  "
                 "170,  187,  204,  221,  238,  255}}}\n"},
      {"z3.b.s", "z3\t\t{b = {s = {   0,   17,   34,   51,   68,   85,  102,  119, -120, -103,  "
                 "-86,  -69,  -52,  -35,  -18,   -1}}}\n"},
      {"z3.b.f", "z3\t\t{b = {}}\n"},
      {"z3[9]", "z3[9]\t\t{d = {x = {}, f = {}, u = {}, s = {}}, s = {x = {}, f = {}, u = {}, s = "
                "{}}, h = {x = {}, f = {}, u = {}, s = {}}, b = {x = {0x99}, u = { 153}, s = "
                "{-103}}}\n"},
      {"z3[16].b", "z3[16]\t\t{b = {x = {}, u = {}, s = {}}}\n"},
      {"z3[15].b.f", "z3[15]\t\t{b = {}}\n"},
      {"p0", "p0\t\t{d = {u = {1, 0}}, s = {u = {1, 0, 0, 1}}, h = {u = {1, 0, 0, 1, 0, 0, 1, 1}}, "
             "b = {u = {1, 0, 0, 1, 0, 1, 1, 1, 0, 1, 0, 0, 1, 0, 1, 0}}}\n"},
      {"p0..f", "p0\t\t{d = {u = {1, 0}}, s = {u = {1, 0, 0, 1}}, h = {u = {1, 0, 0, 1, 0, 0, 1, "
                "1}}, b = {u = {1, 0, 0, 1, 0, 1, 1, 1, 0, 1, 0, 0, 1, 0, 1, 0}}}\n"},
      {"p0.d.s", "p0\t\t{d = {u = {1, 0}}}\n"},
      {"p0.d.x", "p0\t\t{d = {x = {                 1,                  0}}}\n"},
      {"p0.d.u", "p0\t\t{d = {u = {1, 0}}}\n"},
      {"p0.s.s", "p0\t\t{s = {s = {          1,           0,           0,           1}}}\n"},
      {"p0.s.u", "p0\t\t{s = {u = {          1,           0,           0,           1}}}\n"},
      {"p0.h.x", "p0\t\t{h = {x = {     1,      0,      0,      1,      0,      0,      1,      "
                 "1}}}\n"},
      {"p0[3].b.s", "p0[3]\t\t{b = {s = {   1}}}\n"},
      {"p0[5]..x", "p0[5]\t\t{d = {x = {}}, s = {x = {}}, h = {x = {     0}}, b = {x = {   1}}}\n"},
      {"ip", "ip\t\t0x400abc\n"},
      {"Ip", "ip\t\t0x400abc\n"},
      {"z40", ""},
      {"p16", ""},
      {"p31.d", ""},
  };
  cpu_state state = sample();
  for (const auto& [query, text] : cases)
    EXPECT_EQ(printed(state, query), text) << query;
}

TEST(StateDump, PrintsConditionCodes) {
  const struct {
    uint64_t nzcv;
    std::string text;
  } cases[] = {
      {0, "cc\t\tN[!FirstActive] Z[!NoneActive] C[\0LastActive] V[0]\n"s},
      {flag_n, "cc\t\tN[\0FirstActive] Z[!NoneActive] C[\0LastActive] V[0]\n"s},
      {flag_z, "cc\t\tN[!FirstActive] Z[\0NoneActive] C[\0LastActive] V[0]\n"s},
      {flag_c, "cc\t\tN[!FirstActive] Z[!NoneActive] C[!LastActive] V[0]\n"s},
      {flag_v, "cc\t\tN[!FirstActive] Z[!NoneActive] C[\0LastActive] V[268435456]\n"s},
      {~0ull, "cc\t\tN[\0FirstActive] Z[\0NoneActive] C[!LastActive] V[268435456]\n"s},
  };
  cpu_state state = sample();
  for (const auto& [nzcv, text] : cases) {
    state.nzcv = nzcv;
    EXPECT_EQ(printed(state, "cc"), text) << nzcv;
    EXPECT_EQ(printed(state, "CC"), text) << nzcv;
  }
}

TEST(StateDump, PrintsHelp) {
  const std::string help =
      R"(
Prints the contents of selected SVE state to stderr.

Usage:
_ "<register_class><register_idx>[<element_idx].<element_size>.<element_type>"

Examples:
_ ""        - Print all available SVE state.
_ "z"       - Print all data vectors.
_ "p"       - Print all predicate vectors.
_ "z0"      - Print the first data vector.
_ "z0[1]"   - Print the second element of the first data vectors.
_ "[1]"     - Print the second element of all vectors.
_ ".d.f"    - Print all 64bit floating point vector elements.
_ "[4].h.s" - Print the fifth 16bit signed element of all vectors.
_ "p.h"     - Print all 16bit elements of all predicate vectors.
_ "p..x"    - Print all element sizes of all predicate vectors in hex.
_ "ip"      - Print the instruction pointer.
_ "cc"      - Print the condition codes.

WARNING: Values are only correct during emulation.
         A message will be printed if this is not the case.
)";
  std::string expected;
  for (size_t i = 0; i < help.size(); i++)
    expected += help[i] == '_' && help[i + 1] == ' ' && help[i - 1] == '\n' ? '\t' : help[i];
  cpu_state state = sample();
  EXPECT_EQ(printed(state, "help"), expected);
  EXPECT_EQ(printed(state, "hElP"), expected);
}

// ---- an independent way to the same text --------------------------------------------------------

struct Request {
  char reg_class = 'a', size = 'a', type = 'a';
  unsigned reg = all_indices, element = all_indices;
};

template <class... Values> std::string format(const char* text, Values... values) {
  char buffer[400];
  snprintf(buffer, sizeof buffer, text, values...);
  return buffer;
}

std::string joined(const std::vector<std::string>& parts) {
  std::string text;
  for (size_t i = 0; i < parts.size(); i++)
    text += (i == 0 ? "" : ", ") + parts[i];
  return text;
}

// By sign, exponent and fraction, from the definition of the format.
double value_of(uint64_t bits, int exponent_bits, int fraction_bits) {
  const int exponent_max = (1 << exponent_bits) - 1;
  const int exponent = static_cast<int>(bits >> fraction_bits) & exponent_max;
  const uint64_t fraction = bits & ((1ull << fraction_bits) - 1);
  const double sign = (bits >> (exponent_bits + fraction_bits) & 1) != 0 ? -1 : 1;
  const int least = 1 - exponent_max / 2 - fraction_bits;  // of the smallest number
  if (exponent == exponent_max)
    return std::copysign(fraction != 0 ? NAN : INFINITY, sign);
  if (exponent == 0)
    return sign * std::ldexp(static_cast<double>(fraction), least);
  return sign *
         std::ldexp(static_cast<double>(fraction | 1ull << fraction_bits), least + exponent - 1);
}

std::string z_text(char size, char type, uint64_t bits) {
  const std::string all_formats = size == 'd'   ? "0x%016lx|% f|%lu|%li"
                                  : size == 's' ? " 0x%08lx|% f|%11lu|% 11li"
                                  : size == 'h' ? "0x%04lx|% f|%6lu|% 6li"
                                                : "0x%02lx|% f|%4lu|% 4li";
  size_t start = 0;
  for (const char* t = "xfus"; *t != type; t++)
    start = all_formats.find('|', start) + 1;
  const std::string one = all_formats.substr(start, all_formats.find('|', start) - start);
  if (type == 'f')
    return format(one.c_str(), size == 'd'   ? value_of(bits, 11, 52)
                               : size == 's' ? value_of(bits, 8, 23)
                                             : value_of(bits, 5, 10));
  const int width = size == 'd' ? 64 : size == 's' ? 32 : size == 'h' ? 16 : 8;
  const auto extended = static_cast<int64_t>(bits << (64 - width)) >> (64 - width);
  return type == 's' ? format(one.c_str(), extended) : format(one.c_str(), bits);
}

std::string expected_line(const cpu_state& state, char reg_class, unsigned n, const Request& r) {
  std::vector<std::string> sizes;
  for (const char size : {'d', 's', 'h', 'b'}) {
    if (r.size != 'a' && r.size != size)
      continue;
    const unsigned bytes = size == 'd' ? 8 : size == 's' ? 4 : size == 'h' ? 2 : 1;
    const int p_width = size == 'd' ? 18 : size == 's' ? 11 : size == 'h' ? 6 : 4;
    std::vector<std::string> types;
    for (const char type : reg_class == 'z' ? "xfus"s : "."s) {
      if (reg_class == 'z' && ((r.type != 'a' && r.type != type) || (size == 'b' && type == 'f')))
        continue;
      std::vector<std::string> elements;
      for (unsigned e = 0; e < 16 / bytes; e++) {
        if (r.element != all_indices && r.element != e)
          continue;
        uint64_t bits = 0;
        if (reg_class == 'z')
          memcpy(&bits, state.z[n] + e * bytes, bytes);
        else
          bits = state.p[n][e * bytes] & 1;
        const bool plain =
            r.type == 'a' || r.type == 'f' || (size == 'd' && (r.type == 'u' || r.type == 's'));
        elements.push_back(reg_class == 'z' ? z_text(size, type, bits)
                           : plain          ? format("%d", static_cast<int>(bits))
                                            : format("%*d", p_width, static_cast<int>(bits)));
      }
      const char p_group = r.type == 'x' || (r.type == 's' && size != 'd') ? r.type : 'u';
      types.push_back((reg_class == 'z' ? type : p_group) + " = {"s + joined(elements) + "}");
    }
    sizes.push_back(size + " = {"s + joined(types) + "}");
  }
  const std::string index = r.element == all_indices ? "" : format("[%d]", r.element);
  return reg_class + std::to_string(n) + index + "\t\t{" + joined(sizes) + "}\n";
}

std::string expected_text(const cpu_state& state, const Request& r) {
  std::string text;
  for (const char reg_class : {'z', 'p'})
    for (unsigned n = 0; n < (reg_class == 'z' ? 32u : 16u); n++)
      if ((r.reg_class == 'a' || r.reg_class == reg_class) && (r.reg == all_indices || r.reg == n))
        text += expected_line(state, reg_class, n, r);
  if (r.reg_class == 'a' && r.reg == all_indices && r.element == all_indices)
    text += "ip\t\t0x400abc\ncc\t\tN[!FirstActive] Z[!NoneActive] C[\0LastActive] V[0]\n"s;
  return text;
}

TEST(StateDump, PrintsEverything) {
  cpu_state state = sample();
  const std::string everything = expected_text(state, {});
  for (const char* query :
       {static_cast<const char*>(nullptr), "", "foo", "help me", "ip ", ".q", "[x]"})
    EXPECT_EQ(printed(state, query), everything) << (query == nullptr ? "null" : query);
  EXPECT_EQ(captured_stderr([&] { info_all_registers(&state, nullptr); }), everything);
}

// Parts that do not fit are ignored.
TEST(StateDump, IgnoresTheRest) {
  const struct {
    const char* query;
    Request meaning;
  } cases[] = {
      {"zebra", {.reg_class = 'z'}},
      {"z.d.f?", {.reg_class = 'z', .size = 'd', .type = 'f'}},
      {"z.d.q", {.reg_class = 'z', .size = 'd'}},
      {"z.x", {.reg_class = 'z'}},
      {"z..x", {.reg_class = 'z', .type = 'x'}},
      {"z...x", {.reg_class = 'z'}},
      {"z1[2", {.reg_class = 'z', .reg = 1}},
      {"z1[2.d", {.reg_class = 'z', .reg = 1}},
      {"z[2", {.reg_class = 'z'}},
      {"z1[].d", {.reg_class = 'z', .reg = 1}},
      {"p 3[ 2].B.S", {.reg_class = 'p', .size = 'b', .type = 's', .reg = 3, .element = 2}},
      {"[1].b.x", {.size = 'b', .type = 'x', .element = 1}},
      {"[0]", {.element = 0}},
      {".D.f", {.size = 'd', .type = 'f'}},
      {"..U", {.type = 'u'}},
      {".h", {.size = 'h'}},
      {"P[7]", {.reg_class = 'p', .element = 7}},
      {"z-1", {.reg_class = 'z'}},
  };
  cpu_state state = sample();
  for (const auto& [query, meaning] : cases)
    EXPECT_EQ(printed(state, query), expected_text(state, meaning)) << query;
}

TEST(StateDump, PrefersTheCallersIndices) {
  cpu_state state = sample();
  EXPECT_EQ(printed(state, "z3[1].d.x", 0, 0), "z0[0]\t\t{d = {x = {0xbff8000000000000}}}\n");
  EXPECT_EQ(printed(state, "z0[1].d.x", all_indices, 0), printed(state, "z0[0].d.x"));
  EXPECT_EQ(printed(state, "z3[1].d.x", 0), printed(state, "z0[1].d.x"));
  EXPECT_EQ(printed(state, nullptr, 5), printed(state, "z5") + printed(state, "p5"));
  EXPECT_EQ(printed(state, "ip", 0), "");
  EXPECT_EQ(printed(state, "cc", all_indices, 0), "");
}

// Well-formed queries of every shape.
TEST(StateDump, PrintsWhatAnyQueryAsks) {
  cpu_state state = sample();
  std::mt19937 random(2);
  const auto pick = [&](const std::string& letters) { return letters[random() % letters.size()]; };
  const auto any_case = [&](char c) {
    return std::string(1, static_cast<char>(random() % 2 != 0 ? toupper(c) : c));
  };
  for (int i = 0; i < 2000 / TEST_SLOWDOWN; i++) {
    Request r;
    std::string query;
    r.reg_class = pick("zpa");
    if (r.reg_class != 'a')
      query += any_case(r.reg_class);
    if (r.reg_class != 'a' && random() % 4 != 0)
      query += std::to_string(r.reg = random() % 34);
    if (random() % 2 != 0)
      query += "[" + std::to_string(r.element = random() % 18) + "]";
    r.size = pick("dshba");
    r.type = pick("xfusa");
    if (r.size != 'a' || r.type != 'a')
      query += "." + (r.size == 'a' ? "" : any_case(r.size));
    if (r.type != 'a')
      query += "." + any_case(r.type);
    ASSERT_EQ(printed(state, query.c_str()), expected_text(state, r)) << query;
  }
}

TEST(StateDump, PrintsEveryHalfPrecisionNumber) {
  cpu_state state = {};
  for (uint32_t bits = 0; bits < 0x10000; bits += 8 * TEST_SLOWDOWN) {
    std::string elements;
    for (unsigned e = 0; e < 8; e++) {
      const auto half = static_cast<uint16_t>(bits + e);
      memcpy(state.z[0] + e * 2, &half, 2);
      elements += (e == 0 ? "" : ", ") + format("% f", value_of(half, 5, 10));
    }
    ASSERT_EQ(printed(state, "z0.h.f"), "z0\t\t{h = {f = {" + elements + "}}}\n") << bits;
  }
}

}  // namespace
