// Which values are where, followed through a block. Two places hold the same bits if they hold the
// same value.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "runtime/core/effects.h"

namespace core {

// The contents of memory at constant addresses, in parts of 4 bytes.
class KnownMemory {
public:
  // The entry of the part at `address`, null if it is not known.
  const uint64_t* find(uint64_t address) const;
  void set(uint64_t address, uint64_t value);
  void clear();

private:
  struct Entry {
    uint64_t address, value;
  };
  static constexpr size_t kEntries = 1024;

  size_t slot_of(uint64_t address) const;
  bool in_use(size_t slot) const { return generations_[slot] == generation_; }

  std::unique_ptr<Entry[]> entries_ = std::make_unique_for_overwrite<Entry[]>(kEntries);
  std::vector<uint32_t> generations_ = std::vector<uint32_t>(kEntries);
  uint32_t generation_ = 1;
  size_t used_ = 0;
};

class Values {
public:
  explicit Values(uint64_t context);

  void forget_all();
  void forget_memory() { memory_.clear(); }
  // A call, which leaves the general registers out of `lost` as they are.
  void call(uint32_t lost);
  void forget(unsigned reg);

  // These four tell whether they change nothing.
  bool copy(unsigned target, unsigned source);
  bool set_constant(unsigned reg, uint64_t value);
  bool load(const Effect& effect, uint64_t address);
  bool store(const Effect& effect, uint64_t address);

  struct Constant {
    uint64_t value = 0;
    bool known = false;
  };
  const Constant& constant(unsigned reg) const { return constants_[reg]; }

private:
  // The number of a value; its part at byte k is the number plus k.
  using Value = uint64_t;

  Value fresh() { return next_ += kSpacing; }
  Value value_at(uint64_t address, unsigned bytes);
  void set_memory(uint64_t address, unsigned bytes, Value value);
  bool load_one(const Effect& effect, unsigned index, uint64_t address);

  static constexpr unsigned kSpacing = 16;  // the largest value's bytes

  const uint64_t context_;
  Value next_ = 0;
  Value general_[32], vectors_[32];
  Constant constants_[32];
  KnownMemory memory_;
};

}  // namespace core
