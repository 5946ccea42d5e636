// Running the application.
#pragma once

#include "runtime/core/context.h"

namespace core {

enum class Event {
  system_call,     // behind an SVC at pc - 4
  interrupted,     // context.pending is set; pc is where the application stands
  code_changed,    // behind an IC IVAU at pc - 4
  not_executable,  // there is no code at pc
};

// Runs the application from context.pc until something needs the operating system's side.
Event run(Context& context);

}  // namespace core
