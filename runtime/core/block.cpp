#include "runtime/core/block.h"

#include <algorithm>
#include <cstring>

#include "runtime/core/client.h"
#include "runtime/core/code_map.h"
#include "runtime/core/emit.h"
#include "runtime/core/entry.h"
#include "runtime/core/fatal.h"
#include "runtime/ir/decode.h"

namespace core {
namespace {

// A fragment is never larger than this: what its places can address.
constexpr uint32_t kMaxFragmentBytes = 4 * 0xffff;

// How many instructions at `pc` can be read and executed; their words go to `words`.
unsigned read_code(uint64_t pc, uint32_t* words) {
  const uint64_t end = executable_end(pc);
  if (pc % 4 != 0 || end == 0) {
    return 0;
  }
  const size_t wanted = std::min<uint64_t>(kMaxBlockInstructions * 4, end - pc);
  // Noted first, so that a change by another thread cannot fall between reading and noting.
  constexpr uint64_t kGrain = 4096;
  note_decoded(pc & ~(kGrain - 1), (pc + wanted + kGrain - 1) & ~(kGrain - 1));
  const size_t missing = core_copy(words, reinterpret_cast<const void*>(pc), wanted);
  return static_cast<unsigned>((wanted - missing) / 4);
}

// The application's instructions up to the first control transfer. Returns the address behind them.
uint64_t read_block(Context& context, instrlist_t& list) {
  uint32_t words[kMaxBlockInstructions];
  const unsigned count = read_code(context.pc, words);
  uint64_t pc = context.pc;
  for (unsigned i = 0; i < count; ++i, pc += 4) {
    ir::append(list, ir::new_original(context.arena, words[i], reinterpret_cast<app_pc>(pc)));
    if (ir::control_of(words[i]) != ir::control::none) {
      return pc + 4;
    }
  }
  return pc;
}

// Which calls end where: a call's restoring half lasts as long as instructions stand for its
// instruction.
struct OpenCalls {
  Cache& cache;
  const instr_t* open = nullptr;

  void see(const instr_t& instr, uint32_t offset) {
    if (open != nullptr && instr.pc != open->pc) {
      close(offset);
    }
    if (instr.kind == ir::kind::call) {
      open = &instr;
    }
  }
  void close(uint32_t offset) {
    if (open != nullptr) {
      cache.calls.back().end = offset;
      open = nullptr;
    }
  }
};

void emit_block(Emitter& emitter, const instrlist_t& list, uint64_t behind) {
  OpenCalls calls{emitter.cache};
  bool ended = false;
  for (const instr_t* instr = list.first; instr != nullptr; instr = instr->next) {
    calls.see(*instr, emitter.offset());
    ended = emit_instruction(emitter, *instr);
  }
  calls.close(emitter.offset());
  if (!ended) {
    emit_exit(emitter, behind);
  }
}

bool has_calls(const instrlist_t& list) {
  const instr_t* instr = list.first;
  while (instr != nullptr && instr->kind != ir::kind::call) {
    instr = instr->next;
  }
  return instr != nullptr;
}

// Gives a fragment that was emitted but does not fit its bookkeeping back.
void forget(Cache& cache, const Fragment& fragment) {
  cache.exits.resize(fragment.first_exit);
  cache.places.resize(fragment.first_place);
  cache.calls.resize(fragment.first_call);
}

Fragment* finish(Emitter& emitter) {
  Cache& cache = emitter.cache;
  Fragment& fragment = emitter.fragment;
  fragment.end = emitter.offset();
  fragment.exit_count = static_cast<uint16_t>(cache.exits.size() - fragment.first_exit);
  fragment.place_count = static_cast<uint16_t>(cache.places.size() - fragment.first_place);
  fragment.call_count = static_cast<uint16_t>(cache.calls.size() - fragment.first_call);
  if (fragment.end > cache.size - kReplayRoom) {
    forget(cache, fragment);
    return nullptr;
  }
  CacheWriter writer(cache, fragment.begin, fragment.end);
  std::memcpy(code_at(cache, fragment.begin), emitter.words.data(), emitter.words.size() * 4);
  cache.cursor = fragment.end;
  add_fragment(cache, fragment);
  return &cache.fragments.back();
}

}  // namespace

void optimise_block(instrlist_t&) {}

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
  optimise_block(list);
  Fragment* fragment = nullptr;
  for (int attempt = 0; attempt < 2 && fragment == nullptr; ++attempt) {
    if (attempt != 0) {
      flush_cache(cache);
      context.last_exit = EXIT_NONE;
    }
    Emitter emitter(cache, context.pc, has_calls(list));
    emit_block(emitter, list, behind);
    if (emitter.words.size() * 4 > kMaxFragmentBytes) {
      fatal("a block grew too large");
    }
    fragment = finish(emitter);
  }
  ir::clear(context.arena, list);
  if (fragment == nullptr) {
    fatal("a block does not fit the code cache");
  }
  return fragment;
}

}  // namespace core
