#include "runtime/ir/events.h"

#include <algorithm>

#include "runtime/include/drreg.h"

namespace ir {

constinit client_events events;

namespace {

template <typename Function> bool add(event_list<Function>& list, Function function) {
  const bool known = std::find(list.begin(), list.end(), function) != list.end();
  if (function == nullptr || known || list.count == max_events) {
    return false;
  }
  list.entries[list.count++] = function;
  return true;
}

template <typename Function> bool remove(event_list<Function>& list, Function function) {
  Function* const behind = list.entries + list.count;
  Function* const end = std::remove(list.entries, behind, function);
  const bool found = end != behind;
  list.count -= found ? 1 : 0;
  return found;
}

}  // namespace
}  // namespace ir

using ir::events;

bool drmgr_init() {
  ++events.drmgr_users;
  return true;
}

void drmgr_exit() {
  if (events.drmgr_users > 0 && --events.drmgr_users == 0) {
    events.thread_init = {};
    events.thread_exit = {};
    events.block = {};
    events.tls_fields = 0;
  }
}

bool drmgr_register_thread_init_event(drmgr_thread_cb_t func) {
  return ir::add(events.thread_init, func);
}

bool drmgr_register_thread_exit_event(drmgr_thread_cb_t func) {
  return ir::add(events.thread_exit, func);
}

bool drmgr_register_bb_app2app_event(drmgr_xform_cb_t func, drmgr_priority_t* priority) {
  return priority == nullptr && ir::add(events.block, func);
}

bool drmgr_unregister_bb_app2app_event(drmgr_xform_cb_t func) {
  return ir::remove(events.block, func);
}

int drmgr_register_tls_field() {
  return events.tls_fields < ir::max_tls_fields ? events.tls_fields++ : -1;
}

void dr_register_exit_event(void (*func)()) { ir::add(events.exit, func); }

drreg_status_t drreg_init(drreg_options_t* options) {
  if (options == nullptr || options->struct_size != sizeof(drreg_options_t) ||
      options->num_spill_slots != 0) {
    return DRREG_ERROR_INVALID_PARAMETER;
  }
  ++events.drreg_users;
  return DRREG_SUCCESS;
}

drreg_status_t drreg_exit() {
  if (events.drreg_users == 0) {
    return DRREG_ERROR;
  }
  --events.drreg_users;
  return DRREG_SUCCESS;
}
