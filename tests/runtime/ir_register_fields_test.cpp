// Which registers a word names, against the registers in objdump's text of it.
#include <gtest/gtest.h>

#include <cctype>
#include <random>
#include <string>
#include <vector>

#include "runtime/ir/decode.h"
#include "runtime/ir/ir.h"
#include "tests/runtime/ir_disassembler.h"

namespace {

using ir::stolen_register;

// A general register in a text: [at, at + length), its letter and number.
struct mention {
  size_t at;
  size_t length;
  char letter;
  unsigned number;
};

bool is_word_character(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }

bool parse_register(const std::string& token, mention& found) {
  if (token == "sp" || token == "wsp" || token == "xzr" || token == "wzr") {
    found.number = 31;
    return true;
  }
  const bool digits = token.size() > 1 && token.size() < 4 &&
                      token.find_first_not_of("0123456789", 1) == std::string::npos;
  if (!digits || (token[0] != 'x' && token[0] != 'w')) {
    return false;
  }
  found.number = static_cast<unsigned>(std::stoul(token.substr(1)));
  return true;
}

std::vector<mention> mentions(const std::string& text) {
  std::vector<mention> all;
  for (size_t at = 0; at < text.size();) {
    size_t end = at;
    while (end < text.size() && is_word_character(text[end])) {
      ++end;
    }
    mention found{at, end - at, text[at], 0};
    if (end > at && parse_register(text.substr(at, end - at), found)) {
      all.push_back(found);
    }
    at = end + 1;
  }
  return all;
}

std::uint32_t mentioned_registers(const std::string& text) {
  std::uint32_t set = 0;
  for (const mention& m : mentions(text)) {
    set |= 1u << m.number;
  }
  return set;
}

// The text with register `from` renamed to `to`. In a CASP's pairs, its first four registers, the
// successor goes with it.
std::string renamed(const std::string& text, unsigned from, unsigned to, bool pairs) {
  std::string result = text;
  const auto all = mentions(text);
  for (size_t i = all.size(); i-- > 0;) {
    const bool second = pairs && (i == 1 || i == 3);
    const unsigned offset = second ? 1 : 0;
    if (all[i].number == from + offset) {
      result.replace(all[i].at, all[i].length, all[i].letter + std::to_string(to + offset));
    }
  }
  return result;
}

// The host has no SVE, and nothing else lives in these groups.
bool is_sampled(std::uint32_t word) {
  const unsigned group = word >> 25 & 15;
  return group >= 4;
}

std::uint32_t with_field(std::uint32_t word, unsigned at, std::uint32_t value) {
  return (word & ~(31u << at)) | value << at;
}

// Every value of the top 11 bits, each with many random rests; fields that often must be all zeros
// or ones are so, and the stolen register stands somewhere in every second word.
std::vector<std::uint32_t> sample_words(unsigned seed) {
  constexpr unsigned rests = 170;
  constexpr unsigned system_words = 30000;
  constexpr unsigned places[] = {0, 5, 10, 16};
  std::mt19937 random(seed);
  std::vector<std::uint32_t> words;
  const auto add = [&](std::uint32_t word) {
    for (const unsigned at : {10, 16}) {
      const unsigned choice = random() % 4;
      word = choice < 2 ? with_field(word, at, choice == 0 ? 0 : 31) : word;
    }
    if (random() % 2 == 0) {
      word = with_field(word, places[random() % 4], stolen_register);
    }
    if (is_sampled(word)) {
      words.push_back(word);
    }
  };
  for (std::uint32_t top = 0; top < 1u << 11; ++top) {
    for (unsigned i = 0; i < rests; ++i) {
      add(top << 21 | (random() & 0x1fffff));
    }
  }
  for (unsigned i = 0; i < system_words; ++i) {
    add(0xd5000000 | (random() & 0x3fffff));
  }
  return words;
}

struct sampled {
  std::vector<std::uint32_t> words = sample_words(20240607);
  std::vector<std::string> texts = ir_test::disassemble(words);
};

const sampled& sample() {
  static const sampled all;
  return all;
}

// Calls `check(index, word, text)` for each sampled word that objdump knows.
template <typename Check> void for_each_known(Check check) {
  for (size_t i = 0; i < sample().words.size(); ++i) {
    if (sample().texts[i] != ir_test::undefined) {
      check(i, sample().words[i], sample().texts[i]);
    }
  }
}

constexpr unsigned max_reports = 20;

TEST(register_fields, sample_is_large_enough) {
  unsigned groups[16] = {};
  unsigned known = 0;
  unsigned with_stolen = 0;
  for_each_known([&](size_t, std::uint32_t word, const std::string& text) {
    ++known;
    ++groups[word >> 25 & 15];
    with_stolen += mentioned_registers(text) >> stolen_register & 1;
  });
  std::printf("%zu words, %u known to objdump, %u of them name x28\n", sample().words.size(), known,
              with_stolen);
  EXPECT_GE(known, 100000u);
  EXPECT_GE(with_stolen, 20000u);
  for (unsigned group = 4; group < 16; ++group) {
    EXPECT_GE(groups[group], 1000u) << "group " << group;
  }
}

TEST(register_fields, no_register_is_missed) {
  unsigned missed = 0;
  for_each_known([&](size_t, std::uint32_t word, const std::string& text) {
    const bool miss = (mentioned_registers(text) & ~ir::named_registers(word)) != 0;
    if (miss && ++missed <= max_reports) {
      ADD_FAILURE() << std::hex << word << "  " << text;
    }
  });
  EXPECT_EQ(missed, 0u);
}

TEST(register_fields, plain_words_may_stay_as_they_are) {
  unsigned plain = 0, wrong = 0;
  for_each_known([&](size_t, std::uint32_t word, const std::string& text) {
    if (!ir::is_plain_without(word, stolen_register)) {
      return;
    }
    ++plain;
    const bool fit = (mentioned_registers(text) >> stolen_register & 1) == 0 &&
                     ir::control_of(word) == ir::control::none &&
                     ir::pc_relative_of(word) == ir::pc_relative::none && !ir::is_mrs(word) &&
                     !ir::is_msr_register(word) && !ir::is_scalable(word);
    if (!fit && ++wrong <= max_reports) {
      ADD_FAILURE() << std::hex << word << "  " << text;
    }
  });
  EXPECT_EQ(wrong, 0u);
  EXPECT_GE(plain, 20000u);
}

TEST(register_fields, unused_register_is_unused) {
  unsigned used = 0;
  for_each_known([&](size_t, std::uint32_t word, const std::string& text) {
    const unsigned scratch = ir::lowest_unused_reg(word);
    const std::uint32_t needed = (ir::is_casp(word) ? 3u : 1u) << scratch;
    if (((mentioned_registers(text) & needed) != 0 || scratch > 8) && ++used <= max_reports) {
      ADD_FAILURE() << std::hex << word << "  " << text << "  scratch " << std::dec << scratch;
    }
  });
  EXPECT_EQ(used, 0u);
}

TEST(register_fields, replacing_the_stolen_register_renames_it_and_nothing_else) {
  std::vector<std::uint32_t> replaced = sample().words;
  unsigned count = 0;
  for_each_known([&](size_t i, std::uint32_t word, const std::string&) {
    if (!ir::uses_reg(word, stolen_register)) {
      return;
    }
    const unsigned scratch = ir::lowest_unused_reg(word);
    replaced[i] = ir::replace_reg(word, stolen_register, scratch);
    EXPECT_EQ(ir::replace_reg(replaced[i], scratch, stolen_register), word);
    EXPECT_FALSE(ir::uses_reg(replaced[i], stolen_register));
    ++count;
  });
  ASSERT_GE(count, 20000u);
  // All words again, so that each one stays at its address.
  const auto texts = ir_test::disassemble(replaced);
  unsigned wrong = 0;
  for_each_known([&](size_t i, std::uint32_t word, const std::string& text) {
    const std::string expected =
        renamed(text, stolen_register, ir::lowest_unused_reg(word), ir::is_casp(word));
    if (texts[i] != expected && ++wrong <= max_reports) {
      ADD_FAILURE() << std::hex << word << "  " << text << "  became " << texts[i];
    }
  });
  EXPECT_EQ(wrong, 0u);
}

// Words by hand, where a random sample is thin: the word, the registers that it names, and what
// becomes of X28 in it.
TEST(register_fields, pairs_and_special_forms) {
  struct row {
    std::uint32_t word;
    const char* text;
    unsigned scratch;
    const char* replaced;
  };
  constexpr row rows[] = {
      {0x48207f9c, "casp x0, x1, x28, x29, [x28]", 2, "casp x0, x1, x2, x3, [x2]"},
      {0x48207fbc, "casp x0, x1, x28, x29, [x29]", 2, "casp x0, x1, x2, x3, [x29]"},
      {0x483c7c42, "casp x28, x29, x2, x3, [x2]", 0, "casp x0, x1, x2, x3, [x2]"},
      {0xd503201f, "hint #0x0", 0, "hint #0x0"},
      {0xd51bd05c, "msr tpidr_el0, x28", 0, "msr tpidr_el0, x0"},
      {0xd50b7b3c, "sys #3, C7, C11, #1, x28", 0, "sys #3, C7, C11, #1, x0"},
      {0xa93c7b9c, "stp x28, x30, [x28, #-64]", 0, "stp x0, x30, [x0, #-64]"},
      {0x9b1c739c, "madd x28, x28, x28, x28", 0, "madd x0, x0, x0, x0"},
      {0x9e67039c, "fmov d28, x28", 0, "fmov d28, x0"},
      {0x0f00e79c, "movi v28.8b, #0x1c", 0, "movi v28.8b, #0x1c"},
  };
  for (const row& r : rows) {
    EXPECT_EQ(ir_test::disassemble(r.word), r.text) << std::hex << r.word;
    EXPECT_EQ(ir::lowest_unused_reg(r.word), r.scratch) << r.text;
    EXPECT_EQ(ir_test::disassemble(ir::replace_reg(r.word, stolen_register, r.scratch)),
              r.replaced);
  }
}

}  // namespace
