// Any query prints what its plain form prints, which is found here by another road.
#include <regex.h>

#include <algorithm>
#include <cctype>
#include <random>
#include <string>

#include "sve/dump/state_dump.h"
#include "tests/core/captured_stderr.h"
#include "tests/fuzz/target.h"

namespace {

cpu_state& sample() {
  static cpu_state state = [] {
    cpu_state filled;
    std::mt19937 random(1);
    auto* const bytes = reinterpret_cast<uint8_t*>(&filled);
    for (size_t i = 0; i < sizeof filled; i++)
      bytes[i] = static_cast<uint8_t>(random());
    return filled;
  }();
  return state;
}

std::string printed(const std::string& query, uint32_t reg, uint32_t element) {
  return captured_stderr([&] { dump_state(&sample(), query.c_str(), reg, element); });
}

// As the C library reads an unsigned number: of any sign, too large ones cut.
uint32_t number(const std::string& text) {
  return static_cast<uint32_t>(strtoul(text.c_str(), nullptr, 10));
}

// A pattern at the start of a text, in any case, and its groups: empty ones were not there.
class Pattern {
public:
  explicit Pattern(const char* text) { REQUIRE(regcomp(&compiled_, text, flags) == 0); }

  bool takes(std::string& text) {
    regmatch_t found[5];
    if (regexec(&compiled_, text.c_str(), 5, found, 0) != 0)
      return false;
    for (unsigned i = 0; i < 5; i++)
      groups[i] =
          found[i].rm_so < 0 ? "" : text.substr(found[i].rm_so, found[i].rm_eo - found[i].rm_so);
    text.erase(0, groups[0].size());
    return true;
  }

  std::string groups[5];

private:
  static constexpr int flags = REG_EXTENDED | REG_ICASE;
  regex_t compiled_;
};

#define NUMBER "([[:space:]]*[+-]?[0-9]+)"

std::string plain_form(const std::string& query) {
  static Pattern alone("^(help|ip|cc)$"), selection("^([zp])" NUMBER "?(\\[" NUMBER "\\])?"),
      element("^\\[" NUMBER "\\]"), format("^\\.([dshb])(\\.[xfus])?"), type("^\\.\\.[xfus]");
  std::string plain, rest = query;
  const auto add_number = [&](const std::string& text, const char* open, const char* close) {
    if (!text.empty() && number(text) != all_indices)
      plain += open + std::to_string(number(text)) + close;
  };
  if (alone.takes(rest))
    return query;
  if (selection.takes(rest)) {
    plain = selection.groups[1];
    add_number(selection.groups[2], "", "");
    add_number(selection.groups[4], "[", "]");
  } else if (element.takes(rest)) {
    add_number(element.groups[1], "[", "]");
  }
  if (format.takes(rest))
    plain += format.groups[0];
  else if (type.takes(rest))
    plain += type.groups[0];
  for (char& c : plain)
    c = static_cast<char>(tolower(c));
  return plain;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const cpu_state before = sample();
  constexpr ptrdiff_t most_lines = z_registers + p_registers + 2;
  Input input(data, size);
  const auto kind = input.take<uint8_t>();
  const uint32_t reg = (kind & 1) != 0 ? input.take<uint8_t>() % 40 : all_indices;
  const uint32_t element = (kind & 2) != 0 ? input.take<uint8_t>() % 20 : all_indices;
  const std::string query = std::string(reinterpret_cast<const char*>(input.at), input.left)
                                .c_str();  // to its first null
  const std::string text = printed(query, reg, element);
  REQUIRE(text == printed(plain_form(query), reg, element));
  REQUIRE(text.empty() || text.back() == '\n');
  REQUIRE(std::count(text.begin(), text.end(), '\n') <= most_lines);
  REQUIRE(memcmp(&sample(), &before, sizeof before) == 0);
  return 0;
}
