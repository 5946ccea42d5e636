#include "runtime/core/values.h"

#include <iterator>

#include "runtime/ir/encode.h"

namespace core {
namespace {

constexpr unsigned kPart = 4;

}  // namespace

size_t KnownMemory::slot_of(uint64_t address) const {
  size_t slot = address / kPart % kEntries;
  while (in_use(slot) && entries_[slot].address != address) {
    slot = (slot + 1) % kEntries;
  }
  return slot;
}

const uint64_t* KnownMemory::find(uint64_t address) const {
  const size_t slot = slot_of(address);
  return in_use(slot) ? &entries_[slot].value : nullptr;
}

void KnownMemory::set(uint64_t address, uint64_t value) {
  if (used_ >= kEntries / 2) {
    clear();
  }
  const size_t slot = slot_of(address);
  used_ += in_use(slot) ? 0 : 1;
  generations_[slot] = generation_;
  entries_[slot] = {address, value};
}

void KnownMemory::clear() {
  ++generation_;
  used_ = 0;
}

Values::Values(uint64_t context) : context_(context) { forget_all(); }

void Values::forget_all() {
  memory_.clear();
  for (unsigned reg = 0; reg < std::size(general_); ++reg) {
    forget(reg);
    vectors_[reg] = fresh();
  }
  constants_[ir::stolen_register] = {context_, true};
}

void Values::call(uint32_t lost) {
  memory_.clear();
  for (unsigned reg = 0; reg < std::size(general_); ++reg) {
    if ((lost >> reg & 1) != 0) {
      forget(reg);
    }
    vectors_[reg] = fresh();
  }
}

void Values::forget(unsigned reg) {
  general_[reg] = fresh();
  constants_[reg] = {};
}

bool Values::copy(unsigned target, unsigned source) {
  const bool same = general_[target] == general_[source];
  general_[target] = general_[source];
  constants_[target] = constants_[source];
  return same;
}

bool Values::set_constant(unsigned reg, uint64_t value) {
  const Constant before = constants_[reg];
  if (before.known && before.value == value) {
    return true;
  }
  forget(reg);
  constants_[reg] = {value, true};
  return false;
}

Values::Value Values::value_at(uint64_t address, unsigned bytes) {
  const uint64_t* const first = memory_.find(address);
  for (unsigned at = kPart; first != nullptr && at < bytes; at += kPart) {
    const uint64_t* const part = memory_.find(address + at);
    if (part == nullptr || *part != *first + at) {
      return fresh();
    }
  }
  return first != nullptr ? *first : fresh();
}

void Values::set_memory(uint64_t address, unsigned bytes, Value value) {
  for (unsigned at = 0; at < bytes; at += kPart) {
    memory_.set(address + at, value + at);
  }
}

bool Values::load_one(const Effect& effect, unsigned index, uint64_t address) {
  const unsigned reg = effect.registers[index];
  if (!effect.vector && reg == ir::zr) {
    return true;
  }
  // A W register's upper half is 0, so the whole register is no value that memory has.
  const Value value = effect.bytes == kPart ? fresh() : value_at(address, effect.bytes);
  Value& place = effect.vector ? vectors_[reg] : general_[reg];
  const bool same = place == value;
  if (!effect.vector && !same) {
    constants_[reg] = {};
  }
  place = value;
  set_memory(address, effect.bytes, value);
  return same;
}

bool Values::load(const Effect& effect, uint64_t address) {
  bool same = true;
  for (unsigned i = 0; i < effect.count; ++i) {
    same = load_one(effect, i, address + uint64_t{i} * effect.bytes) && same;
  }
  return same;
}

bool Values::store(const Effect& effect, uint64_t address) {
  bool same = true;
  for (unsigned i = 0; i < effect.count; ++i, address += effect.bytes) {
    const unsigned reg = effect.registers[i];
    const bool zero = !effect.vector && reg == ir::zr;
    const Value value = zero ? fresh() : effect.vector ? vectors_[reg] : general_[reg];
    same = value_at(address, effect.bytes) == value && same;
    set_memory(address, effect.bytes, value);
  }
  return same;
}

}  // namespace core
