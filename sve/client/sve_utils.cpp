// The library's static initialiser, and emulation of one instruction for whoever asks for it.
#include "sve/client/sve_utils.h"

#include <unistd.h>

#include "host/fp_unit.h"
#include "sve/decode/dispatch.h"
#include "sve/model/context.h"
#include "sve/state/guarded_reads.h"
#include "sve/state/page_size.h"
#include "sve/stats/statistics.h"

int SVELibInitialized;

int SVEInitialize() {
  if (SVELibInitialized != 0)
    return SVELibInitialized;
  install_fault_handler();
  cpu_ctxt.vl = vector_bytes / sizeof(uint64_t);
  ctxt = &cpu_ctxt;
  SVELibInitialized = 1;
  return SVELibInitialized;
}

// The library's one static initialiser. These objects are constructed in this order, and destroyed
// in the reverse one.
Sites icounts;
uint32_t page_size = static_cast<uint32_t>(sysconf(_SC_PAGESIZE));
[[maybe_unused]] static const int initialized =
    (enter_rows(), guard_sve_stats_over_fork(), SVEInitialize());

aarch64_decode_rc execute_sve_instruction(cpu_state* state) {
  auto* const pc = reinterpret_cast<unsigned int*>(state->pc);
  const unsigned int word = *pc;
  const decode_stub stub = stub_to_execute(word);
  if (stub == nullptr)
    return aarch64_decode_unimplemented;
  // Stubs of host floating point leave the record's status in the host's register, which for
  // inserted code is the application's own. Whoever calls here has a register of its own.
  const uint64_t own_status = host::read_fpsr();
  const aarch64_decode_rc result = stub(state, word);
  host::write_fpsr(own_status);
  if (result != aarch64_decode_ok)
    return result;
  update_sve_stats(pc, word);
  state->pc += 4;
  return aarch64_decode_ok;
}
