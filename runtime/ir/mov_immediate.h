// Constants in registers.
#pragma once

#include <cstdint>

namespace ir {

inline constexpr unsigned mov_immediate_max = 4;

// Writes the shortest sequence of MOVZ, MOVN and MOVK that sets Xd (not XZR) to `value`, and
// returns its length, 1 to mov_immediate_max.
unsigned mov_immediate(unsigned rd, std::uint64_t value, std::uint32_t words[mov_immediate_max]);

}  // namespace ir
