#include "runtime/core/loop.h"

#include <algorithm>

#include "runtime/core/steps.h"
#include "runtime/ir/decode.h"

namespace core {
namespace {

// The block's steps: [0, body) up to the first call, [body, out) to behind the last one, and
// [out, branch) from there. In the first and the last part are a saving and a restoring half, and
// computations of the application.
struct Parts {
  Steps steps;
  size_t body = 0, out = 0, branch = 0;

  size_t halves() const { return branch - out + body; }  // steps of the first and the last part
};

bool branches_to(const instr_t& instr, uint64_t tag) {
  return instr.kind == ir::kind::original &&
         ir::control_of(instr.word) == ir::control::conditional &&
         !ir::uses_reg(instr.word, ir::stolen_register) &&
         reinterpret_cast<uint64_t>(instr.pc) +
                 static_cast<uint64_t>(ir::branch_offset(instr.word)) ==
             tag;
}

// Whether the instruction does the same wherever it stands, as it is, and never faults.
bool is_movable(const Step& step) {
  return step.effect.action != Action::unknown && step.effect.action != Action::call &&
         ir::pc_relative_of(step.instr->word) == ir::pc_relative::none;
}

// Whether the block has these parts.
bool divide(const instrlist_t& list, Parts& parts) {
  parts.steps = steps_of(list);
  const auto begin = parts.steps.begin(), branch = parts.steps.end() - 1;
  const auto is_call = [](const Step& step) { return step.instr->kind == ir::kind::call; };
  const auto body = std::find_if(begin, branch, is_call);
  auto out = branch;
  while (out != begin && !is_call(*(out - 1))) {
    --out;
  }
  if (body == branch || !std::all_of(begin, body, is_movable) ||
      !std::all_of(out, branch, is_movable)) {
    return false;
  }
  parts.body = static_cast<size_t>(body - begin);
  parts.out = static_cast<size_t>(out - begin);
  parts.branch = static_cast<size_t>(branch - begin);
  return true;
}

// What the steps from `first` up to `last` read of the state in front of them, if all that is
// behind them is read.
StateSet read_by(const Steps& steps, size_t first, size_t last) {
  StateSet live = all_state;
  while (last-- > first) {
    live.remove(steps[last].effect.writes);
    live.add(steps[last].effect.reads);
  }
  return live;
}

// What the branch asks for: the flags, or a register.
StateSet wanted_by(uint32_t branch) {
  const uint32_t registers = ir::named_registers(branch);
  return registers != 0 ? StateSet{registers} : StateSet{0, 0, status_nzcv};
}

// The words behind the last call by which the branch can be decided, in reverse. What they write is
// added to `changed`. False if they cannot be told.
bool find_decision(const Parts& parts, std::vector<uint32_t>& words, StateSet& changed) {
  StateSet wanted = wanted_by(parts.steps[parts.branch].instr->word);
  bool loads = false;
  for (size_t at = parts.branch; at-- > parts.out;) {
    const Step& step = parts.steps[at];
    if (step.effect.action == Action::store && loads) {
      return false;  // it may store what they load
    }
    if (step.effect.writes.meets(wanted)) {
      loads = loads || step.effect.action == Action::load;
      wanted.remove(step.effect.writes);
      wanted.add(step.effect.reads);
      changed.add(step.effect.writes);
      words.push_back(step.instr->word);
    }
  }
  return true;
}

// From `out` on, the way round to there: both halves, a round that stays as it is, and the
// restoring half again. `instrs` has the instructions, since the block's own are not to be changed.
Steps way_round(const Parts& parts, std::vector<instr_t>& instrs) {
  const Steps& steps = parts.steps;
  Steps way(steps.begin() + static_cast<ptrdiff_t>(parts.out), steps.end() - 1);
  way.insert(way.end(), steps.begin(), steps.end() - 1);
  instrs.reserve(way.size());
  for (size_t at = 0; at < way.size(); ++at) {
    way[at].kept = at >= parts.halves();
    way[at].instr = &instrs.emplace_back(*way[at].instr);
  }
  return way;
}

void find_addresses(Steps& steps, uint64_t context) {
  Values values(context);
  drop_repetitions(steps, 0, steps.size(), values);
  for (Step& step : steps) {
    step.dropped = false;
  }
}

// Drops what the halves of the way do in vain; returns what they read. What is known
// at `out` in the first round holds in all: of memory only what is behind the last call, and of the
// registers those that calls keep, which the way leaves as they are or as the saving half does.
StateSet shorten(Steps& way, const Parts& parts, uint64_t context) {
  Values values(context);
  Steps round = parts.steps;
  drop_repetitions(round, 0, parts.out, values);
  drop_repetitions(way, 0, parts.halves(), values);
  return drop_unread(way, context);
}

}  // namespace

Loop find_loop(const instrlist_t& list, uint64_t tag, uint64_t context) {
  Parts parts;
  if (!branches_to(*list.last, tag) || !divide(list, parts)) {
    return {};
  }
  find_addresses(parts.steps, context);
  std::vector<instr_t> instrs;
  Steps way = way_round(parts, instrs);
  StateSet read;
  // Twice: a constant may be a repetition once what stood in its way is gone.
  for (int i = 0; i < 2; ++i) {
    read = shorten(way, parts, context);
  }
  mask_flags(way);

  Loop loop;
  StateSet changed = {uint32_t{1} << kPendingRegister};
  const StateSet behind = read_by(parts.steps, parts.out, parts.branch);
  // What the way reads and the restoring half does not: nothing keeps it for the next way.
  StateSet lost = read;
  lost.remove(behind);
  if (!find_decision(parts, loop.decide, changed) || changed.meets(read) || changed.meets(behind) ||
      lost.meets(all_state)) {
    return {};
  }
  std::reverse(loop.decide.begin(), loop.decide.end());
  for (size_t at = 0; at < parts.halves(); ++at) {
    if (!way[at].dropped) {
      loop.again.push_back(way[at].instr->word);
    }
  }
  loop.body = parts.steps[parts.body].instr;
  loop.out = parts.steps[parts.out].instr;
  loop.branch = list.last->word;
  return loop;
}

}  // namespace core
