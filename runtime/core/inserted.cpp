// What the client inserted: calls, and constants that take several words.
#include "runtime/core/effects.h"
#include "runtime/core/emit.h"
#include "runtime/ir/decode.h"
#include "runtime/ir/encode.h"

namespace core {

namespace enc = ir::enc;

namespace {

bool spares_sp(const instr_t& instr) {
  constexpr uint32_t kSp = uint32_t{1} << ir::sp;
  const Effect effect = effect_of(instr);
  return instr.kind != ir::kind::original &&
         ((effect.reads.general | effect.writes.general) & kSp) == 0;
}

// Whether nothing asks for SP up to the next call.
bool another_call_follows(const instr_t& call) {
  for (const instr_t* instr = call.next; instr != nullptr; instr = instr->next) {
    if (instr->kind == ir::kind::call) {
      return true;
    }
    if (!spares_sp(*instr)) {
      break;
    }
  }
  return false;
}

bool is_movz(const instr_t& instr) { return (instr.word & 0xff800000) == 0xd2800000; }
bool is_movk(const instr_t& instr) { return (instr.word & 0xff800000) == 0xf2800000; }

}  // namespace

// The inserted code around the call has saved everything, and X26 is dead. So are the registers
// that the callee need not keep; the others it has as they were, too.
//
//   ADR X16, constants;  STR X16, call         tells the signal handler where the thread is
//   LDP X0, X1, [X16];  LDP X2, X16, [X16, #16]    arguments and callee
//   MOV X26, SP;  LDR X17, runtime's stack;  MOV SP, X17
//   BLR X16
//   MOV SP, X26
//
// Between calls that stand close together SP stays as it is, and its value waits in the context.
void emit_call(Emitter& to, const instr_t& instr) {
  constexpr unsigned kCallee = 16, kWork = 17, kSavedSp = 26;
  static_assert(ir::max_call_arguments == 3);
  const bool stay = another_call_follows(instr);
  to.constants.push_back({static_cast<uint32_t>(to.words.size()), &instr.call});
  to.cache.calls.push_back({reinterpret_cast<uint64_t>(instr.pc), 0, instr.call.restore});
  to.emit(enc::adr(kCallee, 0));
  store_field(to, kCallee, CTX_CALL);
  to.emit(enc::ldp_x(0, 1, kCallee, 0));
  to.emit(enc::ldp_x(2, kCallee, kCallee, 16));
  if (!to.on_runtime_stack) {
    to.emit(enc::add_imm(kSavedSp, ir::sp, 0));
    if (stay) {
      store_field(to, kSavedSp, CTX_CALL_SP);
    }
    load_field(to, kWork, CTX_RUNTIME_SP);
    to.emit(enc::add_imm(ir::sp, kWork, 0));
  }
  to.emit(enc::blr(kCallee));
  if (!stay) {
    if (to.on_runtime_stack) {
      load_field(to, kSavedSp, CTX_CALL_SP);
    }
    to.emit(enc::add_imm(ir::sp, kSavedSp, 0));
  }
  to.on_runtime_stack = stay;
}

void emit_way_round(Emitter& to, const Loop& loop, uint32_t body) {
  const auto emit_all = [&](const std::vector<uint32_t>& words) {
    for (const uint32_t word : words) {
      to.emit(word);
    }
  };
  need_context(to);
  emit_all(loop.decide);
  const uint32_t branch = to.offset();
  to.emit(0);
  load_field(to, kPendingRegister, CTX_PENDING);
  const uint32_t look = to.offset();
  to.emit(0);
  emit_all(loop.again);
  to.emit(enc::b(int64_t{body} - int64_t{to.offset()}));
  const uint32_t out = to.offset();
  to.word_at(branch) = ir::inverted_branch(loop.branch, int64_t{out} - int64_t{branch});
  to.word_at(look) = enc::cbnz_x(kPendingRegister, int64_t{out} - int64_t{look});
}

const instr_t* emit_inserted_constant(Emitter& to, const instr_t* instr) {
  constexpr uint64_t kHalfword = 0xffff;
  if (instr->kind == ir::kind::original || !is_movz(*instr)) {
    return instr;
  }
  const unsigned target = instr->word & 31;
  if (target == kStolenRegister) {
    return instr;
  }
  uint64_t value = 0;
  const instr_t* next = instr;
  do {
    const unsigned at = (next->word >> 21 & 3) * 16;
    value = (value & ~(kHalfword << at)) | (next->word >> 5 & kHalfword) << at;
    next = next->next;
  } while (next != nullptr && next->kind == instr->kind && is_movk(*next) &&
           (next->word & 31) == target);
  if (next == instr->next) {
    return instr;
  }
  emit_literal(to, target, value);
  return next;
}

}  // namespace core
