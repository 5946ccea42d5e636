// The launcher's command line: tavok [options] [--] application [arguments]
#pragma once

#include <string>
#include <vector>

namespace os {

// Statuses of a shell for a command that cannot be run.
inline constexpr int kUsageStatus = 2;
inline constexpr int kCannotRunStatus = 126;
inline constexpr int kNotFoundStatus = 127;

// Where the client's report at the end goes: to standard error, nowhere, or behind what a file
// holds already.
struct ReportTarget {
  enum class Kind { standard_error, none, file } kind = Kind::standard_error;
  std::string file;  // absolute; %p stands for the process's number
};

struct Options {
  const char* name = nullptr;  // argv[0] of the application if it is not its file
  int file = -1;               // its descriptor, if there is one already
  int filters = -1;            // a descriptor of seccomp's, if there are any
  int launcher = -1;           // the launcher's own, if its path may lead elsewhere
  bool sve = false;            // the application is told that there is SVE
  bool only_program = false;   // libraries are left alone: their SVE instructions are illegal
  bool keeps_vector_length = false;
  bool optimise = true;
  bool predict = true;
  bool library_faults = false;    // memory faults are what the client alone makes of them
  const char* profile = nullptr;  // where the profile goes, null: none is written
  ReportTarget report;
  char** application = nullptr;  // the application and its arguments, null-terminated
  int status = -1;               // not negative: nothing is left to do but to exit with this
};

// Reads TAVOK_OPTIONS and the command line; answers --help and --version, and tells of errors, by
// itself.
Options read_options(int argc, char** argv);

// The words in front of "--" of a launcher that goes on with `name` as argv[0] of its application,
// as this one was asked to.
std::vector<std::string> options_of_followed(const Options& options, const std::string& name,
                                             bool keeps_vector_length);

// Where an application without a slash in its name is: as a shell searches PATH. `status` becomes
// one of the statuses above if there is none, 0 otherwise.
std::string find_application(const std::string& name, int& status);

}  // namespace os
