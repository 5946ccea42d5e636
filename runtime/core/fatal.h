// The end of the process for a reason of the runtime's own.
#pragma once

namespace core {

inline constexpr int kRuntimeFailure = 70;

// Writes "tavok: <reason>" to standard error and ends the process with kRuntimeFailure.
[[noreturn]] void fatal(const char* reason);
[[noreturn]] void fatal(const char* reason, const char* detail);

}  // namespace core
