// Events of threads and blocks, and per-thread storage for the client.
#pragma once

#include "dr_api.h"

// Where an event stands among others of its kind. Events without one run in registration order.
struct drmgr_priority_t {
  size_t struct_size;
  const char* name;
  const char* before;
  const char* after;
  int priority;
};

// Changes a block before it runs. `tag` names the block (dr_fragment_app_pc); `for_trace` and
// `translating` are false with this runtime.
using drmgr_xform_cb_t = dr_emit_flags_t (*)(void* drcontext, void* tag, instrlist_t* block,
                                             bool for_trace, bool translating);
using drmgr_thread_cb_t = void (*)(void* drcontext);

// Before any other function here. Initialisation is counted: the last exit forgets all events.
DR_API bool drmgr_init();
DR_API void drmgr_exit();

// `func` runs on the thread, before its first block or behind its last.
DR_API bool drmgr_register_thread_init_event(drmgr_thread_cb_t func);
DR_API bool drmgr_register_thread_exit_event(drmgr_thread_cb_t func);

// `func` sees each block with the application's instructions. `priority` must be null. False if
// `func` is registered already or the table of events is full.
DR_API bool drmgr_register_bb_app2app_event(drmgr_xform_cb_t func, drmgr_priority_t* priority);
// False if `func` is not registered.
DR_API bool drmgr_unregister_bb_app2app_event(drmgr_xform_cb_t func);

// A new field index, -1 if there is none left. Fields of a new thread are null.
DR_API int drmgr_register_tls_field();
// Of a field that there is: emulated instructions look their thread's record up by this.
DR_API void* drmgr_get_tls_field(void* drcontext, int index);
// False if there is no such field.
DR_API bool drmgr_set_tls_field(void* drcontext, int index, void* value);
