// What a function prints to stderr.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

// stderr is a variable in this C library.
template <class Function> std::string captured_stderr(Function function) {
  char* text = nullptr;
  size_t length = 0;
  FILE* const before = stderr;
  stderr = open_memstream(&text, &length);
  function();
  fclose(stderr);
  stderr = before;
  const std::string result(text, length);
  free(text);
  return result;
}
