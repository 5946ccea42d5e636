#include "runtime/linux/messages.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <mutex>

#include "runtime/include/dr_api.h"

namespace os {

constinit bool keeps_standard_error = false;

namespace {

constexpr int kStandardError = STDERR_FILENO;
// Clear of what programs count on to be the next free one.
constexpr int kFirstKept = 200;

struct Messages {
  std::mutex mutex;
  FILE* standard;  // the C library's stream for descriptor 2
  FILE* nowhere;   // takes everything and writes nothing
  bool given;      // descriptor 2 was open at the start,
  dev_t device;    // and this is what it was
  ino_t inode;
};
constinit Messages messages = {};

ReportTarget report_target;

bool is_given_file(int fd) {
  struct stat status;
  return messages.given && fstat(fd, &status) == 0 && status.st_dev == messages.device &&
         status.st_ino == messages.inode;
}

// The client prints to stderr, the runtime to our_stderr.
void speak_to(FILE* stream, int fd) {
  stderr = stream;
  our_stderr = fd;
}

void speak_to_standard_error() { speak_to(messages.standard, kStandardError); }
void speak_to_nobody() { speak_to(messages.nowhere, -1); }

void stop_keeping() {
  if (keeps_standard_error) {
    FILE* const kept = stderr;
    speak_to_nobody();
    std::fclose(kept);
    keeps_standard_error = false;
  }
}

// In front of a call by which descriptor 2 becomes another one, or none.
void leave_standard_error() {
  if (our_stderr != kStandardError) {
    return;
  }
  int kept = fcntl(kStandardError, F_DUPFD_CLOEXEC, kFirstKept);
  if (kept < 0) {
    kept = fcntl(kStandardError, F_DUPFD_CLOEXEC, kStandardError + 1);
  }
  FILE* const stream = kept >= 0 ? fdopen(kept, "w") : nullptr;
  if (stream == nullptr) {
    speak_to_nobody();
    return;
  }
  std::setvbuf(stream, nullptr, _IONBF, 0);
  speak_to(stream, kept);
  keeps_standard_error = true;
}

// What a program does between closing its streams and its end.
bool belongs_to_end(uint64_t number) {
  constexpr uint64_t kEnding[] = {
      SYS_close,      SYS_close_range,    SYS_dup3,         SYS_exit,         SYS_exit_group,
      SYS_munmap,     SYS_madvise,        SYS_brk,          SYS_fcntl,        SYS_lseek,
      SYS_newfstatat, SYS_fstat,          SYS_unlinkat,     SYS_futex,        SYS_getpid,
      SYS_gettid,     SYS_rt_sigprocmask, SYS_rt_sigaction, SYS_rt_sigreturn, SYS_fsync,
  };
  return std::find(std::begin(kEnding), std::end(kEnding), number) != std::end(kEnding);
}

std::string with_process(const std::string& file) {
  std::string path = file;
  for (size_t at = 0; (at = path.find("%p", at)) != std::string::npos;) {
    const std::string number = std::to_string(getpid());
    path.replace(at, 2, number);
    at += number.size();
  }
  return path;
}

FILE* open_report() {
  const std::string path = with_process(report_target.file);
  FILE* const file = std::fopen(path.c_str(), "ae");
  if (file == nullptr) {
    std::fprintf(stderr, "tavok: %s: %s\n", path.c_str(), std::strerror(errno));
  }
  return file;
}

}  // namespace

void begin_messages() {
  struct stat status;
  messages.standard = stderr;
  messages.nowhere = fopencookie(nullptr, "w", {});
  messages.given = fstat(kStandardError, &status) == 0;
  if (messages.given) {
    messages.device = status.st_dev;
    messages.inode = status.st_ino;
  } else {
    speak_to_nobody();
  }
}

// A vfork child has descriptors of its own and the parent's memory, where nothing may change.
int message_descriptor(const Thread& thread) {
  if (!thread.vfork_child) {
    return our_stderr;
  }
  return is_given_file(kStandardError) ? kStandardError : -1;
}

void note_call_while_kept(uint64_t number) {
  if (!belongs_to_end(number)) {
    const std::lock_guard lock(messages.mutex);
    stop_keeping();
  }
}

int64_t sys_close(Thread& thread, const Call& call) {
  const int fd = static_cast<int>(call.arguments[0]);
  if (!thread.vfork_child && (fd == kStandardError || fd == our_stderr)) {
    const std::lock_guard lock(messages.mutex);
    if (fd == kStandardError) {
      leave_standard_error();
    } else {
      stop_keeping();  // for the application there is no such descriptor
    }
  }
  return pass_on(thread, call);
}

int64_t sys_close_range(Thread& thread, const Call& call) {
  const auto covers = [&call](int fd) {
    return fd >= 0 && static_cast<unsigned>(call.arguments[0]) <= static_cast<unsigned>(fd) &&
           static_cast<unsigned>(fd) <= static_cast<unsigned>(call.arguments[1]);
  };
  if (!thread.vfork_child && (call.arguments[2] & CLOSE_RANGE_CLOEXEC) == 0) {
    const std::lock_guard lock(messages.mutex);
    if (covers(our_stderr) && our_stderr != kStandardError) {
      stop_keeping();
    } else if (covers(kStandardError)) {
      leave_standard_error();
      if (covers(our_stderr)) {
        stop_keeping();
      }
    }
  }
  return pass_on(thread, call);
}

int64_t sys_dup3(Thread& thread, const Call& call) {
  const int fd = static_cast<int>(call.arguments[1]);
  if (thread.vfork_child || (fd != kStandardError && fd != our_stderr)) {
    return pass_on(thread, call);
  }
  const std::lock_guard lock(messages.mutex);
  if (fd != kStandardError) {
    stop_keeping();
    return pass_on(thread, call);
  }
  leave_standard_error();
  const int64_t result = pass_on(thread, call);
  if (is_given_file(kStandardError)) {  // shells put it back, and a refused call changes nothing
    stop_keeping();
    speak_to_standard_error();
  }
  return result;
}

const char* set_report_target(const ReportTarget& target) {
  report_target = target;
  if (target.kind != ReportTarget::Kind::file) {
    return nullptr;
  }
  const std::string path = with_process(target.file);
  const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  if (fd < 0) {
    return std::strerror(errno);
  }
  close(fd);
  return nullptr;
}

ReportStream::ReportStream() : messages_(stderr) {
  if (report_target.kind == ReportTarget::Kind::none) {
    stderr = messages.nowhere;
  } else if (report_target.kind == ReportTarget::Kind::file) {
    own_ = open_report();
    stderr = own_ != nullptr ? own_ : messages.nowhere;
  }
}

ReportStream::~ReportStream() {
  std::fflush(stderr);
  stderr = messages_;
  if (own_ != nullptr) {
    std::fclose(own_);
  }
}

}  // namespace os
