// What the client registered when it started.
#pragma once

#include "runtime/ir/events.h"

namespace core {

// Calls dr_client_main and keeps what it registers. From then on the runtime uses that copy: while
// the process exits, the client takes its events back, but other threads still build blocks.
void start_client(int argc, const char* argv[]);
const ir::client_events& client_events();

}  // namespace core
