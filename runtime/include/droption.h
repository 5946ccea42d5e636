// The parser of the arguments that the launcher hands to the client.
#pragma once

#include <string>
#include <string_view>

#include "dr_api.h"

enum droption_scope_t { DROPTION_SCOPE_CLIENT = 1, DROPTION_SCOPE_FRONTEND = 2 };

struct droption_parser_t {
  // Parses argv[1] onwards. "--" ends the arguments. No options exist, so any other argument gives
  // false and "Unknown option: " with the argument in `error`. `last` receives the index of the
  // first argument that was not parsed: that of the unknown one, the one behind "--", or `argc`.
  // Both pointers may be null. Inline, so that a client library does not depend on the C++ ABI of
  // its runtime.
  static bool parse_argv(droption_scope_t, int argc, const char* argv[], std::string* error,
                         int* last) {
    bool known = true;
    int next = 1;
    if (next < argc) {
      known = std::string_view(argv[next]) == "--";
      if (known) {
        ++next;
      } else if (error != nullptr) {
        *error = std::string("Unknown option: ") + argv[next];
      }
    }
    if (last != nullptr) {
      *last = next;
    }
    return known;
  }
};
