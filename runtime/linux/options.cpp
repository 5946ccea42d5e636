#include "runtime/linux/options.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <string_view>

#include "tavok_version.h"

namespace os {
namespace {

constexpr char kUsage[] = "usage: tavok [options] [--] application [arguments]\n";
constexpr char kHelp[] = R"(
Runs an AArch64 Linux application whose SVE instructions this processor lacks. Vectors are 128 bits.
The SVE instructions of the application and of all its libraries are emulated, and those of the
programs that it executes.

  --sve            tell the application that there is SVE, by AT_HWCAP, identification registers,
                   prctl, signal frames and /proc/cpuinfo; otherwise it is told that there is none
  --only-program   leave libraries alone: an SVE instruction in one is illegal
  --report=WHERE   where the report goes that is printed at the end of each process: stderr, none,
                   or a file, behind what it holds already; %p in its name is the process's number
  -q               no report
  --profile=FILE   write to FILE how often each SVE instruction was executed
  -h, --help       this text
  --version        the version

The first word that is no option is the application; it is searched for as a shell does. Options
may also stand in the environment, in TAVOK_OPTIONS, separated by blanks.

The exit status is the application's own; 2 is a wrong command line, 126 a file that cannot be run,
127 one that is not there, 70 a failure of the runtime.
)";

bool is_executable_file(const std::string& path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         access(path.c_str(), X_OK) == 0;
}

Options ended(int status) {
  Options options;
  options.status = status;
  return options;
}

// One line, and nothing else happens.
Options usage_error(const std::string& reason) {
  std::fprintf(stderr, "tavok: %s (tavok --help tells the options)\n", reason.c_str());
  return ended(kUsageStatus);
}

std::string absolute(const char* file) {
  char directory[PATH_MAX];
  const bool relative = file[0] != '/' && getcwd(directory, sizeof directory) != nullptr;
  return relative ? std::string(directory) + "/" + file : file;
}

void report_to(Options& options, const char* where) {
  using Kind = ReportTarget::Kind;
  const std::string_view name = where;
  options.report = name == "stderr" ? ReportTarget{Kind::standard_error, {}}
                   : name == "none" ? ReportTarget{Kind::none, {}}
                                    : ReportTarget{Kind::file, absolute(where)};
}

// An option and what it does. Those that end in '=' have a value behind it.
struct Word {
  std::string_view name;
  void (*apply)(Options& options, const char* value);
};

// --help does not tell of those behind --profile=: those that the runtime sets when it follows an
// exec, and three for comparison only: inserted code runs as it was inserted, no indirect branch
// learns where it goes, and memory faults are what the client makes of them by itself.
constexpr Word kWords[] = {
    {"--sve", [](Options& options, const char*) { options.sve = true; }},
    {"--only-program", [](Options& options, const char*) { options.only_program = true; }},
    {"--report=", [](Options& options, const char* value) { report_to(options, value); }},
    {"-q", [](Options& options, const char*) { report_to(options, "none"); }},
    {"--profile=", [](Options& options, const char* value) { options.profile = value; }},
    {"--argv0=", [](Options& options, const char* value) { options.name = value; }},
    {"--file=", [](Options& options, const char* value) { options.file = std::atoi(value); }},
    {"--filters=", [](Options& options, const char* value) { options.filters = std::atoi(value); }},
    {"--launcher=",
     [](Options& options, const char* value) { options.launcher = std::atoi(value); }},
    {"--keep-vector-length",
     [](Options& options, const char*) { options.keeps_vector_length = true; }},
    {"--no-optimise", [](Options& options, const char*) { options.optimise = false; }},
    {"--no-predict", [](Options& options, const char*) { options.predict = false; }},
    {"--library-faults", [](Options& options, const char*) { options.library_faults = true; }},
};

bool matches(const Word& word, std::string_view text) {
  return word.name.ends_with('=') ? text.starts_with(word.name) : text == word.name;
}

// Applies an option. Returns what is wrong with it, an empty string if nothing is.
std::string apply(Options& options, const char* text) {
  const auto* word = std::ranges::find_if(
      kWords, [text](const Word& candidate) { return matches(candidate, text); });
  if (word == std::end(kWords)) {
    return std::string("unknown option ") + text;
  }
  const char* value = text + word->name.size();
  // The application's own name may be empty.
  if (word->name.ends_with('=') && *value == '\0' && word->name != "--argv0=") {
    return std::string("no value behind ") + text;
  }
  word->apply(options, value);
  return {};
}

// The words of TAVOK_OPTIONS, which last as long as the process.
std::vector<const char*> words_of_environment() {
  static std::string text;
  const char* given = std::getenv("TAVOK_OPTIONS");
  text = given != nullptr ? given : "";
  std::vector<const char*> words;
  for (char *at = text.data(), *rest; (at = strtok_r(at, " \t\n", &rest)) != nullptr;
       at = nullptr) {
    words.push_back(at);
  }
  return words;
}

bool asks(const std::vector<const char*>& words, std::initializer_list<std::string_view> names) {
  return std::ranges::any_of(
      words, [&](const char* word) { return std::ranges::find(names, word) != names.end(); });
}

}  // namespace

Options read_options(int argc, char** argv) {
  int at = 1;
  while (at < argc && argv[at][0] == '-' && argv[at][1] != '\0' &&
         std::strcmp(argv[at], "--") != 0) {
    ++at;
  }
  std::vector<const char*> words = words_of_environment();
  const size_t of_environment = words.size();
  words.insert(words.end(), argv + 1, argv + at);
  if (asks(words, {"-h", "--help"})) {
    std::printf("%s%s", kUsage, kHelp);
    return ended(EXIT_SUCCESS);
  }
  if (asks(words, {"--version"})) {
    std::puts("tavok " TAVOK_VERSION);
    return ended(EXIT_SUCCESS);
  }
  Options options;
  for (size_t i = 0; i < words.size(); ++i) {
    const std::string error = apply(options, words[i]);
    if (!error.empty()) {
      return usage_error((i < of_environment ? "TAVOK_OPTIONS: " : "") + error);
    }
  }
  if (options.sve && options.only_program) {
    return usage_error("--sve and --only-program exclude each other: the application's C library "
                       "would use SVE");
  }
  at += at < argc && std::strcmp(argv[at], "--") == 0 ? 1 : 0;
  if (at >= argc) {
    std::fprintf(stderr, "tavok: no application\n%s", kUsage);
    return ended(kUsageStatus);
  }
  options.application = argv + at;
  return options;
}

std::vector<std::string> options_of_followed(const Options& options, const std::string& name,
                                             bool keeps_vector_length) {
  std::vector<std::string> words = {"--argv0=" + name};
  const auto add = [&words](bool wanted, const char* word) {
    if (wanted) {
      words.emplace_back(word);
    }
  };
  add(options.sve, "--sve");
  add(options.only_program, "--only-program");
  add(!options.optimise, "--no-optimise");
  add(!options.predict, "--no-predict");
  add(options.library_faults, "--library-faults");
  add(keeps_vector_length, "--keep-vector-length");
  add(options.report.kind == ReportTarget::Kind::none, "-q");
  if (options.report.kind == ReportTarget::Kind::file) {
    words.push_back("--report=" + options.report.file);
  }
  return words;
}

std::string find_application(const std::string& name, int& status) {
  status = 0;
  if (name.find('/') != std::string::npos) {
    return name;
  }
  const char* given = std::getenv("PATH");
  std::string_view path = given != nullptr ? given : "/bin:/usr/bin";
  status = kNotFoundStatus;
  while (true) {
    const size_t length = path.find(':');
    const std::string_view directory = path.substr(0, length);
    // An empty element is the current directory.
    const std::string file = std::string(directory.empty() ? "." : directory) + "/" + name;
    if (is_executable_file(file)) {
      status = 0;
      return file;
    }
    if (access(file.c_str(), F_OK) == 0) {
      status = kCannotRunStatus;
    }
    if (length == std::string_view::npos) {
      return {};
    }
    path.remove_prefix(length + 1);
  }
}

}  // namespace os
