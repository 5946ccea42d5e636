// The launcher: loads the application and runs it.
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <bit>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "runtime/core/block.h"
#include "runtime/core/client.h"
#include "runtime/core/identification.h"
#include "runtime/core/predict.h"
#include "runtime/linux/client_switches.h"
#include "runtime/linux/loader.h"
#include "runtime/linux/mappings.h"
#include "runtime/linux/messages.h"
#include "runtime/linux/modules.h"
#include "runtime/linux/options.h"
#include "runtime/linux/pages.h"
#include "runtime/linux/process.h"
#include "runtime/linux/profile.h"
#include "runtime/linux/seccomp.h"
#include "runtime/linux/signals.h"
#include "runtime/linux/stack.h"
#include "runtime/linux/syscalls.h"

namespace os {
namespace {

// Where a program goes that may lie anywhere: near the place of Linux's own choice, two thirds up
// the address space, which a sanitizer takes for granted. There the launcher's heap begins, at
// random if Linux puts programs there at random.
uint64_t program_hint(char** environment) {
  constexpr uint64_t kRoomForHeap = 1U << 30, kSimulator = 0x5700000000;
  const uint64_t space = std::bit_ceil(reinterpret_cast<uint64_t>(environment));
  const uint64_t place = page_ceiling(space / 3 * 2), heap = reinterpret_cast<uint64_t>(sbrk(0));
  if (heap - place < 2 * kRoomForHeap) {
    return page_ceiling(heap) + kRoomForHeap;
  }
  return space == uint64_t{1} << 48 ? place + kRoomForHeap : kSimulator;
}

struct Program {
  int fd;
  ElfHeaders headers;
  Image image;
};

[[noreturn]] void refuse(const std::string& file, const char* reason, int status) {
  std::fprintf(stderr, "tavok: %s: %s\n", file.c_str(), reason);
  std::exit(status);
}

int status_of_error(int error) {
  return error == ENOENT || error == ENOTDIR ? kNotFoundStatus : kCannotRunStatus;
}

Program open_program(const std::string& path, int fd = -1) {
  if (fd < 0) {
    fd = open_anyway(AT_FDCWD, path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  }
  Program program = {fd, {}, {}};
  struct stat status;
  if (program.fd < 0 || fstat(program.fd, &status) != 0) {
    refuse(path, std::strerror(errno), status_of_error(errno));
  }
  if (S_ISDIR(status.st_mode)) {
    refuse(path, std::strerror(EISDIR), kCannotRunStatus);
  }
  // By the file's mode: a simulator that finds the file elsewhere may not do so for access().
  if ((status.st_mode & (S_IXUSR | S_IXGRP | S_IXOTH)) == 0) {
    refuse(path, std::strerror(EACCES), kCannotRunStatus);
  }
  if (const char* reason = read_elf(program.fd, program.headers)) {
    refuse(path, reason, kCannotRunStatus);
  }
  return program;
}

void map_program(Program& program, const std::string& path, uint64_t hint) {
  if (const char* reason = map_image(program.fd, program.headers, hint, program.image)) {
    refuse(path, reason, kCannotRunStatus);
  }
  close(program.fd);
  // The gaps between segments stay inaccessible, and are nothing of the application's.
  const uint64_t bias = program.image.bias;
  for (const Elf64_Phdr& segment : program.headers.segments) {
    if (segment.p_type == PT_LOAD) {
      note_application_memory(page_floor(bias + segment.p_vaddr),
                              page_ceiling(bias + segment.p_vaddr + segment.p_memsz));
    }
  }
}

std::string real_path(const std::string& path) {
  char resolved[PATH_MAX];
  return realpath(path.c_str(), resolved) != nullptr ? resolved : path;
}

std::string target_of(const std::string& link) {
  char path[PATH_MAX];
  const ssize_t length = readlink(link.c_str(), path, sizeof path);
  return length > 0 ? std::string(path, static_cast<size_t>(length)) : std::string();
}

// What /proc/self/exe shows. A file that was handed over may have no name any more.
std::string shown_path(const std::string& path, int fd) {
  struct stat named, open;
  if (fd < 0 || fstat(fd, &open) != 0 ||
      (stat(path.c_str(), &named) == 0 && named.st_dev == open.st_dev &&
       named.st_ino == open.st_ino && path.rfind("/dev/fd/", 0) != 0)) {
    return real_path(path);
  }
  return target_of("/proc/self/fd/" + std::to_string(fd));
}

std::string application_path(const char* name) {
  int status;
  std::string path = find_application(name, status);
  if (status == kNotFoundStatus) {
    refuse(name, "not found", status);
  }
  if (status == kCannotRunStatus) {
    refuse(name, std::strerror(EACCES), status);
  }
  return path;
}

// Maps the application and returns the thread that is about to run it.
Thread& load(const std::string& path, char** arguments, char** environment) {
  Program program = open_program(path, options.file);
  const std::string& interpreter_path = program.headers.interpreter;
  const bool dynamic = !interpreter_path.empty();
  Program interpreter = dynamic ? open_program(interpreter_path) : Program{};
  map_program(program, path, program_hint(environment));
  const Image& image = program.image;
  add_module(image.begin, image.end, image.entry, paths.application, true);
  set_initial_break(image.end);
  if (dynamic) {
    map_program(interpreter, interpreter_path, 0);
    const Image& mapped = interpreter.image;
    add_module(mapped.begin, mapped.end, mapped.entry, real_path(interpreter_path), false);
  }
  const uint64_t sp = build_stack({&image, dynamic ? &interpreter.image : nullptr, path.c_str(),
                                   arguments, environment, program.headers.executable_stack});
  if (sp == 0) {
    refuse(path, "no memory for the stack", kCannotRunStatus);
  }
  Thread& thread = *new_thread();
  thread.main = true;
  thread.context.sp = sp;
  thread.context.pc = dynamic ? interpreter.image.entry : image.entry;
  return thread;
}

int launch(int argc, char** argv, char** environment) {
  begin_messages();
  options = read_options(argc, argv);
  if (options.status >= 0) {
    return options.status;
  }
  const std::string path =
      options.file >= 0 ? options.application[0] : application_path(options.application[0]);
  paths = {shown_path(path, options.file), target_of("/proc/self/exe"), options.launcher};
  fcntl(options.launcher, F_SETFD, FD_CLOEXEC);
  // What the kernel would call the process: the last part of the path, cut to what fits.
  prctl(PR_SET_NAME, path.c_str() + path.rfind('/') + 1);
  if (options.name != nullptr) {
    options.application[0] = const_cast<char*>(options.name);
  }
  core::tells_of_sve = options.sve;
  core::optimise_blocks = options.optimise;
  core::predict_branches = options.predict;
  if (&sve_in_libraries != nullptr) {
    sve_in_libraries = !options.only_program;
  }
  if (&sve_faults_as_hardware != nullptr) {
    sve_faults_as_hardware = !options.library_faults;
  }
  if (options.profile != nullptr) {
    if (const char* reason = request_profile(options.profile)) {
      refuse(options.profile, reason, kUsageStatus);
    }
  }
  if (const char* reason = set_report_target(options.report)) {
    refuse(options.report.file, reason, kUsageStatus);
  }
  install_handlers();
  Thread& thread = load(path, options.application, environment);
  thread.keeps_vector_length = options.keeps_vector_length;
  thread.filters = read_filters(options.filters);
  const char* client[] = {"tavok", nullptr};
  core::start_client(1, client);
  begin_thread(thread);
  thread.signals.mask = initial_mask();
  run_application(thread);
  return EXIT_FAILURE;  // not reached: the main thread ends by a system call
}

}  // namespace
}  // namespace os

int main(int argc, char** argv, char** environment) { return os::launch(argc, argv, environment); }
