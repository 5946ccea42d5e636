// Accesses to the application's memory as the hooks make them, without the calls.
#pragma once

#include <cstring>
#include <type_traits>

#include "host/application_memory.h"
#include "sve/model/context.h"
#include "sve/state/guarded_reads.h"
#include "sve/state/switches.h"

namespace model {

template <int msize>
using Datum = std::conditional_t<
    msize == 1, uint8_t,
    std::conditional_t<msize == 2, uint16_t, std::conditional_t<msize == 4, uint32_t, uint64_t>>>;

template <int msize> inline uint64_t read(uint64_t address, int, bool* fault, CpuContext*) {
  if (fault != nullptr)
    return guarded_read<Datum<msize>>(address, fault);
  Datum<msize> datum;
  memcpy(&datum, reinterpret_cast<const void*>(address), sizeof datum);
  host::finish_access();
  return datum;
}

template <int msize> inline void write(uint64_t value, uint64_t address, CpuContext*) {
  const auto datum = static_cast<Datum<msize>>(value);
  memcpy(reinterpret_cast<void*>(address), &datum, sizeof datum);
  host::finish_access();
}

inline namespace direct {  // hook_access.h has a class of this name, too

// Reads of one load that may fail, one after another. Where one has succeeded, the others in its
// page need no guard. The first of a first-fault load may fault as the hardware's does.
template <int msize> struct GuardedReads {
  CpuContext* context;
  int first_done;
  uint64_t readable_page = ~0ull;

  uint64_t operator()(uint64_t address, bool* fault) {
    const uint64_t first = address / host::smallest_page;
    const uint64_t last = (address + msize - 1) / host::smallest_page;
    const bool known = first == readable_page && last == readable_page;
    const bool plain = known || (first_done == 0 && sve_faults_as_hardware);
    const uint64_t value = read<msize>(address, first_done, plain ? nullptr : fault, context);
    first_done = 1;
    if (!*fault)
      readable_page = last;
    return value;
  }
};

}  // namespace direct

}  // namespace model
