// Reading and checking an ELF file that is to be run.
#pragma once

#include <elf.h>

#include <cstdint>
#include <string>
#include <vector>

namespace os {

// The headers of a program or of its ELF interpreter: everything in them has been checked against
// the file's size and against the address space.
struct ElfHeaders {
  Elf64_Ehdr file;
  std::vector<Elf64_Phdr> segments;
  std::string interpreter;  // empty: none
  uint64_t begin, end;      // of all PT_LOAD segments together, in whole pages
  uint64_t alignment;       // of the whole, a power of two of at least a page
  bool executable_stack;
};

// Reads the headers from `fd`. Returns the reason why the file cannot be run, null if it can.
const char* read_elf(int fd, ElfHeaders& headers);

}  // namespace os
