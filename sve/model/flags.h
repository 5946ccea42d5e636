// The condition flags in CpuContext::nzcv, and the bits of CpuContext::fpsr.
#pragma once

#include "sve/model/context.h"

namespace model {

inline constexpr uint32_t flag_n = 1u << 31;
inline constexpr uint32_t flag_z = 1u << 30;
inline constexpr uint32_t flag_c = 1u << 29;
inline constexpr uint32_t flag_v = 1u << 28;

// N, Z, C, V, QC and the six cumulative flags: what FPSR has of a control and status word.
inline constexpr uint32_t fpsr_bits = 0xf800009f;

inline void set_flag(CpuContext* context, uint32_t flag, bool value) {
  context->nzcv = value ? context->nzcv | flag : context->nzcv & ~flag;
}

}  // namespace model
