// The host's pages.
#pragma once

#include <unistd.h>

#include <cstdint>

namespace os {

inline uint64_t page_size() {
  static const auto size = static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
  return size;
}
inline uint64_t page_floor(uint64_t address) { return address & ~(page_size() - 1); }
inline uint64_t page_ceiling(uint64_t address) { return page_floor(address + page_size() - 1); }

}  // namespace os
