#include "runtime/linux/loader.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstring>

#include "runtime/core/code_map.h"
#include "runtime/linux/pages.h"

namespace os {
namespace {

constexpr char kNoMemory[] = "no memory at the addresses of an ELF segment";

void* at(uint64_t address) { return reinterpret_cast<void*>(address); }

// An inaccessible mapping of `size` bytes at `address` exactly, or anywhere if that is 0.
uint64_t reserve(uint64_t address, uint64_t size, bool exactly) {
  const int fixed = exactly ? MAP_FIXED_NOREPLACE : 0;
  void* got = mmap(at(address), size, PROT_NONE,
                   MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | fixed, -1, 0);
  if (got == MAP_FAILED) {
    return 0;
  }
  const auto result = reinterpret_cast<uint64_t>(got);
  // An older kernel takes MAP_FIXED_NOREPLACE for a hint.
  if (exactly && result != address) {
    munmap(got, size);
    return 0;
  }
  return result;
}

// The span for a file that may lie anywhere, aligned as it asks: reserve more and cut.
uint64_t reserve_aligned(uint64_t hint, uint64_t size, uint64_t alignment) {
  const uint64_t room = size + alignment - page_size();
  const uint64_t got = reserve(hint, room, false);
  if (got == 0) {
    return 0;
  }
  const uint64_t begin = (got + alignment - 1) & ~(alignment - 1);
  if (begin > got) {
    munmap(at(got), begin - got);
  }
  if (got + room > begin + size) {
    munmap(at(begin + size), got + room - begin - size);
  }
  return begin;
}

int protection(const Elf64_Phdr& segment) {
  int result = 0;
  result |= (segment.p_flags & PF_W) != 0 ? PROT_WRITE : 0;
  // What may be executed must be readable for the block builder.
  result |= (segment.p_flags & (PF_R | PF_X)) != 0 ? PROT_READ : 0;
  return result;
}

// The bytes behind the file's part read as zero, to the end of their page as well: an ELF
// interpreter's early allocator relies on that.
const char* map_tail(const Elf64_Phdr& segment, uint64_t bias) {
  const uint64_t file_end = bias + segment.p_vaddr + segment.p_filesz;
  const uint64_t end = bias + segment.p_vaddr + segment.p_memsz;
  const uint64_t anonymous = page_ceiling(file_end);
  const int wanted = protection(segment);
  if (segment.p_memsz > segment.p_filesz && anonymous > file_end) {
    if (mprotect(at(page_floor(file_end)), page_size(), PROT_READ | PROT_WRITE) != 0) {
      return kNoMemory;
    }
    std::memset(at(file_end), 0, anonymous - file_end);
    mprotect(at(page_floor(file_end)), page_size(), wanted);
  }
  const bool mapped = page_ceiling(end) <= anonymous ||
                      mmap(at(anonymous), page_ceiling(end) - anonymous, wanted,
                           MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) != MAP_FAILED;
  return mapped ? nullptr : kNoMemory;
}

const char* map_segment(int fd, const Elf64_Phdr& segment, uint64_t bias) {
  const uint64_t begin = page_floor(bias + segment.p_vaddr);
  const uint64_t end = page_ceiling(bias + segment.p_vaddr + segment.p_memsz);
  const uint64_t file_size = segment.p_filesz + segment.p_vaddr % page_size();
  if (segment.p_filesz != 0 &&
      mmap(at(begin), file_size, protection(segment), MAP_PRIVATE | MAP_FIXED, fd,
           static_cast<off_t>(page_floor(segment.p_offset))) == MAP_FAILED) {
    return kNoMemory;
  }
  if ((segment.p_flags & PF_X) != 0) {
    core::allow_execution(begin, end);
  }
  if (segment.p_filesz != 0) {
    return map_tail(segment, bias);
  }
  const bool mapped =
      begin == end || mmap(at(begin), end - begin, protection(segment),
                           MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) != MAP_FAILED;
  return mapped ? nullptr : kNoMemory;
}

// Where the program headers lie in memory: PT_PHDR tells, or the segment that holds their bytes.
uint64_t header_address(const ElfHeaders& headers, uint64_t bias) {
  for (const Elf64_Phdr& segment : headers.segments) {
    if (segment.p_type == PT_PHDR) {
      return bias + segment.p_vaddr;
    }
  }
  for (const Elf64_Phdr& segment : headers.segments) {
    const uint64_t offset = headers.file.e_phoff - segment.p_offset;
    if (segment.p_type == PT_LOAD && offset < segment.p_filesz) {
      return bias + segment.p_vaddr + offset;
    }
  }
  return 0;
}

}  // namespace

const char* map_image(int fd, const ElfHeaders& headers, uint64_t hint, Image& image) {
  const uint64_t size = headers.end - headers.begin;
  const bool anywhere = headers.file.e_type == ET_DYN;
  const uint64_t begin = anywhere ? reserve_aligned(hint, size, headers.alignment)
                                  : reserve(headers.begin, size, true);
  if (begin == 0) {
    return kNoMemory;
  }
  const uint64_t bias = begin - headers.begin;
  for (const Elf64_Phdr& segment : headers.segments) {
    if (segment.p_type == PT_LOAD) {
      if (const char* reason = map_segment(fd, segment, bias)) {
        return reason;
      }
    }
  }
  image = {bias,
           begin,
           begin + size,
           bias + headers.file.e_entry,
           header_address(headers, bias),
           headers.file.e_phnum};
  return nullptr;
}

}  // namespace os
