// tavok --profile=FILE: the client's table of executed places, written when the process ends.
#pragma once

namespace os {

// The process shall write the table to `file`, which is created. Returns the reason of a failure,
// null on success.
const char* request_profile(const char* file);

// Writes the table if it was requested, behind a line that tells where the application is. A forked
// child writes to a file of its own, with its process id behind the name.
void write_profile();

}  // namespace os
