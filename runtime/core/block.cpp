#include "runtime/core/block.h"

#include <sys/single_threaded.h>

#include <algorithm>
#include <cstring>

#include "runtime/core/client.h"
#include "runtime/core/code_map.h"
#include "runtime/core/decoded.h"
#include "runtime/core/emit.h"
#include "runtime/core/entry.h"
#include "runtime/core/fatal.h"
#include "runtime/core/loop.h"
#include "runtime/core/optimise.h"
#include "runtime/core/predict.h"
#include "runtime/ir/decode.h"

namespace core {

constinit bool optimise_blocks = true;

namespace {

// Conditional branches within a block.
constexpr unsigned kMaxBranches = 3;

// Code is read a few words at a time: most blocks are short.
constexpr unsigned kWordsAtOnce = 16;

// Reads the application's code from `pc` on. Returns the number of words, 0 if there are none.
unsigned read_code(uint64_t pc, uint32_t* words, unsigned most) {
  if (pc % 4 != 0) {
    return 0;
  }
  const size_t wanted = executable_size(pc, uint64_t{most} * 4);
  const size_t missing = core_copy(words, reinterpret_cast<const void*>(pc), wanted);
  return static_cast<unsigned>((wanted - missing) / 4);
}

// Whether a block goes on behind a conditional branch: where it may well be the way, and is not the
// beginning of a fragment already. Then the fall-through costs nothing.
bool goes_on(Cache& cache, uint32_t word, uint64_t pc) {
  return ir::control_of(word) == ir::control::conditional && ir::branch_offset(word) > 0 &&
         !ir::uses_reg(word, kStolenRegister) && find_fragment(cache, pc + 4) == nullptr;
}

// The application's instructions up to a control transfer. Returns the address behind them. A block
// with instructions that the client may expand ends at the first one: branches must reach the
// stubs.
uint64_t read_words(Context& context, instrlist_t& list, uint32_t* words) {
  uint64_t pc = context.pc;
  unsigned count = 0;
  bool scalable = false;
  unsigned transfers = 0;
  for (unsigned i = 0; i < kMaxBlockInstructions; ++i, pc += 4) {
    if (i == count) {
      count += read_code(pc, words + i, std::min(kWordsAtOnce, kMaxBlockInstructions - i));
    }
    if (i == count) {
      return pc;
    }
    const uint32_t word = words[i];
    if (transfers != 0 && ir::is_scalable(word)) {
      return pc;
    }
    instr_t* const instr = ir::new_original(context.arena, word, reinterpret_cast<app_pc>(pc));
    ir::append(list, instr);
    if (instr->plain) {
      continue;
    }
    scalable = scalable || ir::is_scalable(word);
    if (ir::control_of(word) != ir::control::none) {
      ++transfers;
      if (scalable || transfers > kMaxBranches || !goes_on(*context.cache, word, pc)) {
        return pc + 4;
      }
    }
  }
  return pc;
}

// Whether the words are still there, so that no change can be missed from now on.
bool note_block(uint64_t pc, const uint32_t* words, uint64_t end) {
  const uint64_t size = end - pc;
  uint32_t now[kMaxBlockInstructions];
  note_decoded(pc, words, static_cast<unsigned>(size / 4));
  if (__libc_single_threaded) {
    return true;
  }
  return executable_size(pc, size) == size &&
         core_copy(now, reinterpret_cast<const void*>(pc), size) == 0 &&
         std::memcmp(now, words, size) == 0;
}

uint64_t read_block(Context& context, instrlist_t& list) {
  uint32_t words[kMaxBlockInstructions];
  uint64_t behind;
  while ((behind = read_words(context, list, words)) != context.pc &&
         !note_block(context.pc, words, behind)) {
    ir::clear(context.arena, list);
  }
  return behind;
}

// The words of what the client inserted behind a call: its instructions stand for the same one of
// the application.
std::vector<uint32_t> restoring_half(Emitter& emitter, const instr_t& call) {
  emitter.words.clear();
  const instr_t* instr = call.next;
  for (; instr != nullptr && instr->pc == call.pc; instr = instr->next) {
    if (instr->kind == ir::kind::original || instr->kind == ir::kind::call) {
      break;
    }
    emit_instruction(emitter, *instr);
  }
  return {emitter.words.data(), emitter.words.data() + emitter.words.size()};
}

// Tells each call how to give the registers back, before the list is optimised.
void keep_restoring_halves(Context& context, instrlist_t& list) {
  Emitter emitter(context, context.pc, 0, true);
  emitter.context_loaded = true;
  for (instr_t* instr = list.first; instr != nullptr; instr = instr->next) {
    if (instr->kind == ir::kind::call) {
      instr->call.restore = add_restore(emitter.cache, restoring_half(emitter, *instr));
    }
  }
  forget(emitter.cache, emitter.fragment);
}

void emit_block(Emitter& emitter, const instrlist_t& list, const Loop& loop) {
  bool ended = false;
  uint32_t body = 0;
  for (const instr_t* instr = list.first; instr != nullptr;) {
    if (instr == loop.body) {
      body = emitter.offset();
    } else if (instr == loop.out) {
      emit_way_round(emitter, loop, body);
    }
    const instr_t* const behind = instr->plain      ? emit_plain_instructions(emitter, instr)
                                  : optimise_blocks ? emit_inserted_constant(emitter, instr)
                                                    : instr;
    if (behind != instr) {
      instr = behind;
      ended = false;
    } else {
      ended = emit_instruction(emitter, *instr);
      instr = instr->next;
    }
  }
  if (!ended) {
    emit_exit(emitter, emitter.behind);
  }
  find_leaf(emitter);
}

}  // namespace

Fragment* build_fragment(Context& context) {
  Cache& cache = *context.cache;
  instrlist_t list;
  const uint64_t behind = read_block(context, list);
  if (behind == context.pc) {
    return nullptr;
  }
  for (const auto event : client_events().block) {
    event(&context, reinterpret_cast<void*>(context.pc), &list, false, false);
  }
  if (list.calls) {
    keep_restoring_halves(context, list);
  }
  Loop loop;
  if (list.calls && optimise_blocks) {
    optimise_block(context.arena, list, reinterpret_cast<uint64_t>(&context));
    loop = find_loop(list, context.pc, reinterpret_cast<uint64_t>(&context));
  }
  Fragment* fragment = nullptr;
  for (int attempt = 0; attempt < 2 && fragment == nullptr; ++attempt) {
    if (attempt != 0) {
      flush_cache(cache);
      context.last_exit = EXIT_NONE;
    }
    Emitter emitter(context, context.pc, behind, list.calls);
    emit_block(emitter, list, loop);
    fragment = finish(emitter);
  }
  ir::clear(context.arena, list);
  if (fragment == nullptr) {
    fatal("a block does not fit the code cache");
  }
  return fragment;
}

}  // namespace core
