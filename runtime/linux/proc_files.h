// Files of /proc that would show the launcher, or the host's processor, to the application.
#pragma once

#include <cstdint>

namespace os {

// `fd` was opened for reading by `path` (null: unknown). If it is such a file, another one with
// what the application shall read takes the descriptor; if there is no room for one, it stays.
void replace_proc_file(int fd, const char* path);

}  // namespace os
