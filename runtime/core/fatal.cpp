#include "runtime/core/fatal.h"

#include <sys/uio.h>
#include <unistd.h>

#include <cstring>

#include "runtime/include/dr_api.h"

namespace core {
namespace {

iovec text(const char* string) { return {const_cast<char*>(string), std::strlen(string)}; }

}  // namespace

// One system call, no buffer: this also runs in signal handlers and on threads.
void fatal(const char* reason, const char* detail) {
  const iovec parts[] = {text("tavok: "), text(reason), text(detail), text("\n")};
  [[maybe_unused]] const ssize_t written = writev(our_stderr, parts, 4);
  _exit(kRuntimeFailure);
}

void fatal(const char* reason) { fatal(reason, ""); }

}  // namespace core
