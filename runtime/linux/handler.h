// The one handler that the runtime gives to the kernel.
#pragma once

#include <csignal>

namespace os {

void handle_signal(int signal, siginfo_t* info, void* context);

}  // namespace os
