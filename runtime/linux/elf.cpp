#include "runtime/linux/elf.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cstring>

#include "runtime/linux/pages.h"

namespace os {
namespace {

// Linux's own limits: one page of 64 KiB for the program headers, PATH_MAX for the interpreter.
constexpr size_t kMaxHeaderBytes = 65536;
constexpr size_t kMaxInterpreter = 4096;
constexpr uint64_t kAddressLimit = uint64_t{1} << 47;

bool read_at(int fd, void* to, size_t size, uint64_t offset) {
  auto* bytes = static_cast<char*>(to);
  while (size != 0) {
    const ssize_t got = pread(fd, bytes, size, static_cast<off_t>(offset));
    if (got <= 0) {
      return false;
    }
    bytes += got;
    size -= static_cast<size_t>(got);
    offset += static_cast<uint64_t>(got);
  }
  return true;
}

const char* check_file_header(const Elf64_Ehdr& header) {
  if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) {
    return "not an ELF file";
  }
  if (header.e_ident[EI_CLASS] != ELFCLASS64 || header.e_ident[EI_DATA] != ELFDATA2LSB) {
    return "not a little-endian 64-bit ELF file";
  }
  if (header.e_machine != EM_AARCH64) {
    return "not for AArch64";
  }
  if (header.e_type != ET_EXEC && header.e_type != ET_DYN) {
    return "not an executable ELF file";
  }
  if (header.e_phentsize != sizeof(Elf64_Phdr) || header.e_phnum == 0 ||
      header.e_phnum * sizeof(Elf64_Phdr) > kMaxHeaderBytes) {
    return "bad ELF program headers";
  }
  return nullptr;
}

const char* check_load(const Elf64_Phdr& segment, uint64_t file_size) {
  if (segment.p_filesz > segment.p_memsz || segment.p_vaddr >= kAddressLimit ||
      segment.p_memsz >= kAddressLimit) {
    return "bad ELF segment";
  }
  if (segment.p_offset > file_size || segment.p_filesz > file_size - segment.p_offset) {
    return "truncated ELF file";
  }
  if (segment.p_vaddr % page_size() != segment.p_offset % page_size() ||
      (segment.p_align > 1 && !std::has_single_bit(segment.p_align))) {
    return "bad alignment of an ELF segment";
  }
  return nullptr;
}

const char* read_interpreter(int fd, const Elf64_Phdr& segment, std::string& name) {
  if (segment.p_filesz < 2 || segment.p_filesz > kMaxInterpreter) {
    return "bad name of an ELF interpreter";
  }
  name.resize(segment.p_filesz);
  if (!read_at(fd, name.data(), name.size(), segment.p_offset) || name.back() != '\0') {
    return "bad name of an ELF interpreter";
  }
  name.resize(std::strlen(name.c_str()));
  return nullptr;
}

const char* check_segments(int fd, uint64_t file_size, ElfHeaders& headers) {
  uint64_t previous = 0;
  headers.begin = kAddressLimit;
  headers.end = 0;
  headers.alignment = page_size();
  headers.executable_stack = false;
  for (const Elf64_Phdr& segment : headers.segments) {
    const char* reason = nullptr;
    if (segment.p_type == PT_LOAD) {
      reason = check_load(segment, file_size);
      if (reason == nullptr && segment.p_vaddr < previous) {
        reason = "ELF segments out of order";
      }
      previous = segment.p_vaddr + segment.p_memsz;
      headers.begin = std::min(headers.begin, page_floor(segment.p_vaddr));
      headers.end = std::max(headers.end, page_ceiling(segment.p_vaddr + segment.p_memsz));
      headers.alignment = std::max(headers.alignment, segment.p_align);
    } else if (segment.p_type == PT_INTERP) {
      reason = read_interpreter(fd, segment, headers.interpreter);
    } else if (segment.p_type == PT_GNU_STACK) {
      headers.executable_stack = (segment.p_flags & PF_X) != 0;
    }
    if (reason != nullptr) {
      return reason;
    }
  }
  return headers.begin < headers.end ? nullptr : "no loadable ELF segment";
}

}  // namespace

const char* read_elf(int fd, ElfHeaders& headers) {
  struct stat status;
  if (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) {
    return "not a regular file";
  }
  const auto size = static_cast<uint64_t>(status.st_size);
  if (!read_at(fd, &headers.file, sizeof headers.file, 0)) {
    char magic[SELFMAG] = {};
    const bool elf = read_at(fd, magic, SELFMAG, 0) && std::memcmp(magic, ELFMAG, SELFMAG) == 0;
    return elf ? "truncated ELF file" : "not an ELF file";
  }
  const char* reason = check_file_header(headers.file);
  if (reason != nullptr) {
    return reason;
  }
  headers.segments.resize(headers.file.e_phnum);
  if (headers.file.e_phoff > size ||
      !read_at(fd, headers.segments.data(), headers.segments.size() * sizeof(Elf64_Phdr),
               headers.file.e_phoff)) {
    return "truncated ELF file";
  }
  return check_segments(fd, size, headers);
}

}  // namespace os
