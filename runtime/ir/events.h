// What the client has registered, for the runtime's core to call. Filled while the client starts,
// on one thread; read-only from the first block on, until the exit event.
#pragma once

#include "runtime/include/drmgr.h"

namespace ir {

inline constexpr unsigned max_events = 8;
inline constexpr int max_tls_fields = 16;

// Registered functions in the order of registration.
template <typename Function> struct event_list {
  Function entries[max_events] = {};
  unsigned count = 0;

  const Function* begin() const { return entries; }
  const Function* end() const { return entries + count; }
};

struct client_events {
  event_list<drmgr_thread_cb_t> thread_init;
  event_list<drmgr_thread_cb_t> thread_exit;
  event_list<drmgr_xform_cb_t> block;
  event_list<void (*)()> exit;
  int tls_fields = 0;        // fields 0 to tls_fields - 1 are in use
  unsigned drmgr_users = 0;  // drmgr_init less drmgr_exit
  unsigned drreg_users = 0;
};

extern constinit client_events events;

}  // namespace ir
