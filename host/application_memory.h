// What holds for accesses to the application's memory, whoever makes them.
#pragma once

#include <atomic>
#include <cstdint>

namespace host {

// No host has smaller pages, so what stays inside one of these cannot fault halfway.
inline constexpr uint64_t smallest_page = 4096;

// A fault is a signal on this thread: the accesses in front of this are done when it arrives, those
// behind it are not. So a fault is that of the lowest element that has one.
inline void finish_access() { std::atomic_signal_fence(std::memory_order_seq_cst); }

}  // namespace host
