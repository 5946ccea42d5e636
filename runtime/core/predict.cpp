#include "runtime/core/predict.h"

#include <algorithm>

#include "runtime/ir/decode.h"
#include "runtime/ir/encode.h"

namespace core {

namespace enc = ir::enc;

constinit bool predict_branches = true;

namespace {

constexpr unsigned kLinkRegister = 30;
constexpr unsigned kMaxLeafWords = 16;
constexpr uint64_t kNoTarget = 0;

// Offsets from the site.
constexpr uint32_t kHitAt = 8, kMissAt = 12, kHopAt = 16;

uint32_t branch(uint32_t from, uint32_t to) { return enc::b(int64_t{to} - int64_t{from}); }

// ---- leaves -------------------------------------------------------------------------------------

// Hints may sign or authenticate X30 without naming it. NOP and BTI do not.
bool may_change_link(uint32_t word) {
  const bool hint = (word & 0xfffff01f) == 0xd503201f;
  const bool harmless = word == enc::nop() || (word & 0xffffff1f) == 0xd503241f;
  return (hint && !harmless) || (ir::named_registers(word) >> kLinkRegister & 1) != 0;
}

// A copy of the leaf that goes on at `returns`: its body, 0 if there is no room.
uint32_t copy_leaf(Context& context, const Fragment leaf, uint64_t returns) {
  Emitter to(context, leaf.tag, 0, false);
  to.fragment.hidden = true;
  to.marking = true;
  const uint32_t* word = code_at(to.cache, leaf.begin + kHeadSize);
  for (unsigned i = 0; i < leaf.leaf_words; ++i) {
    mark(to, leaf.tag + uint64_t{4} * i);
    to.emit(word[i]);
  }
  emit_exit(to, returns);
  const Fragment* copy = finish(to);
  return copy != nullptr ? copy->begin + kHeadSize : 0;
}

// Where the exit enters `target`. May add a fragment and exits.
uint32_t landing(Context& context, uint32_t number, const Fragment& target) {
  Cache& cache = *context.cache;
  const uint32_t body = target.begin + kHeadSize;
  if (!wants_copy(cache, cache.exits[number], target)) {
    return body;
  }
  uint32_t copy = cache.exits[number].copy;
  if (copy == 0) {
    copy = copy_leaf(context, target, cache.exits[number].returns);
    cache.exits[number].copy = copy;
  }
  return copy != 0 ? copy : body;
}

// ---- sites --------------------------------------------------------------------------------------

void set_first(Cache& cache, Exit& exit, uint64_t target, uint32_t body) {
  Prediction& prediction = cache.predictions[exit.target];
  const uint32_t literal = prediction.literal;
  prediction.targets[prediction.count++] = target;
  exit.link = Link::site;
  CacheWriter writer(cache, exit.site, literal + sizeof target);
  uint32_t* const value = code_at(cache, literal);
  value[0] = static_cast<uint32_t>(target);
  value[1] = static_cast<uint32_t>(target >> 32);
  uint32_t& hit = *code_at(cache, exit.site + kHitAt);
  const int64_t distance = int64_t{body} - int64_t{exit.site + kHitAt};
  const bool near = ir::branch_reaches(hit, distance);  // it may lead to a forgotten body
  hit = ir::redirected_branch(hit, near ? distance : int64_t{kHopAt} - int64_t{kHitAt});
  if (!near) {
    *code_at(cache, exit.site + kHopAt) = branch(exit.site + kHopAt, body);
  }
  *code_at(cache, exit.site) = exit.branch;
}

// From X28 = `before` - Xt to `next` - Xt.
void emit_next_difference(Emitter& to, uint64_t before, uint64_t next, unsigned target) {
  constexpr int64_t kLimit = 4096;
  const auto difference = static_cast<int64_t>(next - before);
  if (difference > -kLimit && difference < kLimit) {
    to.emit(difference > 0 ? enc::add_imm(kStolenRegister, kStolenRegister, difference)
                           : enc::sub_imm(kStolenRegister, kStolenRegister, -difference));
  } else {
    emit_literal(to, kStolenRegister, next);
    to.emit(enc::sub_reg(kStolenRegister, kStolenRegister, target));
  }
}

// All targets but the first; 0 if there is no room.
uint32_t emit_chain(Context& context, const Exit exit, const Prediction prediction) {
  Emitter to(context, prediction.targets[0], 0, false);
  to.fragment.hidden = true;
  to.fragment.target_register = prediction.target_register;
  to.fragment.branched = to.offset();
  for (unsigned i = 1; i < prediction.count; ++i) {
    emit_next_difference(to, prediction.targets[i - 1], prediction.targets[i],
                         prediction.target_register);
    const uint32_t number =
        emit_conditional_site(to, prediction.targets[i], enc::cbz_x(kStolenRegister, 0));
    to.cache.exits[number].returns = exit.returns;
  }
  to.fragment.branched_end = to.offset();
  to.emit(branch(to.offset(), exit.stub));
  const Fragment* chain = finish(to);
  return chain != nullptr ? chain->branched : 0;
}

// The look-up for a target in Xt that does not know more; 0 if there is no room.
uint32_t shared_search(Context& context, unsigned target) {
  uint32_t& search = context.cache->searches[target];
  if (search != 0) {
    return search;
  }
  constexpr unsigned kSavedTarget = 2;
  const bool saved = target < kSavedTarget;  // X0 and X1 are needed
  Emitter to(context, kNoTarget, 0, false);
  to.fragment.hidden = true;
  to.fragment.target_register = static_cast<uint8_t>(target);
  to.fragment.branched = to.offset();
  need_context(to);
  to.fragment.branched_end = to.offset();
  to.emit(enc::stp_x(0, 1, kStolenRegister, CTX_EXIT_X0));
  if (saved) {
    store_field(to, kSavedTarget, CTX_EXIT_X2);
    to.emit(enc::mov_reg(kSavedTarget, target));
  }
  emit_search(to, saved ? kSavedTarget : target, saved);
  const Fragment* fragment = finish(to);
  search = fragment != nullptr ? fragment->branched : 0;
  return search;
}

// The targets are too many: the site goes to the look-up, and nothing ever links it again.
void give_up(Context& context, Exit& exit) {
  Cache& cache = *context.cache;
  const uint32_t search = shared_search(context, cache.predictions[exit.target].target_register);
  if (search != 0) {
    patch(cache, exit.site, branch(exit.site, search));
    exit.link = Link::none;
    exit.site = 0;
  }
}

bool knows(const Prediction& prediction, uint64_t target) {
  const uint64_t* const end = prediction.targets + prediction.count;
  return std::find(prediction.targets, end, target) != end;
}

// Adds a target that the site does not know.
void add_target(Context& context, uint32_t number, const Fragment& target) {
  Cache& cache = *context.cache;
  const uint64_t tag = target.tag;
  const size_t index = cache.exits[number].target;
  if (cache.predictions[index].count == 0) {
    const uint32_t body = landing(context, number, target);
    set_first(cache, cache.exits[number], tag, body);
    return;
  }
  Prediction longer = cache.predictions[index];
  longer.targets[longer.count++] = tag;
  const uint32_t chain = emit_chain(context, cache.exits[number], longer);
  if (chain != 0) {
    const uint32_t miss = cache.exits[number].site + kMissAt;
    patch(cache, miss, branch(miss, chain));
    cache.predictions[index] = longer;
  }
}

void follow_indirect(Context& context, uint32_t number, const Fragment& target) {
  Cache& cache = *context.cache;
  const Prediction& prediction = cache.predictions[cache.exits[number].target];
  if (!knows(prediction, target.tag)) {
    if (prediction.count == kMaxPredictions) {
      add_to_table(cache, target);
      give_up(context, cache.exits[number]);
      return;
    }
    add_target(context, number, target);
  }
  Exit& exit = cache.exits[number];
  if (exit.link == Link::none) {
    exit.link = Link::site;
    patch(cache, exit.site, exit.branch);
  }
}

}  // namespace

bool wants_copy(const Cache& cache, const Exit& exit, const Fragment& target) {
  if (exit.returns == 0 || target.leaf_words == 0) {
    return false;
  }
  // The first direct call gets the leaf itself: its RET knows one target.
  const Prediction& known = cache.predictions[target.first_prediction];
  const bool direct = exit.kind == ExitKind::direct && exit.branch == 0;
  return !direct || exit.copy != 0 || (known.count != 0 && known.targets[0] != exit.returns);
}

bool is_predictable(uint32_t word) {
  constexpr unsigned kFirstCallRegister = 16, kSecondCallRegister = 17;
  const unsigned target = ir::branch_register(word);
  constexpr unsigned kZeroRegister = 31;  // a field of 31 names no register that holds a target
  if (!predict_branches || ir::authentication(word, 0) != 0 || target == kStolenRegister ||
      target == kZeroRegister) {
    return false;
  }
  switch (ir::control_of(word)) {
  case ir::control::jump_register:
    return target == kFirstCallRegister || target == kSecondCallRegister;
  case ir::control::call_register:
    return target != kLinkRegister;
  default:
    return true;
  }
}

void emit_prediction(Emitter& to, unsigned target, uint64_t returns) {
  const uint32_t number = add_exit(to, to.cache.predictions.size(), ExitKind::indirect);
  Exit& exit = to.cache.exits[number];
  exit.site = to.offset();
  exit.returns = returns;
  to.cache.predictions.push_back({{}, 0, number, 0, static_cast<uint8_t>(target)});
  to.fragment.target_register = static_cast<uint8_t>(target);
  to.fragment.branched = exit.site;
  emit_literal(to, kStolenRegister, kNoTarget);
  to.emit(enc::sub_reg(kStolenRegister, kStolenRegister, target));
  to.emit(enc::cbz_x(kStolenRegister, kHopAt - kHitAt));
  to.emit(0);
  to.fragment.branched_end = to.offset();
  to.emit(0);
}

void settle_prediction(Emitter& to) {
  if (to.cache.predictions.size() == to.fragment.first_prediction) {
    return;
  }
  Prediction& prediction = to.cache.predictions.back();
  Exit& exit = to.cache.exits[prediction.exit];
  exit.branch = to.word_at(exit.site);
  prediction.literal = static_cast<uint32_t>(ir::pc_relative_target(exit.branch, exit.site));
  for (const uint32_t waiting : {0U, kMissAt, kHopAt}) {
    to.word_at(exit.site + waiting) = branch(exit.site + waiting, exit.stub);
  }
}

void find_leaf(Emitter& to) {
  const Fragment& fragment = to.fragment;
  const Cache& cache = to.cache;
  const size_t count = cache.places.size() - fragment.first_place;
  const bool returns = cache.exits.size() - fragment.first_exit == 1 &&
                       cache.predictions.size() > fragment.first_prediction &&
                       fragment.target_register == kLinkRegister;
  if (!returns || count < 2 || count > kMaxLeafWords + 1) {
    return;
  }
  for (size_t i = 0; i < count; ++i) {
    const Place& place = cache.places[fragment.first_place + i];
    const bool as_it_is = place.code_word == i + 1 && place.app_word == i;
    if (!as_it_is || place.scratch != kNoScratch ||
        (i + 1 < count && may_change_link(to.words[i + 1]))) {
      return;
    }
  }
  to.fragment.leaf_words = static_cast<uint16_t>(count - 1);
}

void forget_prediction(Cache& cache, Exit& exit, uint64_t begin, uint64_t end) {
  Prediction& prediction = cache.predictions[exit.target];
  const uint64_t *const known = prediction.targets, *const last = known + prediction.count;
  if (exit.site == 0 ||
      std::none_of(known, last, [&](uint64_t target) { return target >= begin && target < end; })) {
    return;
  }
  unlink_exit(cache, exit);
  patch(cache, exit.site + kMissAt, branch(exit.site + kMissAt, exit.stub));
  prediction.count = 0;
  exit.copy = 0;
}

void follow_exit(Context& context, uint32_t number, const Fragment& target) {
  Cache& cache = *context.cache;
  if (cache.exits[number].kind == ExitKind::indirect) {
    follow_indirect(context, number, target);
  } else {
    const uint32_t body = landing(context, number, target);
    link_exit(cache, cache.exits[number], body);
  }
}

}  // namespace core
