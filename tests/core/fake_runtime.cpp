#include "tests/core/fake_runtime.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace fake {

Runtime runtime;

namespace {

void record(const std::string& call) { runtime.calls.push_back(call); }

module_data_t* hand_out(const module_data_t& module) {
  runtime.modules_held++;
  return new module_data_t(module);
}

Thread& thread_of(void* drcontext) { return *static_cast<Thread*>(drcontext); }

}  // namespace

bool is_assertion(const std::string& text, const char* expression) {
  int line = 0;
  int end = 0;
  sscanf(text.c_str(), "ASSERT FAILURE: sve/client/sve_client:%d:%n", &line, &end);
  return line > 0 && text.substr(end) == std::string(" ") + expression + " ()\n";
}

}  // namespace fake

using namespace fake;

namespace ir {
const context_layout runtime_layout = {.stolen_value = 16, .first_slot = 24};
arena& arena_of(void* drcontext) { return thread_of(drcontext).memory; }
}  // namespace ir

// ---- process ------------------------------------------------------------------------------------

file_t our_stderr = 77;

void dr_set_client_name(const char* name, const char*) {
  record(std::string("dr_set_client_name ") + name);
}

void dr_abort() {
  record("dr_abort");
  throw aborted{};
}

ptr_int_t dr_fprintf(file_t file, const char* format, ...) {
  char text[1000];
  va_list arguments;
  va_start(arguments, format);
  const int length = vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  runtime.errors += file == our_stderr ? text : "(to another file)";
  return length;
}

void dr_log(void* drcontext, uint mask, uint level, const char* format, ...) {
  record("dr_log " + std::to_string(drcontext == nullptr) + ' ' + std::to_string(mask) + ' ' +
         std::to_string(level) + ' ' + format);
}

module_data_t* dr_get_main_module() {
  record("dr_get_main_module");
  return runtime.has_main_module ? hand_out(runtime.modules.front()) : nullptr;
}

module_data_t* dr_lookup_module(byte* pc) {
  for (const module_data_t& module : runtime.modules)
    if (pc >= module.start && pc < module.end)
      return hand_out(module);
  return nullptr;
}

void dr_free_module_data(module_data_t* data) {
  runtime.modules_held--;
  delete data;
}

app_pc dr_fragment_app_pc(void* tag) { return static_cast<Tag*>(tag)->pc; }

extern "C" reg_id_t __wrap_dr_get_stolen_reg() { return runtime.stolen_register; }

// ---- events -------------------------------------------------------------------------------------

bool drmgr_init() {
  record("drmgr_init");
  return runtime.drmgr_init_result;
}

void drmgr_exit() { record("drmgr_exit"); }

drreg_status_t drreg_init(drreg_options_t* options) {
  const bool plain = options->struct_size == 32 && options->num_spill_slots == 0 &&
                     !options->conservative && options->error_callback == nullptr &&
                     !options->do_not_sum_slots;
  record(plain ? "drreg_init" : "drreg_init with options");
  return runtime.drreg_init_result;
}

drreg_status_t drreg_exit() {
  record("drreg_exit");
  return runtime.drreg_exit_result;
}

bool drmgr_register_thread_init_event(drmgr_thread_cb_t func) {
  record("drmgr_register_thread_init_event");
  runtime.thread_init = func;
  return true;
}

bool drmgr_register_thread_exit_event(drmgr_thread_cb_t func) {
  record("drmgr_register_thread_exit_event");
  runtime.thread_exit = func;
  return true;
}

void dr_register_exit_event(void (*func)()) {
  record("dr_register_exit_event");
  runtime.exit = func;
}

bool drmgr_register_bb_app2app_event(drmgr_xform_cb_t func, drmgr_priority_t* priority) {
  record(priority == nullptr ? "drmgr_register_bb_app2app_event" : "with a priority");
  runtime.block = func;
  return runtime.register_block_result;
}

bool drmgr_unregister_bb_app2app_event(drmgr_xform_cb_t func) {
  record(func == runtime.block ? "drmgr_unregister_bb_app2app_event" : "unregister another");
  return runtime.unregister_block_result;
}

int drmgr_register_tls_field() {
  record("drmgr_register_tls_field");
  return client_field;
}

// ---- the thread ---------------------------------------------------------------------------------

void* drmgr_get_tls_field(void* drcontext, int index) {
  return index == client_field ? thread_of(drcontext).field : nullptr;
}

bool drmgr_set_tls_field(void* drcontext, int index, void* value) {
  if (index == client_field)
    thread_of(drcontext).field = value;
  return index == client_field;
}

void* dr_get_current_drcontext() { return &runtime.thread; }

void* dr_thread_alloc(void* drcontext, size_t size) {
  thread_of(drcontext).allocated += size;
  return aligned_alloc(16, size);
}

void dr_thread_free(void* drcontext, void* memory, size_t size) {
  thread_of(drcontext).allocated -= size;
  free(memory);
}

ptr_uint_t dr_read_saved_reg(void* drcontext, dr_spill_slot_t slot) {
  return thread_of(drcontext).slots[slot];
}

void dr_write_saved_reg(void* drcontext, dr_spill_slot_t slot, ptr_uint_t value) {
  thread_of(drcontext).slots[slot] = value;
}
