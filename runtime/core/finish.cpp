// The end of a fragment: the stubs of its exits and the constants, behind all instructions.
#include <cstring>

#include "runtime/core/emit.h"
#include "runtime/core/predict.h"
#include "runtime/ir/decode.h"
#include "runtime/ir/encode.h"

namespace core {

namespace enc = ir::enc;

namespace {

// A target that is there already is linked from the beginning, which saves the patch.
void set_site(Emitter& to, Exit& exit) {
  const bool own = exit.target == to.fragment.tag && !to.fragment.hidden;
  const Fragment* target = own ? &to.fragment : find_fragment(to.cache, exit.target);
  const bool linked = target != nullptr && !wants_copy(to.cache, exit, *target) &&
                      site_reaches(exit, target->begin + kHeadSize);
  exit.link = linked ? Link::site : Link::none;
  to.word_at(exit.site) = site_word(exit, linked ? target->begin + kHeadSize : exit.stub);
}

void emit_stubs(Emitter& to) {
  const auto count = static_cast<uint32_t>(to.cache.exits.size());
  for (uint32_t number = to.fragment.first_exit; number < count; ++number) {
    if (to.cache.exits[number].stub == 0) {
      emit_stub(to, number);
    }
  }
}

void emit_doubleword(Emitter& to, uint64_t value) {
  to.emit(static_cast<uint32_t>(value));
  to.emit(static_cast<uint32_t>(value >> 32));
}

int64_t distance(uint32_t from, size_t to) {
  return int64_t{4} * (static_cast<int64_t>(to) - int64_t{from});
}

void emit_call_constants(Emitter& to) {
  CallSite* site = to.cache.calls.data() + to.fragment.first_call;
  for (const CallConstants& use : to.constants) {
    (site++)->constants = to.offset();
    uint32_t& word = to.words[use.word];
    word = enc::adr(ir::field_t(word), distance(use.word, to.words.size()));
    for (const uint64_t argument : use.call->arguments) {
      emit_doubleword(to, argument);
    }
    emit_doubleword(to, reinterpret_cast<uint64_t>(use.call->callee));
  }
}

void align(Emitter& to) {
  constexpr uint32_t kAlignment = 8;
  if (to.offset() % kAlignment != 0) {
    to.emit(enc::nop());
  }
}

// In front of the stubs, which all load it.
void emit_context_address(Emitter& to) {
  align(to);
  to.context_word = static_cast<uint32_t>(to.words.size());
  emit_doubleword(to, to.context);
}

void emit_literals(Emitter& to) {
  const Literal* last = nullptr;  // inserted code asks for the same constant again and again
  size_t last_place = 0;
  for (const Literal& use : to.cache.literals) {
    const bool context = use.value == to.context,
               again = last != nullptr && use.value == last->value;
    const size_t place = context ? to.context_word : again ? last_place : to.words.size();
    if (!context && !again) {
      emit_doubleword(to, use.value);
      last = &use, last_place = place;
    }
    uint32_t& word = to.words[use.word];
    word = enc::ldr_x_literal(ir::field_t(word), distance(use.word, place));
  }
}

}  // namespace

//   LDR X28, =context;  STP X0, X1, exit slots;  X0 = number;  B leave
void emit_stub(Emitter& to, uint32_t number) {
  Exit& exit = to.cache.exits[number];
  exit.stub = to.offset();
  if (exit.site != 0 && exit.kind == ExitKind::direct) {
    set_site(to, exit);
  }
  if (exit.check != 0) {
    const uint32_t branch = exit.check + 4;
    to.word_at(branch) = enc::cbnz_x(kStolenRegister, int64_t{exit.stub} - int64_t{branch});
  }
  if (to.context_word != 0) {
    const auto word = static_cast<uint32_t>(to.words.size());
    to.emit(enc::ldr_x_literal(kStolenRegister, distance(word, to.context_word)));
  } else {
    emit_literal(to, kStolenRegister, to.context);
  }
  to.emit(stub_word());
  emit_constant(to, 0, number);
  to.emit(enc::b(int64_t{to.cache.leave} - int64_t{to.offset()}));
}

Fragment* finish(Emitter& to) {
  Cache& cache = to.cache;
  Fragment& fragment = to.fragment;
  emit_context_address(to);
  emit_stubs(to);
  align(to);
  emit_call_constants(to);
  emit_literals(to);
  settle_prediction(to);
  fragment.end = to.offset();
  fragment.exit_count = static_cast<uint16_t>(cache.exits.size() - fragment.first_exit);
  fragment.place_count = static_cast<uint16_t>(cache.places.size() - fragment.first_place);
  fragment.call_count = static_cast<uint16_t>(cache.calls.size() - fragment.first_call);
  if (fragment.end > cache.size - kReplayRoom) {
    forget(cache, fragment);
    return nullptr;
  }
  CacheWriter writer(cache, fragment.begin, fragment.end);
  std::memcpy(code_at(cache, fragment.begin), to.words.data(), to.words.size() * 4);
  cache.cursor = fragment.end;
  add_fragment(cache, fragment);
  return &cache.fragments.back();
}

void forget(Cache& cache, const Fragment& fragment) {
  cache.exits.resize(fragment.first_exit);
  cache.places.resize(fragment.first_place);
  cache.calls.resize(fragment.first_call);
  cache.predictions.resize(fragment.first_prediction);
}

}  // namespace core
