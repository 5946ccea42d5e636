// The little decoder against objdump's mnemonics and targets.
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <vector>

#include "runtime/ir/decode.h"
#include "runtime/ir/encode.h"
#include "runtime/ir/extensions.h"
#include "tests/runtime/ir_disassembler.h"

namespace {

using ir::control;
using ir::pc_relative;

std::string mnemonic(const std::string& text) { return text.substr(0, text.find(' ')); }

// The address at the end of a text.
std::uint64_t target(const std::string& text) {
  return std::stoull(text.substr(text.rfind("0x")), nullptr, 16);
}

control expected_control(const std::string& text) {
  static const std::map<std::string, control> by_mnemonic = {
      {"b", control::jump},
      {"b.al", control::jump},
      {"b.nv", control::jump},
      {"bc.al", control::jump},
      {"bc.nv", control::jump},
      {"bl", control::call},
      {"cbz", control::conditional},
      {"cbnz", control::conditional},
      {"tbz", control::conditional},
      {"tbnz", control::conditional},
      {"br", control::jump_register},
      {"braa", control::jump_register},
      {"brab", control::jump_register},
      {"braaz", control::jump_register},
      {"brabz", control::jump_register},
      {"blr", control::call_register},
      {"blraa", control::call_register},
      {"blrab", control::call_register},
      {"blraaz", control::call_register},
      {"blrabz", control::call_register},
      {"ret", control::ret},
      {"retaa", control::ret},
      {"retab", control::ret},
      {"svc", control::system_call},
      {"brk", control::exception},
      {"hlt", control::exception},
      {"hvc", control::exception},
      {"smc", control::exception},
      {"dcps1", control::exception},
      {"dcps2", control::exception},
      {"dcps3", control::exception},
      {"tcancel", control::exception},
      {"eret", control::exception},
      {"eretaa", control::exception},
      {"eretab", control::exception},
      {"drps", control::exception},
      {"udf", control::exception},
  };
  const std::string name = mnemonic(text);
  if (const auto row = by_mnemonic.find(name); row != by_mnemonic.end()) {
    return row->second;
  }
  if (name.starts_with("b.") || name.starts_with("bc.")) {
    return control::conditional;
  }
  // Without aliases that is IC IVAU.
  return text.starts_with("sys #3, C7, C5, #1") ? control::cache_flush : control::none;
}

// Random words of the whole space, more of them where branches and system instructions are, and the
// forms that need many fixed bits.
std::vector<std::uint32_t> sample_words() {
  std::mt19937 random(7);
  std::vector<std::uint32_t> words;
  constexpr std::uint32_t fixed[] = {0xd61f0000, 0xd63f0000, 0xd65f0000, 0xd61f081f, 0xd61f0c1f,
                                     0xd63f081f, 0xd63f0c1f, 0xd71f0800, 0xd71f0c00, 0xd73f0800,
                                     0xd73f0c00, 0xd65f0bff, 0xd65f0fff, 0xd50b7520, 0x00000000,
                                     0xd4000001, 0xd4200000, 0xd4400000, 0xd4a00001, 0xd69f03e0,
                                     0xd69f0bff, 0xd6bf03e0};
  for (const std::uint32_t word : fixed) {
    for (unsigned i = 0; i < 40; ++i) {
      words.push_back(word);
      words.push_back(word | (random() & 0x3ff));
      words.push_back(word ^ 1u << (random() % 32));
    }
  }
  for (unsigned i = 0; i < 100000; ++i) {
    words.push_back(random());
    words.push_back(0x14000000 | (random() & 0xe3ffffff));
  }
  for (unsigned i = 0; i < 20000; ++i) {
    words.push_back(0x10000000 | (random() & 0xe8ffffff));  // ADR, ADRP, literals
  }
  return words;
}

struct sampled {
  std::vector<std::uint32_t> words = sample_words();
  std::vector<std::string> texts = ir_test::disassemble(words);
};

const sampled& sample() {
  static const sampled all;
  return all;
}

TEST(decode, control_transfers_and_their_targets) {
  std::map<control, unsigned> seen;
  for (size_t i = 0; i < sample().words.size(); ++i) {
    const std::uint32_t word = sample().words[i];
    const std::string& text = sample().texts[i];
    if (text == ir_test::undefined) {
      continue;
    }
    const control what = expected_control(text);
    ASSERT_EQ(ir::control_of(word), what) << text;
    ++seen[what];
    if (what == control::jump || what == control::call || what == control::conditional) {
      ASSERT_EQ(4 * i + static_cast<std::uint64_t>(ir::branch_offset(word)), target(text)) << text;
    }
    if (what == control::jump_register || what == control::call_register || what == control::ret) {
      const std::string name = "x" + std::to_string(ir::branch_register(word));
      const bool implied = mnemonic(text) == text && name == "x30";
      const bool zero_register = ir::branch_register(word) == 31;
      ASSERT_TRUE(implied || zero_register || text.starts_with(mnemonic(text) + " " + name))
          << text;
    }
  }
  for (const control what : {control::none, control::jump, control::call, control::conditional,
                             control::jump_register, control::call_register, control::ret,
                             control::system_call, control::cache_flush, control::exception}) {
    EXPECT_GE(seen[what], 40u) << static_cast<int>(what);
  }
}

TEST(decode, conditionals_as_far_as_they_reach) {
  struct reach {
    std::uint32_t word;
    std::int64_t limit;
  };
  constexpr reach reaches[] = {
      {0x54000001, 1 << 20}, {0xb5000005, 1 << 20}, {0x3600001c, 1 << 15}, {0xb7f80003, 1 << 15}};
  for (const reach& branch : reaches) {
    EXPECT_FALSE(ir::branch_reaches(branch.word, branch.limit));
    EXPECT_FALSE(ir::branch_reaches(branch.word, -branch.limit - 4));
    for (const std::int64_t offset : {-branch.limit, std::int64_t{-4}, branch.limit - 4}) {
      EXPECT_TRUE(ir::branch_reaches(branch.word, offset));
      const std::uint32_t redirected = ir::redirected_branch(branch.word, offset);
      EXPECT_EQ(ir::branch_offset(redirected), offset);
      EXPECT_EQ(ir::redirected_branch(redirected, 0), ir::redirected_branch(branch.word, 0));
    }
  }
}

TEST(decode, inverted_conditionals) {
  static const std::map<std::string, std::string> opposite = {
      {"cbz", "cbnz"}, {"tbz", "tbnz"}, {"eq", "ne"}, {"cs", "cc"}, {"mi", "pl"},
      {"vs", "vc"},    {"hi", "ls"},    {"ge", "lt"}, {"gt", "le"}};
  const auto invert_name = [](const std::string& name) {
    const size_t dot = name.find('.') + 1;  // 0 if there is none
    for (const auto& [one, other] : opposite) {
      const std::string rest = name.substr(dot);
      if (rest == one || rest == other) {
        return name.substr(0, dot) + (rest == one ? other : one);
      }
    }
    return std::string("?");
  };
  std::vector<std::uint32_t> inverted;
  std::vector<std::string> expected;
  for (size_t i = 0; i < sample().words.size(); ++i) {
    const std::string& text = sample().texts[i];
    if (text == ir_test::undefined || expected_control(text) != control::conditional) {
      continue;
    }
    constexpr int distance = 8;
    char place[32];
    snprintf(place, sizeof place, "0x%zx", 4 * inverted.size() + distance);
    const size_t operands = mnemonic(text).size();
    expected.push_back(invert_name(mnemonic(text)) +
                       text.substr(operands, text.rfind("0x") - operands) + place);
    inverted.push_back(ir::inverted_branch(sample().words[i], distance));
  }
  const auto texts = ir_test::disassemble(inverted);
  ASSERT_GE(texts.size(), 1000u);
  for (size_t i = 0; i < texts.size(); ++i) {
    ASSERT_EQ(texts[i], expected[i]);
  }
}

TEST(decode, operands_relative_to_the_pc) {
  static const std::map<std::string, pc_relative> by_mnemonic = {{"adr", pc_relative::adr},
                                                                 {"adrp", pc_relative::adrp},
                                                                 {"ldr", pc_relative::load},
                                                                 {"ldrsw", pc_relative::load},
                                                                 {"prfm", pc_relative::prefetch}};
  std::map<pc_relative, unsigned> seen;
  std::vector<std::uint32_t> loads;
  std::vector<std::string> expected;
  for (size_t i = 0; i < sample().words.size(); ++i) {
    const std::uint32_t word = sample().words[i];
    const std::string& text = sample().texts[i];
    const auto row = by_mnemonic.find(mnemonic(text));
    // With brackets it has a base register.
    const bool relative = row != by_mnemonic.end() && text.find('[') == std::string::npos;
    const pc_relative what = relative ? row->second : pc_relative::none;
    ASSERT_EQ(ir::pc_relative_of(word),
              text == ir_test::undefined ? ir::pc_relative_of(word) : what)
        << text;
    ++seen[what];
    if (what != pc_relative::none) {
      ASSERT_EQ(ir::pc_relative_target(word, 4 * i), target(text)) << text;
    }
    if (what == pc_relative::load) {
      loads.push_back(ir::literal_load_from(word, 9));
      expected.push_back(text.substr(0, text.rfind("0x")) + "[x9]");
    }
  }
  const auto texts = ir_test::disassemble(loads);
  for (size_t i = 0; i < texts.size(); ++i) {
    ASSERT_EQ(texts[i], expected[i]);
  }
  for (const pc_relative what :
       {pc_relative::adr, pc_relative::adrp, pc_relative::load, pc_relative::prefetch}) {
    EXPECT_GE(seen[what], 500u);
  }
}

TEST(decode, authentication_of_branch_targets) {
  struct row {
    std::uint32_t branch;
    const char* text;
    const char* authentication;
  };
  constexpr row rows[] = {
      {0xd71f083c, "braa x1, x28", "autia x5, x28"},
      {0xd71f0c3f, "brab x1, sp", "autib x5, sp"},
      {0xd73f083c, "blraa x1, x28", "autia x5, x28"},
      {0xd73f0c3c, "blrab x1, x28", "autib x5, x28"},
      {0xd61f083f, "braaz x1", "autiza x5"},
      {0xd61f0c3f, "brabz x1", "autizb x5"},
      {0xd63f083f, "blraaz x1", "autiza x5"},
      {0xd63f0c3f, "blrabz x1", "autizb x5"},
      {0xd65f0bff, "retaa", "autia x5, sp"},
      {0xd65f0fff, "retab", "autib x5, sp"},
  };
  for (const row& r : rows) {
    EXPECT_EQ(ir_test::disassemble(r.branch), r.text);
    EXPECT_EQ(ir_test::disassemble(ir::authentication(r.branch, 5)), r.authentication);
  }
  for (const std::uint32_t plain : {ir::enc::br(31), ir::enc::blr(28), ir::enc::ret(30)}) {
    EXPECT_EQ(ir::authentication(plain, 5), 0u);
  }
}

TEST(decode, system_register_moves) {
  struct row {
    std::uint32_t word;
    bool mrs;
    bool msr;
    unsigned system;
  };
  constexpr row rows[] = {
      {0xd53bd045, true, false, ir::sys_tpidr_el0}, {0xd51bd05c, false, true, ir::sys_tpidr_el0},
      {0xd53b0021, true, false, ir::sys_ctr_el0},   {0xd51b4414, false, true, ir::sys_fpcr},
      {0xd51b4434, false, true, ir::sys_fpsr},      {0xd53b4214, true, false, ir::sys_nzcv},
  };
  for (const row& r : rows) {
    EXPECT_EQ(ir::is_mrs(r.word), r.mrs);
    EXPECT_EQ(ir::is_msr_register(r.word), r.msr);
    EXPECT_EQ(ir::system_register_of(r.word), r.system);
  }
  EXPECT_FALSE(ir::is_msr_register(0xd50342df));  // MSR DAIFSet, an immediate
  EXPECT_FALSE(ir::is_msr_register(0xd50b7520));  // IC IVAU
}

TEST(decode, extensions) {
  struct row {
    const char* text;  // by the disassembler, so that no word is mistyped
    std::uint32_t word;
    const char* extension;
  };
  constexpr row rows[] = {
      {"ldadd", 0xb8210041, "FEAT_LSE"},  {"swp", 0xf8218041, "FEAT_LSE"},
      {"casp", 0x08227c44, "FEAT_LSE"},   {"stlr", 0x889ffc41, nullptr},
      {"stxp", 0x88237c41, nullptr},      {"ldapr", 0xb8bfc041, "FEAT_LRCPC"},
      {"ldr", 0xf8636841, nullptr},       {"stg", 0xd9200841, "FEAT_MTE"},
      {"ldpsw", 0x69400841, nullptr},     {"crc32b", 0x1ac34041, "FEAT_CRC32"},
      {"udiv", 0x1ac30841, nullptr},      {"pacia", 0xdac10041, "FEAT_PAuth"},
      {"rev", 0xdac00c41, nullptr},       {"retaa", 0xd65f0bff, "FEAT_PAuth"},
      {"aese", 0x4e284841, "FEAT_AES"},   {"sdot", 0x0e839441, "FEAT_DotProd"},
      {"fcmla", 0x2e83c441, "FEAT_FCMA"}, {"fadd", 0x1ee32841, "FEAT_FP16"},
      {"fadd", 0x1e632841, nullptr},      {"fadd", 0x0e431441, "FEAT_FP16"},
      {"fadd", 0x0e23d441, nullptr},      {"fcvt", 0x1ee24041, nullptr},
      {"bfdot", 0x2e43fc41, "FEAT_BF16"}, {"fmadd", 0x1f030841, nullptr},
      {"fmla", 0x0f031041, "FEAT_FP16"},  {"fjcvtzs", 0x1e7e0041, "FEAT_JSCVT"},
  };
  for (const row& r : rows) {
    ASSERT_EQ(mnemonic(ir_test::disassemble(r.word)), r.text) << std::hex << r.word;
    EXPECT_STREQ(ir::extension_of(r.word), r.extension) << r.text;
  }
}

// The matrix extension's own, which the vector extension's encodings do not hold.
TEST(decode, streaming) {
  for (const std::uint32_t word : {0xd503477fu, 0xd503467fu, 0xd503437fu, 0xd53b4243u, 0xd51b4243u,
                                   0xd53bd0a4u, 0x80800000u, 0xc0080000u, 0xe1000000u}) {
    EXPECT_TRUE(ir::is_streaming(word)) << ir_test::disassemble(word);
  }
  for (const std::uint32_t word : {0xd503201fu, 0xd503305fu, 0xd53b4200u, 0xd53bd044u, 0x04bf5820u,
                                   0x00000000u, 0x8b000000u, 0xa9400000u}) {
    EXPECT_FALSE(ir::is_streaming(word)) << ir_test::disassemble(word);
  }
}

TEST(decode, exclusives) {
  const auto starts = [](const std::string& text, std::initializer_list<const char*> names) {
    for (const char* name : names) {
      if (mnemonic(text) == name) {
        return true;
      }
    }
    return false;
  };
  std::vector<std::uint32_t> words;
  std::mt19937 random(3);
  for (unsigned i = 0; i < 20000; ++i) {
    words.push_back(0x08000000 | (random() & 0xc0ffffff));
  }
  const auto texts = ir_test::disassemble(words);
  unsigned loads = 0;
  unsigned stores = 0;
  for (size_t i = 0; i < words.size(); ++i) {
    const bool load =
        starts(texts[i], {"ldxr", "ldxrb", "ldxrh", "ldaxr", "ldaxrb", "ldaxrh", "ldxp", "ldaxp"});
    const bool store =
        starts(texts[i], {"stxr", "stxrb", "stxrh", "stlxr", "stlxrb", "stlxrh", "stxp", "stlxp"});
    if (texts[i] != ir_test::undefined) {
      ASSERT_EQ(ir::is_load_exclusive(words[i]), load) << texts[i];
      ASSERT_EQ(ir::is_store_exclusive(words[i]), store) << texts[i];
    }
    loads += load;
    stores += store;
  }
  EXPECT_GE(loads, 1000u);
  EXPECT_GE(stores, 1000u);
}

}  // namespace
