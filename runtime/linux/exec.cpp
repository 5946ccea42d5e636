// execve: programs for this processor go on under the runtime.
#include <elf.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <string>
#include <vector>

#include "runtime/core/entry.h"
#include "runtime/linux/options.h"
#include "runtime/linux/process.h"
#include "runtime/linux/signals.h"
#include "runtime/linux/syscalls.h"

namespace os {
namespace {

constexpr size_t kScriptLine = 256;  // what Linux reads of a script's first line
constexpr size_t kMostArguments = 1U << 20;

bool read_string(uint64_t address, std::string& to) {
  char chunk[256];
  to.clear();
  while (to.size() < PATH_MAX) {
    const auto* from = reinterpret_cast<const void*>(address + to.size());
    const size_t got = sizeof chunk - core_copy(chunk, from, sizeof chunk);
    const size_t length = strnlen(chunk, got);
    to.append(chunk, length);
    if (length < got) {
      return true;
    }
    if (got < sizeof chunk) {
      return false;
    }
  }
  return false;
}

// The application's null-terminated list of pointers.
bool read_pointers(uint64_t address, std::vector<uint64_t>& to) {
  to.clear();
  for (uint64_t pointer = 1; address != 0 && pointer != 0 && to.size() < kMostArguments;
       address += sizeof pointer) {
    if (core_copy(&pointer, reinterpret_cast<const void*>(address), sizeof pointer) != 0) {
      return false;
    }
    if (pointer != 0) {
      to.push_back(pointer);
    }
  }
  return true;
}

// What the first bytes of an executable file say.
struct Program {
  bool ours = false;
  std::string interpreter;  // of a script
  std::string argument;
};

void parse_script(const char* line, Program& program) {
  const char* blanks = " \t";
  const char* at = line + 2 + std::strspn(line + 2, blanks);
  const size_t length = std::strcspn(at, " \t");
  program.interpreter.assign(at, length);
  at += length;
  at += std::strspn(at, blanks);
  program.argument = at;
  while (!program.argument.empty() && std::strchr(blanks, program.argument.back()) != nullptr) {
    program.argument.pop_back();
  }
}

Program inspect(const std::string& path) {
  Program program;
  char head[kScriptLine + 1] = {};
  struct stat status;
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (fd < 0) {
    return program;
  }
  // A program that changes its identity would lose that by way of the launcher.
  const bool plain = fstat(fd, &status) == 0 && S_ISREG(status.st_mode) &&
                     (status.st_mode & (S_ISUID | S_ISGID)) == 0 && access(path.c_str(), X_OK) == 0;
  const ssize_t got = plain ? read(fd, head, kScriptLine) : 0;
  close(fd);
  Elf64_Ehdr header;
  std::memcpy(&header, head, sizeof header);
  if (got > 2 && head[0] == '#' && head[1] == '!') {
    head[std::strcspn(head, "\n")] = '\0';
    parse_script(head, program);
  } else if (got >= static_cast<ssize_t>(sizeof header)) {
    program.ours = std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 &&
                   header.e_ident[EI_CLASS] == ELFCLASS64 && header.e_machine == EM_AARCH64 &&
                   (header.e_type == ET_EXEC || header.e_type == ET_DYN);
  }
  return program;
}

// The launcher takes a name without a slash for a command.
std::string as_path(const std::string& name) {
  return name.find('/') == std::string::npos ? "./" + name : name;
}

// Ignored signals stay ignored over an exec; the two that the runtime owns in the kernel are told
// only now.
void hand_over_ignored(const Thread& thread, bool before) {
  constexpr uint64_t kIgnore = 1;
  for (const int signal : {SIGSEGV, SIGBUS}) {
    if (thread.signals.actions->actions[signal].handler == kIgnore) {
      set_runtime_action(signal, before);
    }
  }
}

int64_t execute(Thread& thread, const std::vector<const char*>& arguments, uint64_t environment) {
  hand_over_ignored(thread, true);
  const Call call = {SYS_execve,
                     {reinterpret_cast<uint64_t>(paths.launcher.c_str()),
                      reinterpret_cast<uint64_t>(arguments.data()), environment}};
  const int64_t result = pass_on(thread, call);
  hand_over_ignored(thread, false);
  return result;
}

// What an exec is made of. It stays for the thread's next one: a vfork child that succeeds frees
// nothing, and its memory is its parent's.
struct Exec {
  std::string path;
  std::vector<uint64_t> arguments;  // the application's strings
  Program program;
  std::string name, file;
  std::vector<std::string> options;
  std::vector<const char*> line;  // the launcher's command
};
thread_local Exec own_exec;

// Goes on under the launcher if the file is for it.
int64_t follow(Thread& thread, const Call& original, Exec& exec, uint64_t environment) {
  if (is_own_executable(exec.path.c_str())) {
    exec.path = paths.application;
  }
  exec.program = inspect(exec.path);
  const bool script = !exec.program.interpreter.empty();
  if (!exec.program.ours && !(script && inspect(exec.program.interpreter).ours)) {
    return pass_on(thread, original);
  }
  exec.file = as_path(script ? exec.program.interpreter : exec.path);
  if (script || exec.arguments.empty()) {
    exec.name = exec.file;
  } else if (!read_string(exec.arguments[0], exec.name)) {
    return -EFAULT;
  }
  exec.options = options_of_followed(options, exec.name, thread.keeps_vector_length);
  exec.line = {"tavok"};
  for (const std::string& option : exec.options) {
    exec.line.push_back(option.c_str());
  }
  exec.line.insert(exec.line.end(), {"--", exec.file.c_str()});
  if (script && !exec.program.argument.empty()) {
    exec.line.push_back(exec.program.argument.c_str());
  }
  if (script) {
    exec.line.push_back(exec.path.c_str());
  }
  for (size_t i = 1; i < exec.arguments.size(); ++i) {
    exec.line.push_back(reinterpret_cast<const char*>(exec.arguments[i]));
  }
  exec.line.push_back(nullptr);
  return execute(thread, exec.line, environment);
}

}  // namespace

int64_t sys_execve(Thread& thread, const Call& call) {
  Exec& exec = own_exec;
  if (!read_string(call.arguments[0], exec.path) ||
      !read_pointers(call.arguments[1], exec.arguments)) {
    return -EFAULT;
  }
  return follow(thread, call, exec, call.arguments[2]);
}

// By a path, or by a descriptor alone: the latter is followed by way of its name.
int64_t sys_execveat(Thread& thread, const Call& call) {
  Exec& exec = own_exec;
  std::string& path = exec.path;
  if (!read_string(call.arguments[1], path) || !read_pointers(call.arguments[2], exec.arguments)) {
    return -EFAULT;
  }
  const int directory = static_cast<int>(call.arguments[0]);
  if (path.empty() || (path[0] != '/' && directory != AT_FDCWD)) {
    char name[PATH_MAX];
    const std::string link = "/proc/self/fd/" + std::to_string(directory);
    const ssize_t length = readlink(link.c_str(), name, sizeof name);
    if (length <= 0) {
      return pass_on(thread, call);
    }
    path.insert(0, path.empty() ? "" : "/");
    path.insert(0, name, static_cast<size_t>(length));
  }
  return follow(thread, call, exec, call.arguments[3]);
}

}  // namespace os
