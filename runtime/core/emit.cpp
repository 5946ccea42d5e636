// The rewriting of the application's instructions. X28 belongs to the runtime in everything that is
// emitted; what the application knows as X28 is a field of the context. A body expects nothing in
// X28 and loads the context's address where it first needs it.
#include "runtime/core/emit.h"

#include "runtime/core/fatal.h"
#include "runtime/core/identification.h"
#include "runtime/core/predict.h"
#include "runtime/ir/decode.h"
#include "runtime/ir/encode.h"

namespace core {

namespace enc = ir::enc;

namespace {

constexpr unsigned kStolenValue = CTX_X + kStolenRegister * 8;
constexpr unsigned kLinkRegister = 30;
constexpr unsigned kFramePointer = 29;
constexpr unsigned kAnyRegister = 31;  // "T = 31": the zero register

Place place_of(size_t word, uint64_t tag, uint64_t pc, unsigned scratch = kNoScratch) {
  return {static_cast<uint16_t>(word), static_cast<uint8_t>((pc - tag) / 4),
          static_cast<uint8_t>(scratch)};
}

// ---- instructions that name X28 -----------------------------------------------------------------

//   STR Xs, save        s: the lowest register that the word does not name
//   LDR Xs, stolen      (and MOV Xs+1, X29 for a pair that begins with X28)
//   word with s in the place of X28
//   STR Xs, stolen      always: whether the word reads or writes X28 does not matter
//   LDR Xs, save
void emit_with_scratch(Emitter& to, uint32_t word, uint64_t pc) {
  const unsigned scratch = ir::lowest_unused_reg(word);
  const bool pair = ir::is_casp(word);
  store_field(to, scratch, CTX_MANGLE_SAVE);
  load_field(to, scratch, kStolenValue);
  if (pair) {
    store_field(to, scratch + 1, CTX_MANGLE_SAVE2);
    to.emit(enc::mov_reg(scratch + 1, kFramePointer));
  }
  mark(to, pc, pair ? scratch | kScratchPair : scratch);
  to.emit(ir::replace_reg(word, kStolenRegister, scratch));
  store_field(to, scratch, kStolenValue);
  load_field(to, scratch, CTX_MANGLE_SAVE);
  if (pair) {
    to.emit(enc::mov_reg(kFramePointer, scratch + 1));
    load_field(to, scratch + 1, CTX_MANGLE_SAVE2);
  }
}

void emit_plain(Emitter& to, uint32_t word, uint64_t pc) {
  if (ir::uses_reg(word, kStolenRegister)) {
    emit_with_scratch(to, word, pc);
  } else {
    mark(to, pc);
    to.emit(word);
  }
}

// ---- constants in the place of PC-relative operands and system registers ------------------------

// A value for the application's register, X28 and XZR included.
void emit_value(Emitter& to, unsigned reg, uint64_t value) {
  if (reg == kStolenRegister) {
    store_field(to, 0, CTX_MANGLE_SAVE);
    emit_constant(to, 0, value);
    store_field(to, 0, kStolenValue);
    load_field(to, 0, CTX_MANGLE_SAVE);
  } else if (reg != kAnyRegister) {
    emit_constant(to, reg, value);
  }
}

void emit_literal_load(Emitter& to, uint32_t word, uint64_t pc) {
  constexpr uint32_t kVectorBit = 1U << 26;
  const uint64_t address = ir::pc_relative_target(word, pc);
  const unsigned target = ir::field_t(word);
  const bool general = (word & kVectorBit) == 0;
  if (general && target != kStolenRegister && target != kAnyRegister) {
    emit_constant(to, target, address);
    mark(to, pc);
    to.emit(ir::literal_load_from(word, target));
    return;
  }
  // X0 carries the address, and for X28 the value as well.
  store_field(to, 0, CTX_MANGLE_SAVE);
  emit_constant(to, 0, address);
  mark(to, pc, 0);
  const uint32_t load = ir::literal_load_from(word, 0);
  if (general && target == kStolenRegister) {
    to.emit(load & ~31U);
    store_field(to, 0, kStolenValue);
  } else {
    to.emit(load);
  }
  load_field(to, 0, CTX_MANGLE_SAVE);
}

// MRS and MSR of TPIDR_EL0: a field of the context.
void emit_thread_pointer(Emitter& to, uint32_t word) {
  const unsigned reg = ir::field_t(word);
  const bool read = ir::is_mrs(word);
  const unsigned from = read ? CTX_TPIDR : kStolenValue;
  const unsigned destination = read ? kStolenValue : CTX_TPIDR;
  if (reg == kStolenRegister) {
    store_field(to, 0, CTX_MANGLE_SAVE);
    load_field(to, 0, from);
    store_field(to, 0, destination);
    load_field(to, 0, CTX_MANGLE_SAVE);
  } else if (read) {
    load_field(to, reg, CTX_TPIDR);
  } else {
    store_field(to, reg, CTX_TPIDR);
  }
}

bool is_system_register(uint32_t word, unsigned reg) {
  return (ir::is_mrs(word) || ir::is_msr_register(word)) && ir::system_register_of(word) == reg;
}

// An application instruction behind which control goes on.
void emit_straight(Emitter& to, uint32_t word, uint64_t pc) {
  switch (ir::pc_relative_of(word)) {
  case ir::pc_relative::adr:
  case ir::pc_relative::adrp:
    emit_value(to, ir::field_t(word), ir::pc_relative_target(word, pc));
    return;
  case ir::pc_relative::load:
    emit_literal_load(to, word, pc);
    return;
  case ir::pc_relative::prefetch:
    return;
  case ir::pc_relative::none:
    break;
  }
  uint64_t shown;
  if (is_system_register(word, ir::sys_tpidr_el0)) {
    emit_thread_pointer(to, word);
  } else if (ir::is_mrs(word) && shown_register(ir::system_register_of(word), shown)) {
    emit_value(to, ir::field_t(word), shown);
  } else if (ir::is_scalable(word) || ir::is_streaming(word)) {
    // What the client did not replace is undefined, also where the host could execute it.
    mark(to, pc);
    to.emit(enc::udf(0));
  } else {
    emit_plain(to, word, pc);
  }
}

// ---- the end of a block -------------------------------------------------------------------------

// A signal that arrives during a call would have to patch the fragment's exits at a cost. Beside a
// call it costs next to nothing that the exits look for themselves:
//
//          LDR X28, pending
//          CBNZ X28, stub
//   site:  B stub, or the body of the target
void emit_check(Emitter& to) {
  load_field(to, kStolenRegister, CTX_PENDING);
  to.context_loaded = false;
  to.emit(0);
}

void emit_site(Emitter& to, uint64_t target, uint64_t returns = 0) {
  Exit& exit = to.cache.exits[add_exit(to, target, ExitKind::direct)];
  exit.returns = returns;
  if (to.fragment.checks) {
    need_context(to);
    exit.check = to.offset();
    emit_check(to);
  }
  exit.site = to.offset();
  to.emit(0);
}

// Where the branch itself cannot be a site: it names X28, or its sites look for signals.
//
//   B.cond:  B.!cond behind              CBZ X28:  STR Xs, save;  LDR Xs, stolen
//            taken site                            CBNZ Xs, behind
//   behind:  fall-through site                     LDR Xs, save;  taken site
//                                        behind:   LDR Xs, save;  fall-through site
void emit_indirect_conditional(Emitter& to, uint32_t word, uint64_t pc) {
  const bool stolen = ir::uses_reg(word, kStolenRegister);
  const unsigned scratch = ir::lowest_unused_reg(word);
  uint32_t branch = word;
  if (stolen) {
    store_field(to, scratch, CTX_MANGLE_SAVE);
    load_field(to, scratch, kStolenValue);
    branch = ir::replace_reg(word, kStolenRegister, scratch);
  } else {
    mark(to, pc);
  }
  const uint32_t skip = to.offset();
  to.emit(0);
  if (stolen) {
    load_field(to, scratch, CTX_MANGLE_SAVE);
  }
  const bool loaded = to.context_loaded;
  emit_site(to, pc + static_cast<uint64_t>(ir::branch_offset(word)));
  to.context_loaded = loaded;
  to.word_at(skip) = ir::inverted_branch(branch, int64_t{to.offset()} - int64_t{skip});
  if (stolen) {
    load_field(to, scratch, CTX_MANGLE_SAVE);
  }
  emit_site(to, pc + 4);
}

// The branch itself is a site, with the fall-through behind it: the block's next instruction, or a
// site as well. Returns whether the block ends here.
bool emit_conditional(Emitter& to, uint32_t word, uint64_t pc) {
  if (to.fragment.checks || ir::uses_reg(word, kStolenRegister)) {
    emit_indirect_conditional(to, word, pc);
    return true;
  }
  mark(to, pc);
  emit_conditional_site(to, pc + static_cast<uint64_t>(ir::branch_offset(word)), word);
  if (pc + 4 != to.behind) {
    return false;
  }
  emit_site(to, pc + 4);
  return true;
}

// The target of an indirect branch into X0. An authenticated one is worked out in a register that
// is neither the modifier nor, while it is still needed, the branch's own.
void emit_target(Emitter& to, uint32_t word) {
  const unsigned reg = ir::branch_register(word);
  if (ir::authentication(word, 0) == 0) {
    if (reg == kStolenRegister) {
      load_field(to, 0, kStolenValue);
    } else if (reg != 0) {
      to.emit(enc::mov_reg(0, reg));
    }
    return;
  }
  unsigned work = 0;
  while ((ir::named_registers(ir::authentication(word, kAnyRegister)) >> work & 1) != 0) {
    ++work;
  }
  if (reg == kStolenRegister) {
    load_field(to, work, kStolenValue);
  } else if (reg != work) {
    to.emit(enc::mov_reg(work, reg));
  }
  uint32_t check = ir::authentication(word, work);
  if (ir::uses_reg(check, kStolenRegister)) {
    const unsigned modifier = work == 2 ? 1 : 2;
    load_field(to, modifier, kStolenValue);
    check = ir::replace_reg(check, kStolenRegister, modifier);
  }
  to.emit(check);
  if (work != 0) {
    to.emit(enc::mov_reg(0, work));
  }
}

// A register that holds the target already, and that nothing changes up to the jump.
bool holds_target(uint32_t word, bool call) {
  const unsigned reg = ir::branch_register(word);
  return ir::authentication(word, 0) == 0 && reg > 1 && reg != kStolenRegister &&
         reg != kAnyRegister && !(call && reg == kLinkRegister);
}

//          LDR  X28, =context
//          STP  X0, X1, exit slots         the target is in Xt; if it has to be brought there:
//                                          t = 2, STR X2, slot;  X0 = target;  MOV X2, X0
//          (X30 = return address)
//          search
void emit_lookup(Emitter& to, uint32_t word, uint64_t pc, bool call) {
  const bool direct = holds_target(word, call);
  const unsigned target = direct ? ir::branch_register(word) : 2;
  mark(to, pc);
  need_context(to);
  to.emit(enc::stp_x(0, 1, kStolenRegister, CTX_EXIT_X0));
  if (!direct) {
    store_field(to, target, CTX_EXIT_X2);
    emit_target(to, word);
    to.emit(enc::mov_reg(target, 0));
  }
  if (call) {
    emit_constant(to, kLinkRegister, pc + 4);
  }
  emit_search(to, target, !direct);
}

void emit_indirect(Emitter& to, uint32_t word, uint64_t pc, bool call) {
  if (to.fragment.checks || !is_predictable(word)) {
    emit_lookup(to, word, pc, call);
    return;
  }
  mark(to, pc);
  if (call) {
    emit_constant(to, kLinkRegister, pc + 4);
  }
  emit_prediction(to, ir::branch_register(word), call ? pc + 4 : 0);
}

// ---- an instruction -----------------------------------------------------------------------------

bool emit_application(Emitter& to, uint32_t word, uint64_t pc) {
  switch (ir::control_of(word)) {
  case ir::control::none:
    emit_straight(to, word, pc);
    return false;
  case ir::control::call:
    emit_constant(to, kLinkRegister, pc + 4);
    emit_site(to, pc + static_cast<uint64_t>(ir::branch_offset(word)), pc + 4);
    return true;
  case ir::control::jump:
    if (ir::is_conditional_jump(word)) {
      // To the next word: BC.AL is undefined on most processors.
      mark(to, pc);
      to.emit(ir::redirected_branch(word, 4));
    }
    emit_site(to, pc + static_cast<uint64_t>(ir::branch_offset(word)));
    return true;
  case ir::control::conditional:
    return emit_conditional(to, word, pc);
  case ir::control::jump_register:
  case ir::control::ret:
    emit_indirect(to, word, pc, false);
    return true;
  case ir::control::call_register:
    emit_indirect(to, word, pc, true);
    return true;
  case ir::control::system_call:
    mark(to, pc);
    emit_exit(to, pc + 4, ExitKind::system_call);
    return true;
  case ir::control::cache_flush:
    emit_plain(to, word, pc);
    emit_exit(to, pc + 4, ExitKind::code_changed);
    return true;
  case ir::control::exception:
    emit_plain(to, word, pc);
    return false;
  }
  return false;
}

}  // namespace

Emitter::Emitter(Context& owner, uint64_t tag, uint64_t end, bool calls)
    : cache(*owner.cache), context(reinterpret_cast<uint64_t>(&owner)),
      words(cache.words), fragment{}, behind(end), constants{} {
  words.clear();
  cache.literals.clear();
  fragment.tag = tag;
  fragment.begin = cache.cursor;
  fragment.checks = calls;
  fragment.first_exit = static_cast<uint32_t>(cache.exits.size());
  fragment.first_place = static_cast<uint32_t>(cache.places.size());
  fragment.first_call = static_cast<uint32_t>(cache.calls.size());
  fragment.first_prediction = static_cast<uint32_t>(cache.predictions.size());
  emit(enc::ldp_x(0, 1, kStolenRegister, CTX_EXIT_X0));
}

void need_context(Emitter& to) {
  if (!to.context_loaded) {
    emit_literal(to, kStolenRegister, to.context);
    to.context_loaded = true;
  }
}

void load_field(Emitter& to, unsigned reg, unsigned field) {
  need_context(to);
  to.emit(enc::ldr_x(reg, kStolenRegister, field));
}

void store_field(Emitter& to, unsigned reg, unsigned field) {
  need_context(to);
  to.emit(enc::str_x(reg, kStolenRegister, field));
}

void emit_literal(Emitter& to, unsigned reg, uint64_t value) {
  to.cache.literals.push_back({value, static_cast<uint32_t>(to.words.size())});
  to.emit(enc::ldr_x_literal(reg, 0));
}

void emit_constant(Emitter& to, unsigned reg, uint64_t value) {
  constexpr uint64_t kHalfword = 0x10000;
  if (value < kHalfword) {
    to.emit(enc::movz(reg, static_cast<unsigned>(value)));
  } else {
    emit_literal(to, reg, value);
  }
}

void mark(Emitter& to, uint64_t pc, unsigned scratch) {
  if (to.marking) {
    to.cache.places.push_back(place_of(to.words.size(), to.fragment.tag, pc, scratch));
  }
}

uint32_t add_exit(Emitter& to, uint64_t target, ExitKind kind) {
  const auto number = static_cast<uint32_t>(to.cache.exits.size());
  to.cache.exits.push_back({target, 0, 0, 0, 0, 0, 0, kind, Link::none});
  return number;
}

uint32_t emit_conditional_site(Emitter& to, uint64_t target, uint32_t branch) {
  const uint32_t number = add_exit(to, target, ExitKind::direct);
  to.cache.exits[number].site = to.offset();
  to.cache.exits[number].branch = branch;
  to.emit(0);
  return number;
}

//          LDR  X1, table                  Fragment::lookup
//          BFI  X1, Xt, #2, #bits + 2      the table is aligned to its size, and Xt to 4
//          LDP  X0, X1, [X1]               tag, code
//          SUB  X0, X0, Xt
//          CBNZ X0, miss
//          (LDR X2, slot)
//          BR   X1                         Fragment::lookup_branch; the head there loads X0 and X1
//   miss:  MOV  X0, Xt;  (LDR X2, slot)
//          B    the cache's common miss
void emit_search(Emitter& to, unsigned target, bool saved) {
  static_assert(sizeof(LookupEntry) == 16);
  to.fragment.lookup = to.offset();
  to.fragment.lookup_register = static_cast<uint8_t>(target);
  to.fragment.lookup_saved = saved;
  load_field(to, 1, CTX_LOOKUP_TABLE);
  to.emit(enc::bfi(1, target, 2, kLookupBits + 2));
  to.emit(enc::ldp_x(0, 1, 1, 0));
  to.emit(enc::sub_reg(0, 0, target));
  to.emit(enc::cbnz_x(0, saved ? 12 : 8));
  if (saved) {
    load_field(to, target, CTX_EXIT_X2);
  }
  to.fragment.lookup_branch = to.offset();
  to.emit(enc::br(1));
  to.emit(enc::mov_reg(0, target));
  if (saved) {
    load_field(to, target, CTX_EXIT_X2);
  }
  to.emit(enc::b(int64_t{to.cache.miss} - int64_t{to.offset()}));
}

void emit_exit(Emitter& to, uint64_t target, ExitKind kind) {
  if (kind == ExitKind::direct) {
    emit_site(to, target);
  } else {
    emit_stub(to, add_exit(to, target, kind));
  }
}

const instr_t* emit_plain_instructions(Emitter& to, const instr_t* instr) {
  Words& words = to.words;
  std::vector<Place>& places = to.cache.places;
  const uint64_t tag = to.fragment.tag;
  for (; instr != nullptr && instr->plain; instr = instr->next) {
    places.push_back(place_of(words.size(), tag, reinterpret_cast<uint64_t>(instr->pc)));
    words.push_back(instr->word);
  }
  return instr;
}

bool emit_instruction(Emitter& to, const instr_t& instr) {
  if (to.words.is_full()) {
    fatal("a block grew too large");
  }
  if (instr.kind == ir::kind::call) {
    emit_call(to, instr);
    return false;
  }
  if (instr.kind == ir::kind::meta) {
    need_context(to);
    to.emit(instr.word);
    return false;
  }
  to.marking = instr.kind == ir::kind::original;
  return emit_application(to, instr.word, reinterpret_cast<uint64_t>(instr.pc));
}

}  // namespace core
