#include "runtime/core/optimise.h"

#include "runtime/core/steps.h"
#include "runtime/ir/arena.h"

namespace core {

void optimise_block(ir::arena& memory, instrlist_t& list, uint64_t context) {
  Steps steps = steps_of(list);
  Values values(context);
  drop_repetitions(steps, 0, steps.size(), values);
  drop_unread(steps, context);
  // Constants that only stood in each other's way are repetitions now.
  values.forget_all();
  drop_repetitions(steps, 0, steps.size(), values);
  mask_flags(steps);
  join_pairs(steps);
  for (const Step& step : steps) {
    if (step.dropped) {
      instrlist_remove(&list, step.instr);
      ir::release(memory, step.instr);
    }
  }
}

}  // namespace core
