// A runtime for tests of the client: what the instruction lists leave open, recorded and under the
// test's control. Only one thread is known.
#pragma once

#include <string>
#include <vector>

#include "drmgr.h"
#include "drreg.h"
#include "runtime/ir/ir.h"

namespace fake {

struct aborted {};  // thrown by dr_abort

struct Thread {
  ir::arena memory;
  void* field = nullptr;  // the client's
  uint64_t slots[SPILL_SLOT_MAX + 1] = {};
  size_t allocated = 0;  // bytes of dr_thread_alloc
};

struct Runtime {
  // What happened.
  std::vector<std::string> calls;  // of life-cycle functions, in order
  std::string errors;              // what was printed to our_stderr
  int modules_held = 0;            // handed out and not freed
  drmgr_thread_cb_t thread_init = nullptr;
  drmgr_thread_cb_t thread_exit = nullptr;
  drmgr_xform_cb_t block = nullptr;
  void (*exit)() = nullptr;

  // What shall happen.
  bool drmgr_init_result = true;
  drreg_status_t drreg_init_result = DRREG_SUCCESS;
  drreg_status_t drreg_exit_result = DRREG_SUCCESS;
  bool register_block_result = true;
  bool unregister_block_result = true;
  reg_id_t stolen_register = DR_REG_X28;
  std::vector<module_data_t> modules;  // the first is the executable, unless there is none
  bool has_main_module = true;

  Thread thread;
};

extern Runtime runtime;

// Whether the text is one failed assertion of the client's, of this expression.
bool is_assertion(const std::string& text, const char* expression);

inline constexpr int client_field = 5;  // the index that the client is given

// A block's tag is the address of one.
struct Tag {
  app_pc pc;
};

}  // namespace fake
