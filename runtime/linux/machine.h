// The machine that the application sees: with SVE or without, as the options ask for, and never as
// the host happens to be. Identification registers: runtime/core/identification.h.
#pragma once

#include <cstdint>
#include <string>

namespace os {

// AT_HWCAP and AT_HWCAP2 for the application: the host's, but for all that speaks of SVE and SME.
uint64_t shown_hwcap(uint64_t host);
uint64_t shown_hwcap2(uint64_t host);

// /proc/cpuinfo in the same way. A text without a line of features is no AArch64 kernel's, but that
// of a simulator's machine: then one is made up from what the application is told elsewhere.
std::string shown_cpuinfo(const std::string& host);

}  // namespace os
