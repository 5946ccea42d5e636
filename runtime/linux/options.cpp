#include "runtime/linux/options.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "tavok_version.h"

namespace os {
namespace {

constexpr char kUsage[] = "usage: tavok [options] [client arguments] -- application [arguments]\n";
constexpr char kHelp[] =
    "\n"
    "Runs an AArch64 Linux application whose SVE instructions this processor lacks.\n"
    "\n"
    "  --profile=FILE  write to FILE how often each SVE instruction was executed\n"
    "  --help          this text\n"
    "  --version       the version\n"
    "\n"
    "The application is searched for as a shell does. Its exit status is tavok's own; 2 is a "
    "wrong\n"
    "command line, 126 a file that cannot be run, 127 one that is not there, 70 a failure of the\n"
    "runtime.\n";

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

Options usage_error(const char* reason) {
  std::fprintf(stderr, "tavok: %s\n%s", reason, kUsage);
  return ended(kUsageStatus);
}

}  // namespace

Options read_options(int argc, char** argv) {
  Options options;
  options.client.push_back("tavok");
  if (argc < 2) {
    std::fputs(kUsage, stderr);
    return ended(kUsageStatus);
  }
  int at = 1;
  for (; at < argc && std::strcmp(argv[at], "--") != 0; ++at) {
    const std::string_view argument = argv[at];
    if (argument == "--help") {
      std::printf("%s%s", kUsage, kHelp);
      return ended(EXIT_SUCCESS);
    }
    if (argument == "--version") {
      std::puts("tavok " TAVOK_VERSION);
      return ended(EXIT_SUCCESS);
    }
    if (argument.starts_with(kNameOption)) {
      options.name = argv[at] + std::strlen(kNameOption);
    } else if (argument.starts_with(kProfileOption)) {
      options.profile = argv[at] + std::strlen(kProfileOption);
    } else if (argument == kPlainOption) {
      options.optimise = false;
    } else if (argument == kForgetfulOption) {
      options.predict = false;
    } else if (argument == kOnlyProgramOption) {
      options.only_program = true;
    } else {
      options.client.push_back(argv[at]);
    }
  }
  if (at >= argc) {
    return usage_error("no \"--\" in front of the application");
  }
  if (at + 1 >= argc) {
    return usage_error("no application behind \"--\"");
  }
  options.client.push_back(nullptr);
  options.application = argv + at + 1;
  return options;
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
