#include "runtime/linux/profile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>

#include "runtime/include/dr_api.h"
#include "runtime/linux/modules.h"

// What a client exports that counts; one that does not is no error.
extern "C" {
__attribute__((weak)) void dump_sve_stats();            // prints to stderr
__attribute__((weak)) extern std::mutex icounts_mutex;  // guards what it prints
}

namespace os {
namespace {

std::string profile_path;  // absolute: the application may change its directory
pid_t first_process;

// The client prints to stderr, which is this file meanwhile. The application has a stream of its
// own, and its descriptors stay as they are.
void print_table(FILE* file) {
  const std::lock_guard lock(icounts_mutex);
  FILE* const before = stderr;
  stderr = file;
  dump_sve_stats();
  stderr = before;
}

// The application's first: it was the first to be loaded.
void print_modules(FILE* file) {
  for_each_module([file](const module_data_t& module) {
    std::fprintf(file, "module: %p %p %s\n", static_cast<void*>(module.start),
                 static_cast<void*>(module.end), module.full_path);
  });
}

}  // namespace

const char* request_profile(const char* file) {
  if (&dump_sve_stats == nullptr || &icounts_mutex == nullptr) {
    return "this client has no profile";
  }
  char directory[PATH_MAX];
  profile_path = file;
  if (file[0] != '/' && getcwd(directory, sizeof directory) != nullptr) {
    profile_path = std::string(directory) + "/" + file;
  }
  first_process = getpid();
  const int fd = open(profile_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (fd < 0) {
    return std::strerror(errno);
  }
  close(fd);
  return nullptr;
}

void write_profile() {
  if (profile_path.empty()) {
    return;
  }
  const std::string path =
      getpid() == first_process ? profile_path : profile_path + "." + std::to_string(getpid());
  FILE* const file = std::fopen(path.c_str(), "we");
  bool written = file != nullptr;
  if (written) {
    print_modules(file);
    print_table(file);
    written = std::ferror(file) == 0;
    written = std::fclose(file) == 0 && written;
  }
  if (!written) {
    std::fprintf(stderr, "tavok: %s: %s\n", path.c_str(), std::strerror(errno));
  }
}

}  // namespace os
