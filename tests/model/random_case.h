// One case of a comparison of tiers: a word of a row, a record full of interesting values, and
// memory that the word's addresses lie in.
#pragma once

#include <array>
#include <string_view>

#include "tests/fast/fixture.h"

namespace tiers {

// Application memory of a case. Every address of a case lies well inside of it.
struct Memory {
  static constexpr size_t size = 16384;
  alignas(64) std::array<uint8_t, size> bytes;

  uint64_t middle() const { return reinterpret_cast<uint64_t>(bytes.data()) + size / 2; }
};

// Such memory, below 4 GiB. There is one of it.
Memory& low_memory();

struct Case {
  uint32_t word;
  cpu_state state;
};

// Whether the row is a load or a store.
bool touches_memory(const Row& row);

// A case for the row, whose addresses lie in the memory.
Case random_case(const Row& row, fixture::Random& random, const Memory& memory);

// Moves the case's addresses to an edge of the memory, across it, or to where nothing is.
void move_to_edge(Case& chosen, const Row& row, fixture::Random& random, const Memory& memory);

// What the bridge makes of the record beside the instruction itself: conditions without the upper
// half of their field, FZ16 in fpcr, ffr of clean bytes. The fast path notes the word, but for a
// reserved immediate, with which neither tier touches anything.
void settle(cpu_state& fast, const cpu_state& before);

// The stub as the application runs it, with the record's controls in the host's unit; now and then
// with others, which a row of the model must not notice. The host's own registers stay as they are,
// but for the status of host floating point.
void run_fast(const Row& row, uint32_t word, cpu_state& state);

// Floating-point values at which arithmetic turns, of so many bytes (2, 4 or 8).
uint64_t interesting_fp(fixture::Random& random, unsigned width);

}  // namespace tiers
