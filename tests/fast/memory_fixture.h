// What the tests of loads and stores share: memory between unreadable pages, accesses that may
// fault, and the meaning of a row's name.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <csetjmp>
#include <csignal>

#include "sve/state/switches.h"
#include "tests/fast/fixture.h"

namespace fixture {

// Pages of which some can be accessed. The layout has one letter for a page: 'x' for those that
// cannot be accessed, any other for those that can.
class Pages {
public:
  explicit Pages(std::string_view layout)
      : page_(static_cast<size_t>(sysconf(_SC_PAGESIZE))), layout_(layout) {
    void* const memory =
        mmap(nullptr, size(), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
      throw std::runtime_error("mmap failed");
    bytes_ = static_cast<uint8_t*>(memory);
    for (size_t i = 0; i < layout.size(); i++)
      if (layout[i] == 'x')
        mprotect(bytes_ + i * page_, page_, PROT_NONE);
  }
  ~Pages() { munmap(bytes_, size()); }
  Pages(const Pages&) = delete;
  Pages& operator=(const Pages&) = delete;

  // Address of a page's first byte.
  uint64_t page(size_t i) const { return reinterpret_cast<uint64_t>(bytes_) + i * page_; }
  size_t page_bytes() const { return page_; }

  // True if all these bytes can be accessed.
  bool accessible(uint64_t address, unsigned bytes) const {
    for (unsigned i = 0; i < bytes; i++) {
      const uint64_t offset = address + i - page(0);
      if (offset >= size() || layout_[offset / page_] == 'x')
        return false;
    }
    return true;
  }

  uint8_t* at(uint64_t address) const { return bytes_ + (address - page(0)); }

  uint64_t value(uint64_t address, unsigned bytes) const {
    uint64_t datum = 0;
    memcpy(&datum, at(address), bytes);
    return datum;
  }

  // Random bytes around an address: as many in front of it as behind it.
  void fill(Random& random, uint64_t around, unsigned bytes = 512) const {
    for (uint64_t address = around - bytes; address != around + bytes; address++)
      if (accessible(address, 1))
        *at(address) = static_cast<uint8_t>(random());
  }

private:
  size_t size() const { return layout_.size() * page_; }

  size_t page_;
  std::string layout_;
  uint8_t* bytes_;
};

// Memory faults as the library tells them, or as the hardware has them.
struct Faults {
  explicit Faults(bool as_hardware) { sve_faults_as_hardware = as_hardware; }
  ~Faults() { sve_faults_as_hardware = false; }
  Faults(const Faults&) = delete;
};

inline sigjmp_buf fault_return;
inline uint64_t fault_address;

inline void catch_fault(int, siginfo_t* info, void*) {
  fault_address = reinterpret_cast<uint64_t>(info->si_addr);
  siglongjmp(fault_return, 1);
}

// Runs the word, and says whether it faulted: then the record is as it was at the fault.
inline bool faults(cpu_state& state, decode_stub stub, uint32_t word) {
  struct sigaction action = {};
  struct sigaction former;
  action.sa_sigaction = catch_fault;
  action.sa_flags = SA_SIGINFO;
  sigaction(SIGSEGV, &action, &former);
  volatile bool faulted = true;
  if (sigsetjmp(fault_return, 1) == 0) {
    stub(&state, word);
    faulted = false;
  }
  sigaction(SIGSEGV, &former, nullptr);
  return faulted;
}

// A load or store, as its row's name tells it.
struct MemoryRow {
  const Row* row;
  bool store;
  bool is_signed;
  unsigned width;      // bytes of an element in the register
  unsigned memory;     // bytes of an element in memory
  unsigned registers;  // of a structure, otherwise 1
  std::string kind;    // NT, FF, NF or Dup
  std::string shape;   // the letters of the address

  unsigned elements() const { return vector_bytes / width; }

  uint64_t extend(uint64_t datum) const {
    return is_signed ? static_cast<uint64_t>(as_signed(datum, memory)) : datum;
  }
};

// Takes the text from the front of the name, if it stands there.
inline bool take(std::string_view& name, std::string_view text) {
  const bool there = name.starts_with(text);
  if (there)
    name.remove_prefix(text.size());
  return there;
}

inline unsigned take_number(std::string_view& name) {
  unsigned number = 0;
  for (; !name.empty() && name[0] >= '0' && name[0] <= '9'; name.remove_prefix(1))
    number = 10 * number + static_cast<unsigned>(name[0] - '0');
  return number;
}

// Reads Vec, type and bits, C or E and the registers, Load or Store, kind, memory bytes, shape, Z.
inline bool parse(const Row& row, MemoryRow& form) {
  std::string_view name = row.name;
  form.row = &row;
  form.is_signed = name.starts_with("VecS");
  if (!take(name, form.is_signed ? "VecS" : "VecU"))
    return false;
  form.width = take_number(name) / 8;
  form.registers = take(name, "E") ? take_number(name) : 1;
  take(name, "C");
  form.store = take(name, "Store");
  if (!form.store && !take(name, "Load"))
    return false;
  form.kind = "";
  for (const char* kind : {"NT", "FF", "NF", "Dup"})
    if (take(name, kind))
      form.kind = kind;
  form.memory = take_number(name);
  form.shape = name.substr(0, name.size() - 1);
  return form.memory != 0 && name.ends_with("Z");
}

// The fast path's contiguous rows, or its gathers and scatters, that have one of these kinds.
inline std::vector<MemoryRow> memory_rows(bool contiguous, const std::set<std::string>& kinds) {
  std::vector<MemoryRow> rows;
  for (const Row& row : all_rows()) {
    MemoryRow form;
    if (row.tier == Tier::fast && parse(row, form) && kinds.contains(form.kind) &&
        contiguous == (form.shape == "SI" || form.shape == "LSS"))
      rows.push_back(form);
  }
  return rows;
}

}  // namespace fixture
