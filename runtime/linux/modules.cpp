#include "runtime/linux/modules.h"

#include <elf.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstring>
#include <mutex>
#include <vector>

#include "runtime/core/entry.h"
#include "runtime/core/lock.h"
#include "runtime/include/dr_api.h"
#include "runtime/linux/pages.h"

namespace os {

constinit core::Lock modules_mutex;

namespace {

// What the client is given. It asks for each block, so all its answers about a module are the same
// data, which goes with the last user; the table is one of them.
struct ModuleData : module_data_t {
  std::string path;
  std::atomic<unsigned> users = 1;
};

struct Module {
  uint64_t begin, end;
  ModuleData* data;
  bool main;
};

constinit std::vector<Module> modules;

template <typename Type> bool read_memory(uint64_t address, Type& to) {
  return core_copy(&to, reinterpret_cast<const void*>(address), sizeof to) == 0;
}

// The size of the library whose first page lies at `address`, 0 if none does.
uint64_t library_size(uint64_t address, uint64_t mapped, uint64_t& entry) {
  Elf64_Ehdr header;
  if (mapped < sizeof header || !read_memory(address, header) ||
      std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 || header.e_machine != EM_AARCH64 ||
      header.e_phentsize != sizeof(Elf64_Phdr)) {
    return 0;
  }
  uint64_t size = 0;
  for (unsigned i = 0; i < header.e_phnum; ++i) {
    const uint64_t offset = header.e_phoff + i * sizeof(Elf64_Phdr);
    Elf64_Phdr segment;
    if (offset > mapped || mapped - offset < sizeof segment ||
        !read_memory(address + offset, segment)) {
      return 0;
    }
    if (segment.p_type == PT_LOAD) {
      size = std::max(size, segment.p_vaddr + segment.p_memsz);
    }
  }
  entry = header.e_entry;
  return page_ceiling(size);
}

std::string path_of(int fd) {
  char path[PATH_MAX];
  const std::string link = "/proc/self/fd/" + std::to_string(fd);
  const ssize_t length = readlink(link.c_str(), path, sizeof path);
  return length > 0 ? std::string(path, static_cast<size_t>(length)) : std::string();
}

ModuleData* new_data(uint64_t begin, uint64_t end, uint64_t entry, std::string path) {
  auto* const data = new ModuleData;
  data->start = reinterpret_cast<app_pc>(begin);
  data->end = reinterpret_cast<app_pc>(end);
  data->entry_point = reinterpret_cast<app_pc>(entry);
  data->path = std::move(path);
  data->full_path = data->path.c_str();
  return data;
}

void release(ModuleData* data) {
  if (data->users.fetch_sub(1) == 1) {
    delete data;
  }
}

template <typename Predicate> module_data_t* find_module(Predicate predicate) {
  const std::lock_guard lock(modules_mutex);
  const auto found = std::find_if(modules.begin(), modules.end(), predicate);
  if (found == modules.end()) {
    return nullptr;
  }
  found->data->users.fetch_add(1);
  return found->data;
}

}  // namespace

void add_module(uint64_t begin, uint64_t end, uint64_t entry, std::string path, bool main) {
  const core::Change change(modules_mutex);
  modules.push_back({begin, end, new_data(begin, end, entry, std::move(path)), main});
}

void note_file_mapping(uint64_t address, uint64_t size, int fd) {
  uint64_t entry = 0;
  const uint64_t library = library_size(address, size, entry);
  if (library != 0) {
    add_module(address, address + library, address + entry, path_of(fd), false);
  }
}

void for_each_module(const std::function<void(const module_data_t&)>& function) {
  const std::lock_guard lock(modules_mutex);
  for (const Module& module : modules) {
    function(*module.data);
  }
}

void forget_modules(uint64_t begin, uint64_t end) {
  const core::Change change(modules_mutex);
  std::erase_if(modules, [=](const Module& module) {
    const bool gone = module.begin >= begin && module.begin < end;
    if (gone) {
      release(module.data);
    }
    return gone;
  });
}

}  // namespace os

module_data_t* dr_get_main_module() {
  return os::find_module([](const os::Module& module) { return module.main; });
}

module_data_t* dr_lookup_module(byte* pc) {
  const auto address = reinterpret_cast<uint64_t>(pc);
  return os::find_module(
      [=](const os::Module& module) { return address >= module.begin && address < module.end; });
}

void dr_free_module_data(module_data_t* data) {
  if (data != nullptr) {
    os::release(static_cast<os::ModuleData*>(data));
  }
}
