// The launcher's command line: tavok [options] [client arguments] -- application [arguments]
#pragma once

#include <string>
#include <vector>

namespace os {

// Set by the runtime itself when it follows an exec: what the application finds as argv[0].
inline constexpr char kNameOption[] = "--argv0=";

// Inserted code runs as it was inserted, and no indirect branch learns where it goes. For
// comparison only, so --help does not tell.
inline constexpr char kPlainOption[] = "--no-optimise";
inline constexpr char kForgetfulOption[] = "--no-predict";

// Libraries are left alone: their SVE instructions are illegal.
inline constexpr char kOnlyProgramOption[] = "--only-program";

// A file for the client's table of executed places.
inline constexpr char kProfileOption[] = "--profile=";

// Statuses of a shell for a command that cannot be run.
inline constexpr int kUsageStatus = 2;
inline constexpr int kCannotRunStatus = 126;
inline constexpr int kNotFoundStatus = 127;

struct Options {
  std::vector<const char*> client;  // argv of the client: its name, its arguments, null
  const char* name = nullptr;       // argv[0] of the application if it is not its file
  bool optimise = true;
  bool predict = true;
  bool only_program = false;
  const char* profile = nullptr;  // where the profile goes, null: none is written
  char** application = nullptr;   // the application and its arguments, null-terminated
  int status = -1;                // not negative: nothing is left to do but to exit with this
};

// Reads the command line; answers --help and --version, and tells of errors, by itself.
Options read_options(int argc, char** argv);

// Where an application without a slash in its name is: as a shell searches PATH. `status` becomes
// one of the statuses above if there is none, 0 otherwise.
std::string find_application(const std::string& name, int& status);

}  // namespace os
