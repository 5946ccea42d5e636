// The only roads from the model at any vector length to the application's memory: one call for each
// element. Rows go by direct_access.h.
#pragma once

#include "sve/model/context.h"

extern "C" {

// The bytes at the address, zero-extended. With a fault pointer the read is guarded: if the first
// or the last byte cannot be read, *fault becomes true and the result is 0; it is never set to
// false. Without one the read is plain, and a fault is the application's own. first_done says that
// an element has been read before; it makes no difference here.
uint64_t ReadMemLib1(uint64_t address, int first_done, bool* fault, CpuContext* context);
uint64_t ReadMemLib2(uint64_t address, int first_done, bool* fault, CpuContext* context);
uint64_t ReadMemLib4(uint64_t address, int first_done, bool* fault, CpuContext* context);
uint64_t ReadMemLib8(uint64_t address, int first_done, bool* fault, CpuContext* context);

// A plain store. A fault is the application's own.
void WriteMemLib1(uint8_t value, uint64_t address, CpuContext* context);
void WriteMemLib2(uint16_t value, uint64_t address, CpuContext* context);
void WriteMemLib4(uint32_t value, uint64_t address, CpuContext* context);
void WriteMemLib8(uint64_t value, uint64_t address, CpuContext* context);

// The inert entry points of a simulated memory: reads give 0 and no fault, writes do nothing.
uint64_t ReadMem(uint64_t address, int size, int first_done, bool* fault, CpuContext* context);
uint64_t ReadMemSim(uint64_t address, int size, int first_done, bool* fault, bool stream,
                    CpuContext* context);
void WriteMem(uint64_t value, uint64_t address, int size, CpuContext* context);
void WriteMemSim(uint64_t value, uint64_t address, int size, bool stream, CpuContext* context);
}
