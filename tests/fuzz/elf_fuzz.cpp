// Files that are to be run: read and mapped, or refused with a reason.
//
// The input is the file, whose padding byte e_ident[15] tells how many KiB follow that are the same
// in all files.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <string>

#include "runtime/core/code_map.h"
#include "runtime/linux/elf.h"
#include "runtime/linux/loader.h"
#include "runtime/linux/pages.h"
#include "tests/fuzz/target.h"

namespace {

uint64_t mapped = 0, refused = 0;

// Each byte of the last segment, which no other one overlays, is the file's or zero.
void check_image(const std::string& file, const os::ElfHeaders& headers, const os::Image& image) {
  REQUIRE(image.begin % os::page_size() == 0);
  REQUIRE(image.end - image.begin == headers.end - headers.begin);
  REQUIRE(image.entry == image.bias + headers.file.e_entry);
  const Elf64_Phdr* last = nullptr;
  for (const Elf64_Phdr& segment : headers.segments)
    last = segment.p_type == PT_LOAD ? &segment : last;
  const uint64_t at = image.bias + last->p_vaddr;
  REQUIRE(image.begin <= at && at + last->p_memsz <= image.end);
  if ((last->p_flags & PF_X) != 0 && last->p_memsz != 0)
    REQUIRE(core::executable_end(at) >= at + last->p_memsz);
  if ((last->p_flags & (PF_R | PF_X)) == 0)
    return;
  for (const uint64_t i : {uint64_t{0}, last->p_filesz - 1, last->p_filesz, last->p_memsz - 1})
    if (i < last->p_memsz)
      REQUIRE(*reinterpret_cast<const char*>(at + i) ==
              (i < last->p_filesz ? file[last->p_offset + i] : '\0'));
}

void load(int fd, const std::string& file) {
  // The simulator takes minutes for a mapping of terabytes.
  constexpr uint64_t most_bytes = uint64_t{1} << 30;
  os::ElfHeaders headers;
  if (const char* const reason = os::read_elf(fd, headers)) {
    REQUIRE(*reason != '\0');
    refused++;
    return;
  }
  REQUIRE(headers.begin < headers.end && headers.end <= uint64_t{1} << 48);
  REQUIRE(headers.interpreter.find('\0') == std::string::npos);
  // An address of its own might be one that is in use here.
  if (headers.file.e_type != ET_DYN || headers.end - headers.begin > most_bytes ||
      headers.alignment > most_bytes)
    return;
  os::Image image;
  if (os::map_image(fd, headers, 0, image) != nullptr)
    return;
  mapped++;
  check_image(file, headers, image);
  core::forbid_execution(image.begin, image.end);
  munmap(reinterpret_cast<void*>(image.begin), image.end - image.begin);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const int fd = memfd_create("elf", 0);
  std::string file(reinterpret_cast<const char*>(data), size);
  if (size >= EI_NIDENT)
    file.resize(size + data[EI_NIDENT - 1] * size_t{1024}, 'd');
  REQUIRE(ftruncate(fd, 0) == 0);
  REQUIRE(pwrite(fd, file.data(), file.size(), 0) == static_cast<ssize_t>(file.size()));
  load(fd, file);
  return 0;
}

const char* fuzz_missed() {
  return mapped < 100 || refused < 100 ? "was mapped, or none refused, often enough" : "";
}
