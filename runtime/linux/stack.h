// The application's first stack.
#pragma once

#include <string>

#include "runtime/linux/loader.h"

namespace os {

struct StackContents {
  const Image* program;
  const Image* interpreter;  // null: none
  const char* file;          // AT_EXECFN
  char** arguments;          // null-terminated
  char** environment;        // null-terminated
  bool executable;
};

// Where things lie on the stack that was built; `auxiliary` is a copy of the vector.
struct StackLayout {
  uint64_t guard, begin, end;                        // of the stack, and what guards it
  uint64_t arguments, environment, environment_end;  // the strings, one list behind the other
  std::string auxiliary;
};
const StackLayout& stack_layout();

// Maps a stack with a guard below it and writes the arguments, the environment and the
// auxiliary vector as Linux does. Returns SP, 0 if there is no memory.
uint64_t build_stack(const StackContents& contents);

}  // namespace os
