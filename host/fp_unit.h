// The host's floating-point unit: the operations of the fast path, on 128-bit vectors of bit
// patterns (uint32_t elements for single precision, uint64_t for double), and the control and
// status registers.
//
// An AArch64 host computes each operation by the one instruction of its name. On any other host
// the floating-point library does, with a control and a status word of its own for each thread;
// results and flags are the same.
#pragma once

#if defined(__aarch64__)
#include "host/fp_unit_aarch64.h"
namespace host {
using namespace aarch64;
}
#else
#include "host/fp_unit_software.h"
namespace host {
using namespace software;
}
#endif

namespace host {

// For the time that an instruction function runs: the unit's status register is the application's,
// and the control register is left as it was found. On AArch64 the application's control value is
// in force already; elsewhere the record alone knows it.
class FPBracket {
public:
  // The application's FPCR and FPSR.
  FPBracket(uint32_t control, uint32_t flags) : saved_control_(read_fpcr()) {
    if constexpr (!control_is_in_force)
      write_fpcr(control);
    write_fpsr(flags);
  }
  FPBracket(const FPBracket&) = delete;
  FPBracket& operator=(const FPBracket&) = delete;
  ~FPBracket() { write_fpcr(saved_control_); }

  // The status with what the operations have raised.
  uint32_t status() const { return static_cast<uint32_t>(read_fpsr()); }

private:
  uint64_t saved_control_;
};

}  // namespace host
