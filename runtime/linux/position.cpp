#include "runtime/linux/position.h"

#include "runtime/core/cache.h"
#include "runtime/linux/machine_context.h"

namespace os {
namespace {

// The last place at or in front of `offset`, null if there is none.
const core::Place* last_place(const core::Cache& cache, const core::Fragment& fragment,
                              uint32_t offset) {
  const core::Place* found = nullptr;
  const uint32_t word = (offset - fragment.begin) / 4;
  for (unsigned i = 0; i < fragment.place_count; ++i) {
    const core::Place& place = cache.places[fragment.first_place + i];
    if (place.code_word > word) {
      break;
    }
    found = &place;
  }
  return found;
}

bool is_at(const core::Fragment& fragment, const core::Place& place, uint32_t offset) {
  return place.code_word == (offset - fragment.begin) / 4;
}

uint64_t pc_of(const core::Fragment& fragment, const core::Place& place) {
  return fragment.tag + place.app_word * uint64_t{4};
}

// The exit that the thread is about to take at `offset`, null if there is none: at its branch, in
// its stub, or from its look at Context::pending on.
const core::Exit* exit_at(const core::Cache& cache, const core::Fragment& fragment,
                          uint32_t offset) {
  for (unsigned i = 0; i < fragment.exit_count; ++i) {
    const core::Exit& exit = cache.exits[fragment.first_exit + i];
    const uint32_t begin = exit.check != 0 ? exit.check : exit.site;
    // A conditional branch may yet go the other way.
    const bool at_site = exit.branch == 0 && offset >= begin && offset <= exit.site;
    const bool in_stub = offset >= exit.stub && offset <= exit.stub + core::kStubPatch;
    const bool goes_on =
        exit.kind == core::ExitKind::direct || exit.kind == core::ExitKind::indirect;
    if (goes_on && (at_site || in_stub)) {
      return &exit;
    }
  }
  return nullptr;
}

void load(core::Context& context, const mcontext_t& machine, uint64_t pc) {
  const uint64_t stolen = context.x[core::kStolenRegister];
  load_registers(context, machine);
  context.x[core::kStolenRegister] = stolen;
  context.pc = pc;
}

// X0 and X1 have yet to be loaded.
void load_saved(core::Context& context) {
  context.x[0] = context.exit_x0;
  context.x[1] = context.exit_x1;
}

// In the look-up the target is known, by its address or by its fragment.
bool load_in_lookup(core::Context& context, const mcontext_t& machine,
                    const core::Fragment& fragment, uint32_t offset) {
  if (offset < fragment.lookup_branch) {
    load(context, machine, machine.regs[fragment.lookup_register]);
    if (fragment.lookup_saved) {
      context.x[fragment.lookup_register] = context.exit_x2;
    }
  } else if (offset == fragment.lookup_branch) {
    const core::Fragment* target = core::fragment_holding(*context.cache, machine.regs[1]);
    if (target == nullptr) {
      return false;
    }
    load(context, machine, target->tag);
  } else {
    return false;
  }
  load_saved(context);
  return true;
}

void restore_scratch(core::Context& context, uint8_t scratch) {
  if (scratch == core::kNoScratch) {
    return;
  }
  const unsigned first = scratch & (core::kScratchPair - 1);
  context.x[first] = context.mangle_save;
  if ((scratch & core::kScratchPair) != 0) {
    context.x[first + 1] = context.mangle_save2;
  }
}

}  // namespace

bool load_exact_state(core::Context& context, const mcontext_t& machine) {
  const core::Cache& cache = *context.cache;
  const core::Fragment* fragment = core::fragment_holding(*context.cache, machine.pc);
  if (fragment == nullptr) {
    return false;
  }
  const auto offset = static_cast<uint32_t>(machine.pc - reinterpret_cast<uint64_t>(cache.base));
  if (offset == fragment->begin) {
    load(context, machine, fragment->tag);
    load_saved(context);
    return true;
  }
  if (fragment->branched != 0 && offset >= fragment->branched && offset <= fragment->branched_end) {
    load(context, machine, machine.regs[fragment->target_register]);
    return true;
  }
  if (fragment->lookup != 0 && offset >= fragment->lookup && offset <= fragment->lookup_branch) {
    return load_in_lookup(context, machine, *fragment, offset);
  }
  // Among calls, what the registers hold between two instructions is the optimising pass's affair:
  // it promises them at instructions that may fault and at the end. The exits look out by
  // themselves.
  const core::Place* place = fragment->checks ? nullptr : last_place(cache, *fragment, offset);
  if (place != nullptr && is_at(*fragment, *place, offset) && place->scratch == core::kNoScratch) {
    load(context, machine, pc_of(*fragment, *place));
    return true;
  }
  if (const core::Exit* exit = exit_at(cache, *fragment, offset)) {
    const bool indirect = exit->kind == core::ExitKind::indirect;
    load(context, machine, indirect ? machine.regs[fragment->target_register] : exit->target);
    return true;
  }
  return false;
}

void load_fault_state(core::Context& context, const mcontext_t& machine) {
  const core::Cache& cache = *context.cache;
  const core::Fragment* fragment = core::fragment_holding(*context.cache, machine.pc);
  if (fragment == nullptr) {
    load(context, machine, context.pc);
    return;
  }
  const auto offset = static_cast<uint32_t>(machine.pc - reinterpret_cast<uint64_t>(cache.base));
  const core::Place* place = last_place(cache, *fragment, offset);
  load(context, machine, place != nullptr ? pc_of(*fragment, *place) : fragment->tag);
  if (place != nullptr && is_at(*fragment, *place, offset)) {
    restore_scratch(context, place->scratch);
  } else if (offset < fragment->lookup) {
    // The authentication of a branch's target.
    load_saved(context);
    context.x[fragment->lookup_register] = context.exit_x2;
  }
}

}  // namespace os
