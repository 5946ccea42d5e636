#include "sve/model/memory.h"

#include <cstring>

#include "sve/state/guarded_reads.h"

namespace {

template <class T> void store(T value, uint64_t address) {
  memcpy(reinterpret_cast<void*>(address), &value, sizeof(T));
}

}  // namespace

uint64_t ReadMemLib1(uint64_t address, int, bool* fault, CpuContext*) {
  return guarded_read<uint8_t>(address, fault);
}
uint64_t ReadMemLib2(uint64_t address, int, bool* fault, CpuContext*) {
  return guarded_read<uint16_t>(address, fault);
}
uint64_t ReadMemLib4(uint64_t address, int, bool* fault, CpuContext*) {
  return guarded_read<uint32_t>(address, fault);
}
uint64_t ReadMemLib8(uint64_t address, int, bool* fault, CpuContext*) {
  return guarded_read<uint64_t>(address, fault);
}

void WriteMemLib1(uint8_t value, uint64_t address, CpuContext*) { store(value, address); }
void WriteMemLib2(uint16_t value, uint64_t address, CpuContext*) { store(value, address); }
void WriteMemLib4(uint32_t value, uint64_t address, CpuContext*) { store(value, address); }
void WriteMemLib8(uint64_t value, uint64_t address, CpuContext*) { store(value, address); }

uint64_t ReadMem(uint64_t, int, int, bool* fault, CpuContext*) {
  *fault = false;
  return 0;
}

uint64_t ReadMemSim(uint64_t, int, int, bool* fault, bool, CpuContext*) {
  *fault = false;
  return 0;
}

void WriteMem(uint64_t, uint64_t, int, CpuContext*) {}

void WriteMemSim(uint64_t, uint64_t, int, bool, CpuContext*) {}
