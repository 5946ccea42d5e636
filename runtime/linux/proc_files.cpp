#include "runtime/linux/proc_files.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/mman.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "runtime/core/entry.h"
#include "runtime/linux/machine.h"
#include "runtime/linux/mappings.h"
#include "runtime/linux/stack.h"

namespace os {
namespace {

std::string read_all(int fd) {
  std::string text;
  char chunk[4096];
  ssize_t got;
  while ((got = pread(fd, chunk, sizeof chunk, static_cast<off_t>(text.size()))) > 0) {
    text.append(chunk, static_cast<size_t>(got));
  }
  return text;
}

std::string memory(uint64_t begin, uint64_t end) {
  std::string bytes(end - begin, '\0');
  const size_t missing =
      core_copy(bytes.data(), reinterpret_cast<const void*>(begin), bytes.size());
  bytes.resize(bytes.size() - missing);
  return bytes;
}

// A program that writes a title over its arguments may go on in the environment.
std::string command_line() {
  const StackLayout& stack = stack_layout();
  std::string text = memory(stack.arguments, stack.environment);
  if (!text.empty() && text.back() != '\0') {
    text += memory(stack.environment, stack.environment_end);
    text.resize(std::min(text.size(), text.find('\0') + 1));
  }
  return text;
}

struct ProcFile {
  std::string_view name;
  bool of_process;  // in the folder of the process or of one of its threads
  std::string (*content)(int fd);
};

constexpr ProcFile kFiles[] = {
    {"cpuinfo", false, [](int fd) { return shown_cpuinfo(read_all(fd)); }},
    {"auxv", true, [](int) { return stack_layout().auxiliary; }},
    {"cmdline", true, [](int) { return command_line(); }},
    {"environ", true,
     [](int) { return memory(stack_layout().environment, stack_layout().environment_end); }},
    {"maps", true, [](int fd) { return shown_maps(read_all(fd)); }},
};

std::vector<std::string_view> split(std::string_view path) {
  std::vector<std::string_view> parts;
  while (!path.empty()) {
    const size_t length = std::min(path.find('/'), path.size());
    if (length != 0) {
      parts.push_back(path.substr(0, length));
    }
    path.remove_prefix(std::min(length + 1, path.size()));
  }
  return parts;
}

bool is_own(std::string_view folder) {
  return folder == "self" || folder == "thread-self" || folder == std::to_string(getpid());
}

// The file that a path below some /proc names, null if it is none of these.
const ProcFile* file_named(std::string_view path) {
  const std::vector<std::string_view> parts = split(path);
  const size_t count = parts.size();
  const auto* file = std::ranges::find_if(kFiles, [&](const ProcFile& candidate) {
    return count >= 2 && parts[count - 1] == candidate.name;
  });
  if (file == std::end(kFiles)) {
    return nullptr;
  }
  const bool own = is_own(parts[count - 2]) ||
                   (count >= 4 && parts[count - 3] == "task" && is_own(parts[count - 4]));
  return own == file->of_process ? file : nullptr;
}

// By its path, as a simulator tells them that has files of its own there; else by what the kernel
// says that was opened.
const ProcFile* find_file(int fd, const char* path) {
  if (path != nullptr && std::string_view(path).starts_with("/proc/")) {
    if (const ProcFile* file = file_named(path)) {
      return file;
    }
  }
  struct statfs system;
  if (fstatfs(fd, &system) != 0 || system.f_type != PROC_SUPER_MAGIC) {
    return nullptr;
  }
  char real[PATH_MAX];
  const std::string link = "/proc/self/fd/" + std::to_string(fd);
  const ssize_t length = readlink(link.c_str(), real, sizeof real);
  return length > 0 ? file_named({real, static_cast<size_t>(length)}) : nullptr;
}

bool write_all(int fd, const std::string& text) {
  size_t at = 0;
  while (at < text.size()) {
    const ssize_t written = write(fd, text.data() + at, text.size() - at);
    if (written <= 0) {
      return false;
    }
    at += static_cast<size_t>(written);
  }
  return lseek(fd, 0, SEEK_SET) == 0;
}

}  // namespace

void replace_proc_file(int fd, const char* path) {
  const ProcFile* const file = find_file(fd, path);
  if (file == nullptr) {
    return;
  }
  const int own = memfd_create(std::string(file->name).c_str(), MFD_CLOEXEC);
  if (own < 0) {
    return;
  }
  if (write_all(own, file->content(fd))) {
    const bool closes = (fcntl(fd, F_GETFD) & FD_CLOEXEC) != 0;
    dup3(own, fd, closes ? O_CLOEXEC : 0);
  }
  close(own);
}

}  // namespace os
