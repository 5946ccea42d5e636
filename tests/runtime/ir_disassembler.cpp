#include "tests/runtime/ir_disassembler.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <unistd.h>

namespace ir_test {
namespace {

// A file of the words that is gone when the object is.
struct word_file {
  std::string path = "/tmp/ir_words_XXXXXX";

  explicit word_file(const std::vector<std::uint32_t>& words) {
    const int descriptor = mkstemp(path.data());
    if (descriptor < 0) {
      throw std::runtime_error("cannot make a temporary file for objdump");
    }
    close(descriptor);
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(words.data()),
               static_cast<std::streamsize>(words.size() * sizeof words[0]));
  }
  word_file(const word_file&) = delete;
  word_file& operator=(const word_file&) = delete;
  ~word_file() { unlink(path.c_str()); }
};

std::string run(const std::string& command) {
  FILE* const pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) {
    throw std::runtime_error("cannot run " + command);
  }
  std::string output;
  char buffer[65536];
  for (size_t count; (count = fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
    output.append(buffer, count);
  }
  if (const int status = pclose(pipe); status != 0) {
    throw std::runtime_error(command + " failed with status " + std::to_string(status));
  }
  return output;
}

// From "mnemonic\toperands  // comment" or "... <symbol>".
std::string clean(std::string text) {
  if (text.find("undefined") != std::string::npos) {
    return undefined;
  }
  text.resize(std::min({text.size(), text.find("//"), text.find(" <"), text.find("; note")}));
  std::replace(text.begin(), text.end(), '\t', ' ');
  text.resize(text.find_last_not_of(' ') + 1);
  return text;
}

}  // namespace

std::vector<std::string> disassemble(const std::vector<std::uint32_t>& words) {
  if (std::string(TAVOK_OBJDUMP).ends_with("NOTFOUND")) {
    throw std::runtime_error("no objdump for AArch64 was found when the build was configured: "
                             "install the Debian package binutils-aarch64-linux-gnu (binutils on "
                             "AArch64) and configure again");
  }
  const word_file file(words);
  const std::string output =
      run(TAVOK_OBJDUMP " -D -z -b binary -m aarch64 -M no-aliases " + file.path);
  std::vector<std::string> texts;
  texts.reserve(words.size());
  // A line of interest is "address:\tword \tmnemonic\toperands".
  for (size_t at = 0; at < output.size();) {
    const size_t end = std::min(output.find('\n', at), output.size());
    const std::string line = output.substr(at, end - at);
    at = end + 1;
    const size_t colon = line.find(":\t");
    const size_t tab = colon == std::string::npos ? colon : line.find('\t', colon + 2);
    if (tab != std::string::npos) {
      texts.push_back(clean(line.substr(tab + 1)));
    }
  }
  if (texts.size() != words.size()) {
    throw std::runtime_error("objdump printed " + std::to_string(texts.size()) + " lines for " +
                             std::to_string(words.size()) + " words");
  }
  return texts;
}

std::string disassemble(std::uint32_t word) { return disassemble(std::vector{word})[0]; }

}  // namespace ir_test
