#include "runtime/linux/stack.h"

#include <sys/auxv.h>
#include <sys/mman.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstring>
#include <string_view>
#include <vector>

#include "runtime/core/code_map.h"
#include "runtime/linux/machine.h"
#include "runtime/linux/mappings.h"
#include "runtime/linux/pages.h"
#include "runtime/linux/signals.h"

namespace os {
namespace {

constexpr uint64_t kSmallestStack = 8U << 20;
constexpr uint64_t kLargestStack = 1U << 30;
constexpr uint64_t kLeastStack = 256U << 10;
constexpr uint64_t kGuard = 1U << 20;  // as much as the kernel keeps free below its stacks
constexpr size_t kRandomBytes = 16;

// As large as the limit allows the kernel's own stack to grow, within reason.
uint64_t stack_size() {
  rlimit limit;
  if (getrlimit(RLIMIT_STACK, &limit) != 0) {
    return kSmallestStack;
  }
  return page_ceiling(std::clamp<uint64_t>(limit.rlim_cur, kSmallestStack, kLargestStack));
}

StackLayout layout;

uint64_t map_stack(bool executable) {
  uint64_t size = stack_size();
  void* stack;
  // The kernel's own stack takes memory as it grows: where there is little, less has to do.
  while ((stack = mmap(nullptr, size + kGuard, PROT_READ | PROT_WRITE,
                       MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_STACK, -1, 0)) ==
             MAP_FAILED &&
         size > kLeastStack) {
    size = page_ceiling(size / 2);
  }
  if (stack == MAP_FAILED || mprotect(stack, kGuard, PROT_NONE) != 0) {
    return 0;
  }
  const uint64_t begin = reinterpret_cast<uint64_t>(stack) + kGuard;
  layout.guard = begin - kGuard;
  layout.begin = begin;
  layout.end = begin + size;
  note_application_memory(begin, begin + size);
  if (executable) {
    core::allow_execution(begin, begin + size);
  }
  return begin + size;
}

// Grows downwards from the top of the stack.
struct Writer {
  uint64_t at;

  uint64_t bytes(const void* from, size_t size) {
    at -= size;
    std::memcpy(reinterpret_cast<void*>(at), from, size);
    return at;
  }
  uint64_t string(const char* text) { return bytes(text, std::strlen(text) + 1); }
  // One behind the other: programs that change their name write over all of them.
  std::vector<uint64_t> strings(char** list) {
    size_t count = 0;
    while (list[count] != nullptr) {
      ++count;
    }
    std::vector<uint64_t> addresses(count);
    while (count-- != 0) {
      addresses[count] = string(list[count]);
    }
    return addresses;
  }
};

// What the host told the launcher about itself holds for the application too. AT_SYSINFO_EHDR is
// left out: code of the vDSO belongs to no module and saves little.
constexpr uint64_t kPassedOn[] = {AT_FLAGS, AT_UID, AT_EUID, AT_GID, AT_EGID, AT_SECURE, AT_CLKTCK};

std::vector<uint64_t> auxiliary_vector(const StackContents& contents, Writer& strings) {
  std::vector<uint64_t> words;
  const auto add = [&words](uint64_t type, uint64_t value) {
    words.insert(words.end(), {type, value});
  };
  const Image& program = *contents.program;
  add(AT_PHDR, program.headers);
  add(AT_PHENT, sizeof(Elf64_Phdr));
  add(AT_PHNUM, program.header_count);
  add(AT_PAGESZ, page_size());
  add(AT_BASE, contents.interpreter != nullptr ? contents.interpreter->bias : 0);
  add(AT_ENTRY, program.entry);
  for (const uint64_t type : kPassedOn) {
    errno = 0;
    const uint64_t value = getauxval(type);
    if (errno == 0) {
      add(type, value);
    }
  }
  add(AT_HWCAP, shown_hwcap(getauxval(AT_HWCAP)));
  add(AT_HWCAP2, shown_hwcap2(getauxval(AT_HWCAP2)));
  add(AT_MINSIGSTKSZ, kSignalFrameSize);
  unsigned char random[kRandomBytes] = {};
  if (const uint64_t given = getauxval(AT_RANDOM)) {
    std::memcpy(random, reinterpret_cast<void*>(given), sizeof random);
  }
  add(AT_RANDOM, strings.bytes(random, sizeof random));
  add(AT_PLATFORM, strings.string("aarch64"));
  add(AT_EXECFN, strings.string(contents.file));
  add(AT_NULL, 0);
  return words;
}

}  // namespace

const StackLayout& stack_layout() { return layout; }

uint64_t build_stack(const StackContents& contents) {
  Writer writer{map_stack(contents.executable)};
  if (writer.at == 0) {
    return 0;
  }
  layout.environment_end = writer.at;
  const std::vector<uint64_t> environment = writer.strings(contents.environment);
  layout.environment = writer.at;
  const std::vector<uint64_t> arguments = writer.strings(contents.arguments);
  layout.arguments = writer.at;
  const std::vector<uint64_t> auxiliary = auxiliary_vector(contents, writer);
  layout.auxiliary.assign(reinterpret_cast<const char*>(auxiliary.data()),
                          auxiliary.size() * sizeof(uint64_t));

  std::vector<uint64_t> words;
  words.push_back(arguments.size());
  words.insert(words.end(), arguments.begin(), arguments.end());
  words.push_back(0);
  words.insert(words.end(), environment.begin(), environment.end());
  words.push_back(0);
  words.insert(words.end(), auxiliary.begin(), auxiliary.end());

  constexpr uint64_t kStackAlignment = 16;
  const uint64_t size = words.size() * sizeof(uint64_t);
  const uint64_t sp = (writer.at - size) & ~(kStackAlignment - 1);
  std::memcpy(reinterpret_cast<void*>(sp), words.data(), size);
  return sp;
}

}  // namespace os
