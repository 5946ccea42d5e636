// The application's executable and its libraries, as the client may ask for them.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "runtime/core/lock.h"
#include "runtime/include/dr_api.h"

namespace os {

void add_module(uint64_t begin, uint64_t end, uint64_t entry, std::string path, bool main);
// A file was mapped from its beginning at `address`: if an ELF header stands there it is a library.
void note_file_mapping(uint64_t address, uint64_t size, int fd);
// Memory went away or was mapped anew: modules that begin there are gone.
void forget_modules(uint64_t begin, uint64_t end);
// Those that are mapped now, in the order in which they were.
void for_each_module(const std::function<void(const module_data_t&)>& function);

// The table's lock, to be held over a fork.
extern core::Lock modules_mutex;

}  // namespace os
