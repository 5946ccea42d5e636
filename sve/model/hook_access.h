// Accesses to the application's memory through the hooks.
#pragma once

#include "sve/model/memory.h"
#include "sve/state/switches.h"

namespace model {

template <int msize>
inline uint64_t read(uint64_t address, int first_done, bool* fault, CpuContext* context) {
  if constexpr (msize == 1)
    return ReadMemLib1(address, first_done, fault, context);
  else if constexpr (msize == 2)
    return ReadMemLib2(address, first_done, fault, context);
  else if constexpr (msize == 4)
    return ReadMemLib4(address, first_done, fault, context);
  else
    return ReadMemLib8(address, first_done, fault, context);
}

template <int msize> inline void write(uint64_t value, uint64_t address, CpuContext* context) {
  if constexpr (msize == 1)
    WriteMemLib1(static_cast<uint8_t>(value), address, context);
  else if constexpr (msize == 2)
    WriteMemLib2(static_cast<uint16_t>(value), address, context);
  else if constexpr (msize == 4)
    WriteMemLib4(static_cast<uint32_t>(value), address, context);
  else
    WriteMemLib8(value, address, context);
}

// Reads of one load that may fail, one after another. first_done: 1 for a non-fault load. The first
// of a first-fault load may fault as the hardware's does.
template <int msize> struct GuardedReads {
  CpuContext* context;
  int first_done;

  uint64_t operator()(uint64_t address, bool* fault) {
    const bool plain = first_done == 0 && sve_faults_as_hardware;
    const uint64_t value = read<msize>(address, first_done, plain ? nullptr : fault, context);
    first_done = 1;
    return value;
  }
};

}  // namespace model
