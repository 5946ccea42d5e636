#include "runtime/core/dispatch.h"

#include <mutex>

#include "runtime/core/block.h"
#include "runtime/core/cache.h"
#include "runtime/core/entry.h"
#include "runtime/core/predict.h"

namespace core {
namespace {

constexpr size_t kManyChanges = 32;  // each costs a walk over all exits

// The changes of the application's code have been made: what is built from now on is right.
void forget_if_wanted(Context& context) {
  Cache& cache = *context.cache;
  if ((context.pending & kChangesPending) != 0) {
    remove_pending(context, kChangesPending);
  }
  if (cache.changes.empty()) {
    return;
  }
  if (cache.changes.size() > kManyChanges) {
    flush_cache(cache);
  }
  for (const CodeChange& change : cache.changes) {
    forget_fragments(cache, change.begin, change.end);
  }
  cache.changes.clear();
  context.last_exit = EXIT_NONE;
}

// Lets the way that led to `fragment` go there directly next time.
void remember(Context& context, const Fragment& fragment) {
  if (context.last_exit == EXIT_INDIRECT) {
    add_to_table(*context.cache, fragment);
  } else if (context.last_exit != EXIT_NONE) {
    follow_exit(context, context.last_exit, fragment);
  }
  context.last_exit = EXIT_NONE;
}

// The head of the fragment at context.pc, built if there is none yet; 0 if there is no code.
uint64_t next_fragment(Context& context) {
  Cache& cache = *context.cache;
  const std::lock_guard lock(cache.mutex);
  forget_if_wanted(context);
  const Fragment* fragment = find_fragment(cache, context.pc);
  if (fragment == nullptr) {
    fragment = build_fragment(context);
  }
  context.lookup_table = cache.table;
  if (fragment == nullptr) {
    return 0;
  }
  const uint64_t head = reinterpret_cast<uint64_t>(cache.base) + fragment->begin;
  remember(context, *fragment);
  return head;
}

// Where the application goes on behind an exit.
uint64_t target_of(const Context& context, const Exit& exit) {
  return exit.kind == ExitKind::indirect
             ? context.x[context.cache->predictions[exit.target].target_register]
             : exit.target;
}

}  // namespace

uint64_t without_tag(uint64_t address) {
  constexpr uint64_t kTag = uint64_t{0xff} << 56, kUpperHalf = uint64_t{1} << 55;
  return (address & kUpperHalf) == 0 ? address & ~kTag : address;
}

void forget_own_fragments(Context& context, uint64_t begin, uint64_t end) {
  const std::lock_guard lock(context.cache->mutex);
  forget_fragments(*context.cache, begin, end);
}

void request_forgetting(Context& other, uint64_t begin, uint64_t end) {
  {
    const std::lock_guard lock(other.cache->mutex);
    if (other.cache->changes.size() <= kManyChanges) {  // more of them empty the cache anyway
      other.cache->changes.push_back({begin, end});
    }
  }
  add_pending(other, kChangesPending);
  unlink_all(*other.cache);
  other.lookup_table = empty_lookup_table();
}

Event run(Context& context) {
  Cache& cache = *context.cache;
  for (;;) {
    if ((context.pending & ~kChangesPending) != 0) {
      context.last_exit = EXIT_NONE;
      return Event::interrupted;
    }
    context.pc = without_tag(context.pc);
    const uint64_t head = next_fragment(context);
    if (head == 0) {
      context.last_exit = EXIT_NONE;
      return Event::not_executable;
    }
    const auto number = static_cast<uint32_t>(core_enter(&context, head));
    if (number == EXIT_NONE) {
      continue;
    }
    context.last_exit = number;
    if (number == EXIT_INDIRECT) {
      continue;
    }
    const Exit& exit = cache.exits[number];
    context.pc = target_of(context, exit);
    if (exit.kind == ExitKind::system_call || exit.kind == ExitKind::code_changed) {
      context.last_exit = EXIT_NONE;
      return exit.kind == ExitKind::system_call ? Event::system_call : Event::code_changed;
    }
  }
}

}  // namespace core
