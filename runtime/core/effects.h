// What an instruction of a finished block does, as far as inserted code can be told apart from
// everything else.
#pragma once

#include <cstdint>

#include "runtime/ir/ir.h"

namespace core {

// Places that hold state between instructions, one bit each. In `general`, bit 31 is SP.
struct StateSet {
  uint32_t general = 0;
  uint32_t vector = 0;
  uint8_t status = 0;  // status_nzcv and so on

  bool meets(const StateSet& other) const {
    return (general & other.general) != 0 || (vector & other.vector) != 0 ||
           (status & other.status) != 0;
  }
  void add(const StateSet& other) {
    general |= other.general, vector |= other.vector, status |= other.status;
  }
  void remove(const StateSet& other) {
    general &= ~other.general, vector &= ~other.vector, status &= ~other.status;
  }
};

inline constexpr uint8_t status_nzcv = 1, status_fpcr = 2, status_fpsr = 4;
// The field of the context with the application's X28: no callee can ask for it.
inline constexpr uint8_t status_stolen = 8;
inline constexpr StateSet all_state = {~uint32_t{0}, ~uint32_t{0}, 15};

enum class Action : uint8_t {
  unknown,   // reads and writes everything, and may fault
  call,      // an inserted call
  compute,   // an application's instruction that changes registers only and never faults
  load,      // of `count` registers from `base` + `offset`
  store,     // the other way
  copy,      // of `source` to `target`, all 64 bits; SP is 31
  constant,  // MOVZ, MOVN: `target` = `value`
  insert,    // MOVK: `value` in place of the bits `mask` of `target`
  status,    // MRS, MSR
};

struct Effect {
  Action action = Action::unknown;
  // A place that is read at all, and one that is written whatever it held before; what is written
  // in part counts as read, too.
  StateSet reads = all_state, writes;
  bool vector = false;  // load and store: of vector registers
  uint8_t bytes = 0;    // load and store: of one register
  uint8_t count = 0;    // load and store: of registers, 1 or 2
  uint8_t registers[2] = {};
  uint8_t base = 0;
  int32_t offset = 0;
  uint8_t source = 0, target = 0;
  uint64_t value = 0, mask = 0;
};

Effect effect_of(const instr_t& instr);

}  // namespace core
