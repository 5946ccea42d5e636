// Placing an ELF program in memory.
#pragma once

#include "runtime/linux/elf.h"

namespace os {

// A mapped program: addresses as they are in memory.
struct Image {
  uint64_t bias;   // what was added to the addresses in the file
  uint64_t begin;  // of the span of all segments
  uint64_t end;
  uint64_t entry;
  uint64_t headers;  // the program headers, as AT_PHDR tells
  unsigned header_count;
};

// Maps the segments of `fd`; a file that may lie anywhere goes to `hint` if that is free, or to
// where Linux maps things if it is 0. Text is
// mapped without execute permission and entered in the code map. Returns the reason of a failure,
// null on success.
const char* map_image(int fd, const ElfHeaders& headers, uint64_t hint, Image& image);

}  // namespace os
