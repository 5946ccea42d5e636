// Command lines. The input holds TAVOK_OPTIONS, PATH and the words behind the launcher's name, each
// up to a null byte.
#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "runtime/linux/options.h"
#include "tests/fuzz/target.h"

namespace {

std::vector<std::string> split(const std::string& text, std::string_view separators) {
  std::vector<std::string> words(1);
  for (const char c : text)
    if (separators.find(c) != separators.npos)
      words.emplace_back();
    else
      words.back() += c;
  return words;
}

std::vector<char*> pointers(std::vector<std::string>& words) {
  std::vector<char*> result;
  for (std::string& word : words)
    result.push_back(word.data());
  result.push_back(nullptr);
  return result;
}

// What was printed to either stream.
struct Printed {
  char* text = nullptr;
  size_t length = 0;
  FILE *const out = stdout, *const errors = stderr;
  FILE* const stream = open_memstream(&text, &length);

  Printed() { stdout = stderr = stream; }
  ~Printed() { end(), fclose(stream), free(text); }
  bool end() {
    stdout = out, stderr = errors;
    fflush(stream);
    return length != 0;
  }
};

// The options are the words up to the first that is none.
size_t options_end(const std::vector<std::string>& words) {
  size_t end = 1;
  while (end < words.size() && words[end].size() >= 2 && words[end][0] == '-' && words[end] != "--")
    end++;
  return end;
}

// What is told instead of an application to run: each has its reason among the options.
void check_end(int status, const std::string& text, const std::vector<std::string>& options,
               bool has_application) {
  const auto has = [&](const char* word) { return std::ranges::count(options, word) != 0; };
  const auto is_blamed = [&](const std::string& word) {
    return text.ends_with(" " + word + " (tavok --help tells the options)\n");
  };
  REQUIRE((status == 0) == (has("-h") || has("--help") || has("--version")));
  REQUIRE(status == 0 || status == os::kUsageStatus);
  if (status != 0 && text.starts_with("tavok: no application\n"))
    REQUIRE(!has_application);
  else if (status != 0 && text.starts_with("tavok: --sve and --only-program "))
    REQUIRE(has("--sve") && has("--only-program"));
  else
    REQUIRE(status == 0 || std::ranges::any_of(options, is_blamed));
}

// The launcher that goes on with an exec is asked for the same.
void check_followed(const os::Options& options, const std::string& name, bool keeps) {
  std::vector<std::string> words = os::options_of_followed(options, name, keeps);
  words.insert(words.begin(), "tavok");
  words.insert(words.end(), {"--", "application"});
  std::vector<char*> arguments = pointers(words);
  unsetenv("TAVOK_OPTIONS");
  const os::Options again = os::read_options(static_cast<int>(words.size()), arguments.data());
  REQUIRE(again.status < 0 && again.application == arguments.data() + words.size() - 1);
  REQUIRE(again.name == name && again.keeps_vector_length == keeps && again.profile == nullptr);
  REQUIRE(again.sve == options.sve && again.only_program == options.only_program);
  REQUIRE(again.optimise == options.optimise && again.predict == options.predict);
  REQUIRE(again.library_faults == options.library_faults);
  REQUIRE(again.report.kind == options.report.kind && again.report.file == options.report.file);
}

void check_search(const std::string& name, const std::string& path) {
  setenv("PATH", path.c_str(), 1);
  int status = -1;
  const std::string file = os::find_application(name, status);
  REQUIRE(status == 0 || status == os::kCannotRunStatus || status == os::kNotFoundStatus);
  REQUIRE(status == 0 ? file.ends_with(name) : file.empty());
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace std::string_view_literals;
  std::vector<std::string> words = split({reinterpret_cast<const char*>(data), size}, "\0"sv);
  words.resize(std::max<size_t>(words.size(), 2));
  const std::string environment = words[0], path = words[1];
  words.erase(words.begin());
  words[0] = "tavok";
  const size_t end = options_end(words);
  const size_t application = end + (end < words.size() && words[end] == "--" ? 1 : 0);
  std::vector<char*> arguments = pointers(words);
  setenv("TAVOK_OPTIONS", environment.c_str(), 1);
  Printed printed;
  const os::Options options = os::read_options(static_cast<int>(words.size()), arguments.data());
  const bool told = printed.end();
  REQUIRE(told == (options.status >= 0));
  if (told) {
    std::vector<std::string> given = split(environment, " \t\n");
    given.insert(given.end(), words.begin() + 1, words.begin() + static_cast<ptrdiff_t>(end));
    check_end(options.status, printed.text, given, application < words.size());
    return 0;
  }
  REQUIRE(options.application == arguments.data() + application && application < words.size());
  check_followed(options, words[application], size % 2 != 0);
  check_search(words[application], path);
  return 0;
}
