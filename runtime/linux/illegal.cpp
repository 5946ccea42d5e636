#include "runtime/linux/illegal.h"

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <unistd.h>

#include <algorithm>

#include "runtime/core/entry.h"
#include "runtime/include/dr_api.h"
#include "runtime/ir/decode.h"
#include "runtime/ir/extensions.h"
#include "runtime/linux/client_switches.h"
#include "runtime/linux/messages.h"
#include "runtime/linux/process.h"

namespace os {
namespace {

struct Text {
  char bytes[512];
  size_t size = 0;

  template <typename... Values> void add(const char* format, Values... values) {
    const int length = std::snprintf(bytes + size, sizeof bytes - size, format, values...);
    size = std::min(size + static_cast<size_t>(std::max(length, 0)), sizeof bytes - 1);
  }
};

void add_place(Text& text, uint64_t pc) {
  text.add(" at 0x%" PRIx64, pc);
  module_data_t* const module = dr_lookup_module(reinterpret_cast<app_pc>(pc));
  if (module != nullptr) {
    const char* slash = std::strrchr(module->full_path, '/');
    text.add(" (%s+0x%" PRIx64 ")", slash != nullptr ? slash + 1 : module->full_path,
             pc - reinterpret_cast<uint64_t>(module->start));
    dr_free_module_data(module);
  }
}

void add_scalable(Text& text, uint32_t word) {
  const char* what = sve_describe_word != nullptr ? sve_describe_word(word) : nullptr;
  if (what == nullptr) {
    text.add("no instruction of SVE or SVE2; a later extension's, or none");
  } else if (std::strcmp(what, "SVE") == 0) {
    text.add("SVE in a library, which --only-program leaves alone");
  } else {
    text.add("%s, which tavok does not emulate", what);
  }
}

void add_meaning(Text& text, uint32_t word) {
  if (ir::is_scalable(word)) {
    add_scalable(text, word);
  } else if (ir::is_streaming(word)) {
    text.add("SME, which tavok does not emulate");
  } else if (word >> 16 == 0) {
    text.add("UDF, undefined on every processor");
  } else if (const char* extension = ir::extension_of(word)) {
    text.add("%s, which this processor lacks", extension);
  } else {
    text.add("no instruction that this processor knows");
  }
}

}  // namespace

void tell_illegal_instruction(const Thread& thread) {
  const uint64_t pc = thread.context.pc;
  Text text;
  uint32_t word;
  text.add("tavok: illegal instruction");
  const bool readable = core_copy(&word, reinterpret_cast<const void*>(pc), sizeof word) == 0;
  if (readable) {
    text.add(" 0x%08x", word);
  }
  add_place(text, pc);
  if (readable) {
    text.add(": ");
    add_meaning(text, word);
  }
  text.add("\n");
  [[maybe_unused]] const ssize_t written =
      ::write(message_descriptor(thread), text.bytes, text.size);
}

}  // namespace os
