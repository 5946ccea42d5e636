// Which memory is the application's own, and what /proc/self/maps shows of it.
#pragma once

#include <cstdint>
#include <string>

#include "runtime/core/lock.h"

namespace os {

void note_application_memory(uint64_t begin, uint64_t end);
void forget_application_memory(uint64_t begin, uint64_t end);

// The kernel's text without what is the launcher's, and with the names and rights that the
// application's memory would have without it.
std::string shown_maps(const std::string& host);

// The table's lock, to be held over a fork.
extern core::Lock application_memory_mutex;

}  // namespace os
