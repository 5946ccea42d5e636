// execve: programs for this processor go on under the runtime.
#include <elf.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "runtime/core/entry.h"
#include "runtime/linux/options.h"
#include "runtime/linux/process.h"
#include "runtime/linux/seccomp.h"
#include "runtime/linux/signals.h"
#include "runtime/linux/syscalls.h"

namespace os {

int open_anyway(int directory, const char* path, int flags) {
  int fd = openat(directory, path, flags);
  rlimit limit;
  if (fd < 0 && errno == EMFILE && getrlimit(RLIMIT_NOFILE, &limit) == 0) {
    const rlimit raised = {limit.rlim_max, limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &raised);
    fd = openat(directory, path, flags);
    const int error = errno;
    setrlimit(RLIMIT_NOFILE, &limit);
    errno = error;
  }
  return fd;
}

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

// Where the application's path begins, and how it is followed.
struct Place {
  int directory = AT_FDCWD;
  uint64_t flags = 0;
};

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

// The file for reading, or a negative error. A descriptor alone is opened anew, since it may be one
// that only names its file.
int open_file(const Place& place, const std::string& path) {
  constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
  const bool itself = path.empty() && (place.flags & AT_EMPTY_PATH) != 0;
  const std::string link = "/proc/self/fd/" + std::to_string(place.directory);
  const bool follows = (place.flags & AT_SYMLINK_NOFOLLOW) == 0;
  int fd = itself ? open_anyway(AT_FDCWD, link.c_str(), kFlags)
                  : open_anyway(place.directory, path.c_str(), kFlags | (follows ? 0 : O_NOFOLLOW));
  if (fd < 0 && errno == ENOENT && itself) {
    fd = fcntl(place.directory, F_DUPFD_CLOEXEC, 0);
  }
  return fd < 0 ? -errno : fd;
}

// Whether the kernel would execute the file with the process's own rights: a program that changes
// its identity would lose that by way of the launcher.
bool is_plain_executable(int fd, const Place& place, const std::string& path) {
  struct stat status;
  struct statvfs system;
  if (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode) ||
      (status.st_mode & (S_ISUID | S_ISGID)) != 0) {
    return false;
  }
  return path.empty() ? (status.st_mode & (S_IXUSR | S_IXGRP | S_IXOTH)) != 0 &&
                            fstatvfs(fd, &system) == 0 && (system.f_flag & ST_NOEXEC) == 0
                      : faccessat(place.directory, path.c_str(), X_OK, 0) == 0;
}

Program inspect(int fd, const Place& place, const std::string& path) {
  Program program;
  char head[kScriptLine + 1] = {};
  const bool plain = is_plain_executable(fd, place, path);
  const ssize_t got = plain ? pread(fd, head, kScriptLine, 0) : 0;
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

// What the kernel does not know of SIGSEGV and SIGBUS, since the runtime owns them there, but has
// to keep over an exec: that they are ignored, blocked, and wait.
void hand_over_signals(const Thread& thread, bool before) {
  constexpr uint64_t kIgnore = 1;
  const ThreadSignals& signals = thread.signals;
  for (const int signal : {SIGSEGV, SIGBUS}) {
    if (signals.actions->actions[signal].handler == kIgnore) {
      set_runtime_action(signal, before);
    }
  }
  const uint64_t blocked = signals.mask & kNeverMasked;
  syscall(SYS_rt_sigprocmask, before ? SIG_BLOCK : SIG_UNBLOCK, &blocked, nullptr, sizeof blocked);
  if (before && signals.has_held) {
    syscall(SYS_rt_tgsigqueueinfo, getpid(), syscall(SYS_gettid), signals.held.si_signo,
            &signals.held);
  }
}

// The launcher by its name; where that leads elsewhere now, by the kernel's link, or by what was
// kept of it.
int64_t execute_launcher(Thread& thread, const char* const* line, uint64_t environment) {
  const auto address = [](const void* what) { return reinterpret_cast<uint64_t>(what); };
  // The application may have closed it, and have another of this number.
  if ((fcntl(paths.launcher_fd, F_GETFL) & O_PATH) != 0 && fcntl(paths.launcher_fd, F_GETFL) >= 0) {
    const auto fd = static_cast<uint64_t>(paths.launcher_fd);
    return pass_on(thread,
                   {SYS_execveat, {fd, address(""), address(line), environment, AT_EMPTY_PATH}});
  }
  const int64_t result =
      pass_on(thread, {SYS_execve, {address(paths.launcher.c_str()), address(line), environment}});
  return result != -ENOENT
             ? result
             : pass_on(thread,
                       {SYS_execve, {address("/proc/self/exe"), address(line), environment}});
}

// What an exec is made of. It stays for the thread's next one: a vfork child that succeeds frees
// nothing, and its memory is its parent's.
struct Exec {
  bool unfinished = false;          // a killed child may have left anything in it
  std::string path;                 // as the application gave it
  std::vector<uint64_t> arguments;  // the application's strings
  Program program;
  std::string name, file;
  std::vector<std::string> options;
  std::vector<const char*> line;  // the launcher's command
};
thread_local Exec own_exec;

Exec& new_exec() {
  if (own_exec.unfinished) {
    new (&own_exec) Exec;
  }
  own_exec.unfinished = true;
  return own_exec;
}

// Goes on under the launcher with the file of descriptor `fd`.
int64_t execute(Thread& thread, Exec& exec, bool script, int fd, uint64_t environment) {
  const int filters = thread.filters != nullptr ? write_filters(thread.filters) : -1;
  if (filters < 0 && thread.filters != nullptr) {
    return filters;
  }
  exec.options = options_of_followed(options, exec.name, thread.keeps_vector_length);
  if (filters >= 0) {
    exec.options.push_back("--filters=" + std::to_string(filters));
  }
  exec.options.push_back("--file=" + std::to_string(fd));
  if (paths.launcher_fd >= 0) {
    exec.options.push_back("--launcher=" + std::to_string(paths.launcher_fd));
  }
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
  exec.unfinished = false;
  for (const int kept : {fd, paths.launcher_fd}) {
    fcntl(kept, F_SETFD, 0);
  }
  hand_over_signals(thread, true);
  const int64_t result = execute_launcher(thread, exec.line.data(), environment);
  hand_over_signals(thread, false);
  fcntl(paths.launcher_fd, F_SETFD, FD_CLOEXEC);
  close(filters);
  return result;
}

// The path that the kernel makes of a descriptor and a path.
std::string path_below(const Place& place, const std::string& path) {
  const bool plain = !path.empty() && (path[0] == '/' || place.directory == AT_FDCWD);
  const std::string below = "/dev/fd/" + std::to_string(place.directory);
  return plain ? path : path.empty() ? below : below + "/" + path;
}

// Goes on under the launcher if the file is for it. What cannot be read is the kernel's to judge.
int64_t follow(Thread& thread, const Call& original, Exec& exec, const Place& place,
               uint64_t environment) {
  const bool own = is_own_executable(exec.path.c_str());
  if (own) {
    exec.path = paths.application;
  }
  int fd = open_file(place, exec.path);
  if (fd < 0) {
    constexpr int kAlso[] = {-ENOENT, -ELOOP, -ENOTDIR, -ENAMETOOLONG, -EBADF, -EMFILE, -ENFILE};
    const bool fails = own || std::ranges::find(kAlso, fd) != std::end(kAlso);
    return fails ? fd : thread.filters != nullptr ? -EACCES : pass_on(thread, original);
  }
  exec.program = inspect(fd, place, exec.path);
  const std::string given = exec.path;
  exec.path = path_below(place, given);
  const bool script = !exec.program.interpreter.empty();
  bool ours = exec.program.ours;
  // The interpreter would not find the file of a descriptor that closes.
  if (script && (exec.path == given || (fcntl(place.directory, F_GETFD) & FD_CLOEXEC) == 0)) {
    close(fd);
    fd = open_file({}, exec.program.interpreter);
    ours = fd >= 0 && inspect(fd, {}, exec.program.interpreter).ours;
  }
  int64_t result = 0;
  exec.file = as_path(script ? exec.program.interpreter : exec.path);
  exec.name = script ? exec.file : std::string();
  if (!ours) {
    // Without the runtime nobody would ask the filters.
    result = thread.filters != nullptr ? -EACCES : pass_on(thread, original);
  } else if (!script && !exec.arguments.empty() && !read_string(exec.arguments[0], exec.name)) {
    result = -EFAULT;
  } else {
    result = execute(thread, exec, script, fd, environment);
  }
  close(fd);
  return result;
}

int64_t follow_call(Thread& thread, const Call& call, const uint64_t* path, const Place& place) {
  Exec& exec = new_exec();
  const bool read = read_string(path[0], exec.path) && read_pointers(path[1], exec.arguments);
  const int64_t result = read ? follow(thread, call, exec, place, path[2]) : -EFAULT;
  exec.unfinished = false;
  return result;
}

}  // namespace

int64_t sys_execve(Thread& thread, const Call& call) {
  return follow_call(thread, call, call.arguments, {});
}

int64_t sys_execveat(Thread& thread, const Call& call) {
  const Place place = {static_cast<int>(call.arguments[0]), call.arguments[4]};
  constexpr uint64_t kKnown = AT_EMPTY_PATH | AT_SYMLINK_NOFOLLOW;
  return (place.flags & ~kKnown) != 0 && thread.filters == nullptr
             ? pass_on(thread, call)
             : follow_call(thread, call, call.arguments + 1, place);
}

// Behind these calls the launcher's name may lead nowhere. Its descriptor lies above those that
// programs count on.
int64_t sys_change_root(Thread& thread, const Call& call) {
  constexpr int kAbove = 1000;
  if (paths.launcher_fd < 0) {
    const int fd = open("/proc/self/exe", O_PATH | O_CLOEXEC);
    const int above = fcntl(fd, F_DUPFD_CLOEXEC, kAbove);
    paths.launcher_fd = above >= 0 ? above : fcntl(fd, F_DUPFD_CLOEXEC, 0);
    close(fd);
  }
  return pass_on(thread, call);
}

}  // namespace os
