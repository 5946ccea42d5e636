#include "runtime/core/steps.h"

#include "runtime/ir/encode.h"

namespace core {
namespace {

bool is_access(const Effect& effect) {
  return effect.action == Action::load || effect.action == Action::store;
}

// ---- forwards: what changes nothing -------------------------------------------------------------

void find_address(Step& step, const Values& values) {
  constexpr uint64_t kAlignment = 4;
  const Values::Constant& base = values.constant(step.effect.base);
  step.address = base.value + static_cast<uint64_t>(int64_t{step.effect.offset});
  // In an instruction that counts as the application's, X28 does not occur.
  step.known = base.known && step.address % kAlignment == 0;
}

void see_access(Step& step, Values& values) {
  find_address(step, values);
  if (step.known) {
    step.dropped = step.effect.action == Action::load ? values.load(step.effect, step.address)
                                                      : values.store(step.effect, step.address);
  } else if (step.effect.action == Action::store) {
    values.forget_memory();
  } else {
    values.forget_all();
  }
}

// The constant that the instructions from `at` on leave in the first one's target, and the end of
// this run.
size_t end_of_constant(const Steps& steps, size_t at, uint64_t& value) {
  const unsigned target = steps[at].effect.target;
  value = steps[at].effect.value;
  for (++at; at < steps.size(); ++at) {
    const Effect& effect = steps[at].effect;
    if (effect.action != Action::insert || effect.target != target || steps[at].dropped) {
      break;
    }
    value = (value & ~effect.mask) | effect.value;
  }
  return at;
}

void see_status_move(const Effect& effect, Values& values) {
  if (effect.writes.general != 0) {
    values.forget(effect.target);
  }
}

// Sees the step at `at` and those that belong to it; returns the next one.
size_t see(Steps& steps, size_t at, Values& values) {
  Step& step = steps[at];
  switch (step.effect.action) {
  case Action::unknown:
    values.forget_all();
    break;
  case Action::call:
    values.call(step.effect.writes.general);
    break;
  case Action::compute:
  case Action::insert:
    if ((step.effect.writes.general >> step.effect.target & 1) != 0) {
      values.forget(step.effect.target);
    }
    break;
  case Action::load:
  case Action::store:
    see_access(step, values);
    break;
  case Action::copy:
    step.dropped = values.copy(step.effect.target, step.effect.source);
    break;
  case Action::status:
    see_status_move(step.effect, values);
    break;
  case Action::constant: {
    uint64_t value;
    const size_t end = end_of_constant(steps, at, value);
    const bool in_vain = values.set_constant(step.effect.target, value);
    for (; at < end; ++at) {
      steps[at].dropped = in_vain;
    }
    return end;
  }
  }
  return at + 1;
}

}  // namespace

void drop_repetitions(Steps& steps, size_t first, size_t last, Values& values) {
  for (size_t at = first; at < last;) {
    at = steps[at].dropped ? at + 1 : see(steps, at, values);
  }
}

// ---- backwards: what nothing reads --------------------------------------------------------------

namespace {

// The field with the application's X28 is a place like a register.
void add_stolen_field(Effect& effect, uint64_t address, uint64_t field) {
  constexpr uint64_t kFieldSize = 8;
  const uint64_t size = uint64_t{effect.bytes} * effect.count;
  if (address >= field + kFieldSize || address + size <= field) {
    return;
  }
  if (effect.action == Action::store && address == field && size == kFieldSize) {
    effect.writes.status |= status_stolen;
  } else {
    effect.reads.status |= status_stolen;
  }
}

// Whether all that the step does is in `writes`.
bool is_pure(const Step& step) {
  switch (step.effect.action) {
  case Action::copy:
  case Action::constant:
  case Action::insert:
  case Action::status:
    return true;
  case Action::load:
    return step.known;
  case Action::store:
    return step.effect.writes.status != 0;
  default:
    return false;
  }
}

}  // namespace

StateSet drop_unread(Steps& steps, uint64_t context) {
  const uint64_t stolen_field = context + ir::runtime_layout.stolen_value;
  StateSet live = all_state;
  for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
    if (step->dropped) {
      continue;
    }
    Effect& effect = step->effect;
    if (is_access(effect) && step->known) {
      add_stolen_field(effect, step->address, stolen_field);
    } else if (is_access(effect)) {
      effect.reads = all_state;
    }
    if (!step->kept && is_pure(*step) && !live.meets(effect.writes)) {
      step->dropped = true;
      continue;
    }
    live.remove(effect.writes);
    live.add(effect.reads);
  }
  return live;
}

// ---- flags --------------------------------------------------------------------------------------

namespace {

bool flags_live(const Steps& steps, size_t at) {
  for (; at < steps.size(); ++at) {
    const Effect& effect = steps[at].effect;
    if (!steps[at].dropped && (effect.reads.status & status_nzcv) != 0) {
      return true;
    }
    if (!steps[at].dropped && (effect.writes.status & status_nzcv) != 0) {
      return false;
    }
  }
  return true;
}

}  // namespace

void mask_flags(Steps& steps) {
  constexpr unsigned kFlags = 4, kLowestFlag = 28;
  Step* last = nullptr;
  for (size_t at = 0; at < steps.size(); ++at) {
    Step& step = steps[at];
    if (step.dropped) {
      continue;
    }
    const Effect& effect = step.effect;
    if (last != nullptr && last->effect.action == Action::status &&
        last->effect.writes.status == status_nzcv && effect.action == Action::status &&
        effect.reads.status == status_nzcv && effect.target == last->effect.target &&
        effect.target != ir::zr && !flags_live(steps, at + 1)) {
      last->dropped = true;
      step.instr->word = ir::enc::and_ones(effect.target, effect.target, kLowestFlag, kFlags);
      step.effect = effect_of(*step.instr);
    }
    last = &step;
  }
}

// ---- pairs --------------------------------------------------------------------------------------

namespace {

struct PairForm {
  Action action;
  uint8_t bytes;
  uint32_t (*encode)(unsigned rt, unsigned rt2, unsigned rn, std::int64_t offset);
};

constexpr PairForm kPairForms[] = {
    {Action::load, 8,
     [](unsigned rt, unsigned rt2, unsigned rn, std::int64_t offset) {
       return ir::enc::ldp_x(rt, rt2, rn, offset);
     }},
    {Action::store, 8,
     [](unsigned rt, unsigned rt2, unsigned rn, std::int64_t offset) {
       return ir::enc::stp_x(rt, rt2, rn, offset);
     }},
    {Action::load, 16,
     [](unsigned rt, unsigned rt2, unsigned rn, std::int64_t offset) {
       return ir::enc::ldp_q(rt, rt2, rn, offset);
     }},
    {Action::store, 16,
     [](unsigned rt, unsigned rt2, unsigned rn, std::int64_t offset) {
       return ir::enc::stp_q(rt, rt2, rn, offset);
     }},
};

const PairForm* pair_form(const Effect& effect) {
  for (const PairForm& form : kPairForms) {
    if (form.action == effect.action && form.bytes == effect.bytes) {
      return &form;
    }
  }
  return nullptr;
}

bool make_pair(const Step& first, const Step& second) {
  const Effect &one = first.effect, &other = second.effect;
  const PairForm* const form = pair_form(one);
  const bool alike = one.action == other.action && one.bytes == other.bytes && one.count == 1 &&
                     other.count == 1 && one.base == other.base && first.known && second.known &&
                     first.instr->kind == second.instr->kind;
  if (form == nullptr || !alike) {
    return false;
  }
  const bool ascending = one.offset + one.bytes == other.offset;
  const bool descending = other.offset + one.bytes == one.offset;
  const Effect &lower = ascending ? one : other, &upper = ascending ? other : one;
  constexpr int32_t kLimit = 64;  // of the offset, in units
  const bool loads = one.action == Action::load;
  const bool conflict = loads && (one.registers[0] == other.registers[0] ||
                                  (!one.vector && one.registers[0] == one.base));
  if ((!ascending && !descending) || conflict || lower.offset % lower.bytes != 0 ||
      lower.offset / lower.bytes >= kLimit) {
    return false;
  }
  first.instr->word =
      form->encode(lower.registers[0], upper.registers[0], lower.base, lower.offset);
  return true;
}

}  // namespace

void join_pairs(Steps& steps) {
  Step* last = nullptr;
  for (Step& step : steps) {
    if (step.dropped) {
      continue;
    }
    if (last != nullptr && is_access(last->effect) && make_pair(*last, step)) {
      step.dropped = true;
      last = nullptr;
    } else {
      last = &step;
    }
  }
}

// ---- the list -----------------------------------------------------------------------------------

Steps steps_of(const instrlist_t& list) {
  Steps steps;
  for (instr_t* instr = list.first; instr != nullptr; instr = instr->next) {
    steps.push_back({instr, effect_of(*instr)});
  }
  return steps;
}

}  // namespace core
