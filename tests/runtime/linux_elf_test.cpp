// Files that are not what they seem: each is refused with its reason. That none harms the launcher
// is tests/fuzz/elf_fuzz.cpp's to show.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "runtime/core/code_map.h"
#include "runtime/linux/elf.h"
#include "runtime/linux/loader.h"
#include "runtime/linux/pages.h"

namespace {

// A program of two segments and an interpreter, whose bytes a test may change.
struct File {
  Elf64_Ehdr header = {};
  Elf64_Phdr text = {}, data = {}, interpreter = {};
  char name[16] = "/lib/ld.so";
  std::vector<char> rest = std::vector<char>(2 * os::page_size());
  size_t truncated_to = ~size_t{0};

  File() {
    std::memcpy(header.e_ident, ELFMAG, SELFMAG);
    header.e_ident[EI_CLASS] = ELFCLASS64;
    header.e_ident[EI_DATA] = ELFDATA2LSB;
    header.e_type = ET_DYN;
    header.e_machine = EM_AARCH64;
    header.e_phoff = sizeof header;
    header.e_phentsize = sizeof(Elf64_Phdr);
    header.e_phnum = 3;
    header.e_entry = 0x100;
    text = {PT_LOAD, PF_R | PF_X, 0, 0, 0, 0x200, 0x200, os::page_size()};
    const uint64_t page = os::page_size();
    data = {PT_LOAD, PF_R | PF_W, page, page, page, 0x80, 3 * page, page};
    interpreter = {PT_INTERP, PF_R, offset_of_name(), 0, 0, 11, 11, 1};
  }
  static uint64_t offset_of_name() { return sizeof(Elf64_Ehdr) + 3 * sizeof(Elf64_Phdr); }

  int descriptor() const {
    std::string bytes;
    const auto add = [&bytes](const void* from, size_t size) {
      bytes.append(static_cast<const char*>(from), size);
    };
    add(&header, sizeof header);
    add(&text, sizeof text);
    add(&data, sizeof data);
    add(&interpreter, sizeof interpreter);
    add(name, sizeof name);
    add(rest.data(), rest.size());
    bytes.resize(std::min(bytes.size(), truncated_to));
    const int fd = memfd_create("elf", 0);
    EXPECT_EQ(write(fd, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    return fd;
  }
};

struct Case {
  const char* name;
  std::function<void(File&)> change;
  const char* reason;  // null: accepted
};

constexpr uint64_t kHuge = uint64_t{1} << 63;

const Case kCases[] = {
    {"as it is", [](File&) {}, nullptr},
    {"empty", [](File& f) { f.truncated_to = 0; }, "not an ELF file"},
    {"magic", [](File& f) { f.header.e_ident[0] = '#'; }, "not an ELF file"},
    {"cut in the header", [](File& f) { f.truncated_to = 40; }, "truncated ELF file"},
    {"cut in the program headers", [](File& f) { f.truncated_to = 100; }, "truncated ELF file"},
    {"32 bits", [](File& f) { f.header.e_ident[EI_CLASS] = ELFCLASS32; },
     "not a little-endian 64-bit ELF file"},
    {"big-endian", [](File& f) { f.header.e_ident[EI_DATA] = ELFDATA2MSB; },
     "not a little-endian 64-bit ELF file"},
    {"machine", [](File& f) { f.header.e_machine = EM_X86_64; }, "not for AArch64"},
    {"object file", [](File& f) { f.header.e_type = ET_REL; }, "not an executable ELF file"},
    {"no program headers", [](File& f) { f.header.e_phnum = 0; }, "bad ELF program headers"},
    {"too many program headers", [](File& f) { f.header.e_phnum = 65535; },
     "bad ELF program headers"},
    {"size of a program header", [](File& f) { f.header.e_phentsize = 8; },
     "bad ELF program headers"},
    {"place of the program headers", [](File& f) { f.header.e_phoff = kHuge; },
     "truncated ELF file"},
    {"no segment", [](File& f) { f.text.p_type = f.data.p_type = PT_NOTE; },
     "no loadable ELF segment"},
    {"more in the file than in memory", [](File& f) { f.text.p_filesz = 0x1000; },
     "bad ELF segment"},
    {"address", [](File& f) { f.data.p_vaddr = kHuge; }, "bad ELF segment"},
    {"size in memory", [](File& f) { f.data.p_memsz = kHuge; }, "bad ELF segment"},
    {"sum of address and size", [](File& f) { f.data.p_memsz = ~uint64_t{0} - 0x10; },
     "bad ELF segment"},
    {"offset", [](File& f) { f.data.p_offset = kHuge; }, "truncated ELF file"},
    {"size in the file", [](File& f) { f.data.p_filesz = f.data.p_memsz = 0x100000; },
     "truncated ELF file"},
    {"address and offset", [](File& f) { f.data.p_vaddr += 16; },
     "bad alignment of an ELF segment"},
    {"alignment", [](File& f) { f.data.p_align = 0x3000; }, "bad alignment of an ELF segment"},
    {"order", [](File& f) { std::swap(f.text, f.data); }, "ELF segments out of order"},
    {"interpreter without an end", [](File& f) { std::memset(f.name, 'x', sizeof f.name); },
     "bad name of an ELF interpreter"},
    {"interpreter's length", [](File& f) { f.interpreter.p_filesz = 1 << 20; },
     "bad name of an ELF interpreter"},
    {"interpreter's place", [](File& f) { f.interpreter.p_offset = kHuge; },
     "bad name of an ELF interpreter"},
};

TEST(Elf, IsCheckedBeforeItIsUsed) {
  for (const Case& test : kCases) {
    SCOPED_TRACE(test.name);
    File file;
    test.change(file);
    const int fd = file.descriptor();
    os::ElfHeaders headers;
    EXPECT_STREQ(os::read_elf(fd, headers), test.reason);
    close(fd);
  }
}

TEST(Loader, MapsSegmentsAndZeroesTheRest) {
  File file;
  std::fill(file.rest.begin(), file.rest.end(), 'd');
  file.header.e_phnum = 2;
  const int fd = file.descriptor();
  os::ElfHeaders headers;
  ASSERT_EQ(os::read_elf(fd, headers), nullptr);
  os::Image image;
  ASSERT_EQ(os::map_image(fd, headers, 0, image), nullptr);
  const uint64_t page = os::page_size();
  EXPECT_EQ(image.end - image.begin, 4 * page);
  EXPECT_EQ(image.entry, image.bias + 0x100);
  EXPECT_EQ(image.headers, image.bias + sizeof(Elf64_Ehdr));
  const auto* memory = reinterpret_cast<const char*>(image.begin);
  EXPECT_EQ(std::memcmp(memory, ELFMAG, SELFMAG), 0);
  for (uint64_t at = 0; at < 3 * page; ++at) {
    ASSERT_EQ(memory[page + at], at < 0x80 ? 'd' : '\0') << at;
  }
  EXPECT_EQ(core::executable_end(image.begin + 0x100), image.begin + page);
  EXPECT_EQ(core::executable_end(image.begin + page), 0u);
  close(fd);
}

// Against a plain array of pages.
TEST(CodeMap, IsASetOfAddresses) {
  constexpr unsigned kPages = 40;
  bool expected[kPages] = {};
  unsigned seed = 3;
  for (int step = 0; step < 3000; ++step) {
    seed = seed * 1103515245 + 12345;
    const unsigned begin = (seed >> 8) % kPages;
    const unsigned end = begin + 1 + (seed >> 16) % (kPages - begin);
    const bool allow = (seed >> 29 & 1) != 0;
    if (allow) {
      core::allow_execution(begin * 4096, end * 4096);
    } else {
      core::forbid_execution(begin * 4096, end * 4096);
    }
    std::fill(expected + begin, expected + end, allow);
    for (unsigned page = 0; page < kPages; ++page) {
      uint64_t behind = page;
      while (behind < kPages && expected[behind]) {
        ++behind;
      }
      ASSERT_EQ(core::executable_end(page * 4096), expected[page] ? behind * 4096 : 0) << step;
    }
  }
}

}  // namespace
