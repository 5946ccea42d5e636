// Each row against binutils: its value, its operand forms and its assembly form name the same
// instruction as a disassembler that knows nothing of the rows.
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "sve/decode/disassemble.h"
#include "tests/runtime/ir_disassembler.h"

namespace {

// Values of the operand fields: none, all bits, and at random.
std::vector<uint32_t> words_of(const Row& row, std::mt19937& random) {
  std::vector<uint32_t> words = {row.value, row.value | ~row.mask};
  while (words.size() < 24)
    words.push_back(row.value | (random() & ~row.mask));
  return words;
}

// Mnemonic, punctuation and registers as they stand, numbers by their value.
bool same(const std::string& ours, const std::string& theirs) {
  size_t i = 0, j = 0;
  while (i < ours.size() && j < theirs.size()) {
    if (ours[i] != theirs[j])
      return false;
    if (ours[i] == '#') {
      char *behind_ours, *behind_theirs;
      if (std::strtod(&ours[i + 1], &behind_ours) != std::strtod(&theirs[j + 1], &behind_theirs))
        return false;
      if (behind_ours == &ours[i + 1])
        return false;
      i = static_cast<size_t>(behind_ours - ours.data());
      j = static_cast<size_t>(behind_theirs - theirs.data());
    } else {
      i++;
      j++;
    }
  }
  return i == ours.size() && j == theirs.size();
}

TEST(Assembly, IsWhatADisassemblerSays) {
  std::mt19937 random(1);
  std::vector<uint32_t> words;
  std::vector<const Row*> rows;
  for (const Row& row : all_rows())
    for (const uint32_t word : words_of(row, random)) {
      words.push_back(word);
      rows.push_back(&row);
    }
  const std::vector<std::string> texts = ir_test::disassemble(words);
  std::map<const Row*, unsigned> compared;
  for (size_t i = 0; i < words.size(); i++) {
    if (texts[i] == ir_test::undefined || texts[i].starts_with(".inst"))
      continue;
    compared[rows[i]]++;
    const std::string ours = disassemble(*rows[i], words[i]);
    EXPECT_PRED2(same, ours, texts[i]) << rows[i]->name << std::hex << ' ' << words[i];
  }
  // Few values of an operand are reserved: of a shift, of a bitmask immediate, of an index
  // register.
  for (const Row& row : all_rows())
    EXPECT_GE(compared[&row], 4u) << row.name;
}

}  // namespace
