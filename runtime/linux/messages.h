// Where the launcher's own words go: to the standard error that it was started with, and never into
// a file that the application has put in its place.
#pragma once

#include <cstdio>

#include "runtime/linux/options.h"
#include "runtime/linux/syscalls.h"

namespace os {

// At the launcher's start.
void begin_messages();

// The descriptor for a message now, -1 if there is none.
int message_descriptor(const Thread& thread);

// The application's calls that may change what descriptor 2 is.
//
// A program that closes its standard error just before it ends, as all of the GNU tools do, still
// gets its report: the file is kept open until the program does anything but end. Thus a daemon
// that closes it lets whoever reads at the other end go.
int64_t sys_close(Thread& thread, const Call& call);
int64_t sys_close_range(Thread& thread, const Call& call);
int64_t sys_dup3(Thread& thread, const Call& call);

// While a file is kept, every call comes here first.
extern bool keeps_standard_error;
void note_call_while_kept(uint64_t number);

// Remembers where the client's report at the end goes. Returns null, or why the file cannot be
// written.
const char* set_report_target(const ReportTarget& target);

// While one exists, what is printed to stderr is the report.
class ReportStream {
public:
  ReportStream();
  ~ReportStream();
  ReportStream(const ReportStream&) = delete;

private:
  FILE* const messages_;
  FILE* own_ = nullptr;
};

}  // namespace os
