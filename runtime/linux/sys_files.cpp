// Files that would show the launcher instead of the application.
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "runtime/core/entry.h"
#include "runtime/linux/proc_files.h"
#include "runtime/linux/process.h"
#include "runtime/linux/syscalls.h"

namespace os {
namespace {

// Whether the path that the application gave is the link to this process's executable.
bool names_own_executable(uint64_t address) {
  char text[32] = {};
  core_copy(text, reinterpret_cast<const void*>(address), sizeof text - 1);
  return is_own_executable(text);
}

// The call with the application's file, where it names the link and would follow it.
int64_t pass_on_followed(Thread& thread, const Call& call, uint64_t flags) {
  Call changed = call;
  if ((flags & AT_SYMLINK_NOFOLLOW) == 0 && names_own_executable(call.arguments[1])) {
    changed.arguments[1] = reinterpret_cast<uint64_t>(paths.application.c_str());
  }
  return pass_on(thread, changed);
}

}  // namespace

bool is_own_executable(const char* path) {
  if (std::strncmp(path, "/proc/", 6) != 0) {
    return false;
  }
  char by_id[32];
  snprintf(by_id, sizeof by_id, "/proc/%d/exe", static_cast<int>(getpid()));
  return std::strcmp(path, "/proc/self/exe") == 0 ||
         std::strcmp(path, "/proc/thread-self/exe") == 0 || std::strcmp(path, by_id) == 0;
}

int64_t sys_readlinkat(Thread& thread, const Call& call) {
  if (!names_own_executable(call.arguments[1])) {
    return pass_on(thread, call);
  }
  const auto room = static_cast<int>(call.arguments[3]);
  if (room <= 0) {
    return -EINVAL;
  }
  const size_t size = std::min(paths.application.size(), static_cast<size_t>(room));
  void* buffer = reinterpret_cast<void*>(call.arguments[2]);
  return core_copy(buffer, paths.application.data(), size) == 0 ? static_cast<int64_t>(size)
                                                                : -EFAULT;
}

int64_t sys_openat(Thread& thread, const Call& call) {
  // openat2 has its flags in memory, as the first word.
  uint64_t flags = call.arguments[2];
  if (call.number == SYS_openat2) {
    core_copy(&flags, reinterpret_cast<const void*>(call.arguments[2]), sizeof flags);
  }
  const int64_t result = pass_on_followed(thread, call, 0);
  if (result >= 0 && (flags & (O_ACCMODE | O_PATH | O_DIRECTORY)) == O_RDONLY) {
    char path[64] = {};
    core_copy(path, reinterpret_cast<const void*>(call.arguments[1]), sizeof path - 1);
    replace_proc_file(static_cast<int>(result), path);
  }
  return result;
}

int64_t sys_newfstatat(Thread& thread, const Call& call) {
  return pass_on_followed(thread, call, call.arguments[3]);
}

int64_t sys_statx(Thread& thread, const Call& call) {
  return pass_on_followed(thread, call, call.arguments[2]);
}

}  // namespace os
