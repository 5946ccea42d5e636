// The second opinion on A64 words: binutils' disassembler.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ir_test {

inline constexpr const char* undefined = "undefined";

// The text of each word as objdump gives it without aliases, mnemonic and operands separated by a
// blank, comments and symbol names cut off; `undefined` for a word that objdump does not know. Word
// number k is at address 4 * k. Throws std::runtime_error if objdump does not run.
std::vector<std::string> disassemble(const std::vector<std::uint32_t>& words);

// One word at address 0.
std::string disassemble(std::uint32_t word);

}  // namespace ir_test
