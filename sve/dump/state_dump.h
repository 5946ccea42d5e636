// Prints the emulated state for a debugger, as a query asks for it.
//
// A query is  <class><register>[<element>].<size>.<type>  with every part optional:
//   class     z, p, or all                       "ip", "cc" and "help" stand alone
//   register  number of the Z or P register
//   element   number of the element
//   size      d, s, h, b: doublewords to bytes
//   type      x, f, u, s: hexadecimal, floating-point, unsigned, signed
// Letters may have any case. What does not fit is ignored, and a null query means everything.
#pragma once

#include <cstdint>

#include "sve/state/cpu_state.h"
#include "sve/state/exports.h"

inline constexpr uint32_t all_indices = ~0u;

// One request, and the way out for all that it prints.
struct SVE_Printer {
  cpu_state* state;
  char reg_class;          // z, p, i (ip), c (cc), h (help), or a for all
  char size;               // d, s, h, b, or a for all
  char type;               // x, f, u, s, or a for all
  uint32_t reg_index;      // or all_indices
  uint32_t element_index;  // or all_indices

  // As fprintf to stderr. The compiler does not check the format: some of the formats combine flags
  // that it warns of.
  int print(const char* format, ...);
};

extern "C" {

// Prints what the query selects of the record as the last emulated instruction left it. An index
// other than all_indices takes precedence over the query's. The result has no meaning.
TAVOK_EXPORT int dump_state(cpu_state* state, const char* query, unsigned int reg_index,
                            unsigned int element_index);

// The same with the query's own indices.
TAVOK_EXPORT int info_all_registers(cpu_state* state, const char* query);
}
