// Files that are not what they seem: each is refused with its reason, and none harms the launcher.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
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

// Any single byte of the headers may be anything: reading and mapping end, well or with a reason.
TEST(Elf, SurvivesAnyByte) {
  const size_t size = File::offset_of_name();
  for (size_t at = SELFMAG; at < size; ++at) {
    for (const unsigned char value : {0x00, 0x01, 0x7f, 0x80, 0xff}) {
      File file;
      const int fd = file.descriptor();
      ASSERT_EQ(pwrite(fd, &value, 1, static_cast<off_t>(at)), 1);
      os::ElfHeaders headers;
      os::Image image;
      // The simulator takes minutes for a mapping of terabytes.
      constexpr uint64_t kLargest = uint64_t{1} << 30;
      if (os::read_elf(fd, headers) == nullptr && headers.file.e_type == ET_DYN &&
          headers.end - headers.begin <= kLargest &&
          os::map_image(fd, headers, 0, image) == nullptr) {
        core::forbid_execution(image.begin, image.end);
        munmap(reinterpret_cast<void*>(image.begin), image.end - image.begin);
      }
      close(fd);
    }
  }
}

// ---- fields with values that programs of other kinds have, alone and in pairs -------------------

struct Field {
  size_t at, size;
};

std::vector<Field> all_fields() {
  std::vector<Field> fields;
#define FIELD(type, base, member)                                                                  \
  fields.push_back({(base) + offsetof(type, member), sizeof(type::member)})
  FIELD(Elf64_Ehdr, 0, e_type);
  FIELD(Elf64_Ehdr, 0, e_machine);
  FIELD(Elf64_Ehdr, 0, e_entry);
  FIELD(Elf64_Ehdr, 0, e_phoff);
  FIELD(Elf64_Ehdr, 0, e_phentsize);
  FIELD(Elf64_Ehdr, 0, e_phnum);
  for (size_t i = 0; i < 3; ++i) {
    const size_t base = sizeof(Elf64_Ehdr) + i * sizeof(Elf64_Phdr);
    FIELD(Elf64_Phdr, base, p_type);
    FIELD(Elf64_Phdr, base, p_flags);
    FIELD(Elf64_Phdr, base, p_offset);
    FIELD(Elf64_Phdr, base, p_vaddr);
    FIELD(Elf64_Phdr, base, p_filesz);
    FIELD(Elf64_Phdr, base, p_memsz);
    FIELD(Elf64_Phdr, base, p_align);
  }
#undef FIELD
  return fields;
}

std::vector<uint64_t> interesting_values() {
  const uint64_t page = os::page_size();
  std::vector<uint64_t> values = {0, 1, 2, 3, 4, 5, 6, 7, 8, 16, 56, 64, 183, 0x6474e551};
  for (const uint64_t edge : {page, 2 * page, 3 * page, uint64_t{1} << 16, uint64_t{1} << 31,
                              uint64_t{1} << 32, uint64_t{1} << 47, uint64_t{1} << 48, kHuge}) {
    values.insert(values.end(), {edge - page, edge - 1, edge, edge + 1});
  }
  values.insert(values.end(), {~uint64_t{0}, ~uint64_t{0} - page + 1});
  return values;
}

// What an accepted file must have become: each byte of a segment that no other one shares a page
// with is the file's or zero.
void check_image(int fd, const os::ElfHeaders& headers, const os::Image& image) {
  EXPECT_EQ(image.begin % os::page_size(), 0u);
  EXPECT_EQ(image.entry, image.bias + headers.file.e_entry);
  const Elf64_Phdr* last = nullptr;
  for (const Elf64_Phdr& segment : headers.segments) {
    last = segment.p_type == PT_LOAD ? &segment : last;
  }
  const uint64_t at = image.bias + last->p_vaddr;
  ASSERT_LE(at + last->p_memsz, image.end);
  if ((last->p_flags & (PF_R | PF_X)) == 0) {
    return;
  }
  for (const uint64_t i : {uint64_t{0}, last->p_filesz - 1, last->p_filesz, last->p_memsz - 1}) {
    if (i < last->p_memsz) {
      char expected = 0;
      if (i < last->p_filesz) {
        ASSERT_EQ(pread(fd, &expected, 1, static_cast<off_t>(last->p_offset + i)), 1);
      }
      EXPECT_EQ(*reinterpret_cast<const char*>(at + i), expected) << i;
    }
  }
}

struct ElfMutator {
  const std::vector<Field> fields = all_fields();
  const std::vector<uint64_t> values = interesting_values();
  uint64_t seed = 1;
  int accepted = 0, refused = 0;

  uint64_t any(uint64_t below) {
    seed = seed * 6364136223846793005u + 1442695040888963407u;
    return (seed >> 33) % below;
  }
  static void change(int fd, const Field& field, uint64_t value) {
    ASSERT_EQ(pwrite(fd, &value, field.size, static_cast<off_t>(field.at)),
              static_cast<ssize_t>(field.size));
  }
  // The simulator takes minutes for a mapping of terabytes.
  static constexpr uint64_t kLargest = uint64_t{1} << 30;
  void load(int fd) {
    os::ElfHeaders headers;
    os::Image image;
    if (const char* reason = os::read_elf(fd, headers)) {
      EXPECT_NE(*reason, '\0');
      ++refused;
    } else if (headers.end - headers.begin <= kLargest && headers.alignment <= kLargest &&
               os::map_image(fd, headers, 0, image) == nullptr) {
      check_image(fd, headers, image);
      core::forbid_execution(image.begin, image.end);
      munmap(reinterpret_cast<void*>(image.begin), image.end - image.begin);
      ++accepted;
    }
  }
};

TEST(Elf, SurvivesInterestingFields) {
  ElfMutator mutator;
  for (const Field& field : mutator.fields) {
    for (const uint64_t value : mutator.values) {
      SCOPED_TRACE(std::to_string(field.at) + ": " + std::to_string(value));
      const int fd = File().descriptor();
      ElfMutator::change(fd, field, value);
      mutator.load(fd);
      close(fd);
    }
  }
  EXPECT_GT(mutator.accepted, 100);
  EXPECT_GT(mutator.refused, 100);
}

// TAVOK_TEST_ELF_FILES=1000000 is the long run.
TEST(Elf, SurvivesFieldsTogetherAndCutFiles) {
  const char* const wanted = std::getenv("TAVOK_TEST_ELF_FILES");
  const int files = wanted != nullptr ? std::atoi(wanted) : 3000;
  ElfMutator mutator;
  for (int number = 0; number < files; ++number) {
    SCOPED_TRACE(number);
    const int fd = File().descriptor();
    for (uint64_t i = 2 + mutator.any(3); i > 0; --i) {
      const Field& field = mutator.fields[mutator.any(mutator.fields.size())];
      ElfMutator::change(fd, field, mutator.values[mutator.any(mutator.values.size())]);
    }
    if (mutator.any(8) == 0) {
      ASSERT_EQ(ftruncate(fd, static_cast<off_t>(mutator.any(3 * os::page_size()))), 0);
    }
    mutator.load(fd);
    close(fd);
  }
  EXPECT_GT(mutator.accepted + mutator.refused, files / 2);
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
