#include "runtime/core/cache.h"

#include <sys/mman.h>
#include <sys/resource.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <new>
#include <utility>

#include "runtime/core/block.h"
#include "runtime/core/entry.h"
#include "runtime/core/fatal.h"
#include "runtime/core/predict.h"
#include "runtime/ir/decode.h"
#include "runtime/ir/encode.h"
#include "runtime/ir/mov_immediate.h"

namespace core {

namespace enc = ir::enc;

namespace {

constexpr size_t kTableEntries = size_t{1} << kLookupBits;
constexpr size_t kTableBytes = kTableEntries * sizeof(LookupEntry);
constexpr size_t kFirstIndexSize = 1024;

// All zero but the first entry: an entry of tag 0 could only be hit through index 0, which holds a
// tag that belongs to index 1.
constexpr uint64_t kTagOfNoFragment = 4;
LookupEntry* empty_table = nullptr;

// A table for BFI: aligned to its size, in a mapping of twice that, so that there is memory behind
// it, which the look-up of an unaligned address may touch.
LookupEntry* align_table(void* mapping) {
  const auto address = reinterpret_cast<uint64_t>(mapping);
  auto* const table =
      reinterpret_cast<LookupEntry*>((address + kTableBytes - 1) & ~(kTableBytes - 1));
  table->tag = kTagOfNoFragment;
  return table;
}

void* map_table() {
  void* const mapping = mmap(nullptr, 2 * kTableBytes, PROT_READ | PROT_WRITE,
                             MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (mapping == MAP_FAILED) {
    fatal("no memory for a look-up table");
  }
  return mapping;
}

size_t hash(uint64_t tag) { return (tag >> 2) * 0x9e3779b97f4a7c15U >> 20; }

void insert_index(Cache& cache, uint64_t tag, uint32_t number) {
  const size_t mask = cache.index.size() - 1;
  size_t slot = hash(tag) & mask;
  while (cache.index[slot] != 0) {
    slot = (slot + 1) & mask;
  }
  cache.index[slot] = number + 1;
}

void grow_index(Cache& cache) {
  cache.index.assign(cache.index.size() * 2, 0);
  for (uint32_t number = 0; number < cache.fragments.size(); ++number) {
    if (!cache.fragments[number].hidden) {
      insert_index(cache, cache.fragments[number].tag, number);
    }
  }
}

void clear_table(Cache& cache) {
  if (mmap(cache.table, kTableBytes, PROT_READ | PROT_WRITE,
           MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_FIXED, -1, 0) == MAP_FAILED) {
    fatal("no memory for the look-up table");
  }
  cache.table[0].tag = kTagOfNoFragment;
}

// The routines that all exits share: a jump to an address out of a branch's reach.
uint32_t emit_jump(Cache& cache, unsigned scratch, uint64_t target) {
  const uint32_t at = cache.cursor;
  uint32_t* code = code_at(cache, at);
  const unsigned length = ir::mov_immediate(scratch, target, code);
  code[length] = enc::br(scratch);
  cache.cursor += (length + 1) * 4;
  return at;
}

void protect(const Cache& cache, int protection) {
  if (mprotect(cache.base, cache.size, protection) != 0) {
    fatal("the host refuses executable memory for a code cache");
  }
}

// A thread's cache shall leave to the application most of what the process may have.
uint32_t wanted_size() {
  constexpr uint64_t kShare = 16;
  rlimit limit;
  const uint64_t most =
      getrlimit(RLIMIT_AS, &limit) == 0 ? std::bit_floor(limit.rlim_cur / kShare) : kCacheSize;
  return static_cast<uint32_t>(std::clamp<uint64_t>(most, kSmallestCache, kCacheSize));
}

bool map_code(Cache& cache) {
  const int flags = MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE;
  void* code = mmap(nullptr, cache.size, PROT_READ | PROT_WRITE | PROT_EXEC, flags, -1, 0);
  cache.toggles = code == MAP_FAILED && errno != ENOMEM;
  if (cache.toggles) {
    code = mmap(nullptr, cache.size, PROT_READ | PROT_WRITE, flags, -1, 0);
  }
  cache.base = static_cast<unsigned char*>(code);
  return code != MAP_FAILED;
}

}  // namespace

const LookupEntry* empty_lookup_table() { return empty_table; }

bool site_reaches(const Exit& exit, uint32_t target) {
  return exit.branch == 0 || ir::branch_reaches(exit.branch, int64_t{target} - int64_t{exit.site});
}

uint32_t site_word(const Exit& exit, uint32_t target) {
  const int64_t offset = int64_t{target} - int64_t{exit.site};
  return exit.branch != 0 ? ir::redirected_branch(exit.branch, offset) : enc::b(offset);
}

uint32_t stub_word() { return enc::stp_x(0, 1, kStolenRegister, CTX_EXIT_X0); }

void patch(Cache& cache, uint32_t offset, uint32_t word) {
  CacheWriter writer(cache, offset, offset + 4);
  // One store: a signal handler of the thread, whose own the cache is, finds the old word or the
  // new one.
  __atomic_store_n(code_at(cache, offset), word, __ATOMIC_RELAXED);
}

CacheWriter::CacheWriter(Cache& cache, uint32_t begin, uint32_t end)
    : cache_(cache), begin_(begin), end_(end) {
  if (cache.toggles) {
    protect(cache, PROT_READ | PROT_WRITE);
  }
}

CacheWriter::~CacheWriter() {
  make_executable(cache_);
  char* base = reinterpret_cast<char*>(cache_.base);
  __builtin___clear_cache(base + begin_, base + end_);
}

Cache* create_cache() {
  // The first thread comes here before there is a second one.
  if (empty_table == nullptr) {
    empty_table = align_table(map_table());
  }
  auto* cache = new Cache{};
  cache->size = wanted_size();
  while (!map_code(*cache)) {
    cache->size /= 2;
    if (cache->size < kSmallestCache) {
      fatal("no memory for a code cache");
    }
  }
  cache->table_mapping = map_table();
  cache->table = align_table(cache->table_mapping);
  cache->index.assign(kFirstIndexSize, 0);
  CacheWriter writer(*cache, 0, 64);
  cache->cursor = 16;  // an exit's site is never 0
  cache->leave = emit_jump(*cache, 1, reinterpret_cast<uint64_t>(&core_leave));
  cache->miss = emit_jump(*cache, 1, reinterpret_cast<uint64_t>(&core_leave_indirect));
  cache->first_fragment = cache->cursor;
  return cache;
}

void destroy_cache(Cache* cache) {
  munmap(cache->base, cache->size);
  munmap(cache->table_mapping, 2 * kTableBytes);
  delete cache;
}

// What the tables had is lost: they may be half changed.
void renew_cache(Cache& cache) {
  munmap(cache.base, cache.size);
  munmap(cache.table_mapping, 2 * kTableBytes);
  Cache* const fresh = create_cache();
  new (static_cast<CacheTables*>(&cache)) CacheTables(std::move(*fresh));
  delete fresh;
}

void make_executable(const Cache& cache) {
  if (cache.toggles) {
    protect(cache, PROT_READ | PROT_EXEC);
  }
}

void flush_cache(Cache& cache) {
  cache.cursor = cache.first_fragment;
  cache.forgotten = 0;
  cache.fragments.clear();
  cache.exits.clear();
  cache.places.clear();
  cache.calls.clear();
  cache.predictions.clear();
  std::fill(std::begin(cache.searches), std::end(cache.searches), 0);
  cache.index.assign(kFirstIndexSize, 0);
  clear_table(cache);
}

Fragment* find_fragment(Cache& cache, uint64_t tag) {
  const size_t mask = cache.index.size() - 1;
  for (size_t slot = hash(tag) & mask; cache.index[slot] != 0; slot = (slot + 1) & mask) {
    Fragment& fragment = cache.fragments[cache.index[slot] - 1];
    if (fragment.tag == tag && !fragment.hidden) {
      return &fragment;
    }
  }
  return nullptr;
}

Fragment* fragment_holding(Cache& cache, uint64_t code) {
  if (!in_cache(cache, code)) {
    return nullptr;
  }
  const auto offset = static_cast<uint32_t>(code - reinterpret_cast<uint64_t>(cache.base));
  auto next =
      std::upper_bound(cache.fragments.begin(), cache.fragments.end(), offset,
                       [](uint32_t at, const Fragment& fragment) { return at < fragment.begin; });
  if (next == cache.fragments.begin() || offset >= (next - 1)->end) {
    return nullptr;
  }
  return &*(next - 1);
}

void add_fragment(Cache& cache, const Fragment& fragment) {
  if (cache.fragments.size() * 2 >= cache.index.size()) {
    grow_index(cache);
  }
  cache.fragments.push_back(fragment);
  if (!fragment.hidden) {
    insert_index(cache, fragment.tag, static_cast<uint32_t>(cache.fragments.size() - 1));
  }
}

void link_exit(Cache& cache, Exit& exit, uint32_t body) {
  if (exit.site == 0 || exit.link != Link::none) {
    return;
  }
  if (site_reaches(exit, body)) {
    exit.link = Link::site;
    patch(cache, exit.site, site_word(exit, body));
  } else {
    const uint32_t at = exit.stub + kStubPatch;
    exit.link = Link::stub;
    patch(cache, at, enc::b(int64_t{body} - int64_t{at}));
  }
}

void unlink_exit(Cache& cache, Exit& exit) {
  if (exit.link == Link::site) {
    const bool predicts = exit.kind == ExitKind::indirect;
    patch(cache, exit.site,
          predicts ? enc::b(int64_t{exit.stub} - int64_t{exit.site}) : site_word(exit, exit.stub));
  } else if (exit.link == Link::stub) {
    patch(cache, exit.stub + kStubPatch, stub_word());
  }
  exit.link = Link::none;
}

void unlink_exits(Cache& cache, const Fragment& fragment) {
  for (uint32_t number = 0; number < fragment.exit_count; ++number) {
    unlink_exit(cache, cache.exits[fragment.first_exit + number]);
  }
}

void unlink_all(Cache& cache) {
  const std::lock_guard lock(cache.mutex);
  for (Exit& exit : cache.exits) {
    unlink_exit(cache, exit);
  }
}

void forget_fragments(Cache& cache, uint64_t begin, uint64_t end) {
  constexpr uint64_t kMostBefore = (kMaxBlockInstructions - 1) * 4;
  const uint64_t first = begin - std::min(begin, kMostBefore);
  const auto is_gone = [&](uint64_t tag) { return tag >= first && tag < end; };
  for (Exit& exit : cache.exits) {
    if (exit.kind == ExitKind::indirect) {
      forget_prediction(cache, exit, first, end);
    } else if (is_gone(exit.target)) {
      unlink_exit(cache, exit);
      exit.copy = 0;
    }
  }
  for (Fragment& fragment : cache.fragments) {
    LookupEntry& entry = cache.table[(fragment.tag >> 2) & (kTableEntries - 1)];
    if (is_gone(fragment.tag) && entry.tag == fragment.tag) {
      entry = {&entry == cache.table ? kTagOfNoFragment : 0, 0};
    }
    if (!fragment.hidden && is_gone(fragment.tag)) {
      fragment.hidden = true;
      ++cache.forgotten;
    }
  }
  // What is dead makes the tables longer.
  if (cache.forgotten > kFirstIndexSize && cache.forgotten > cache.fragments.size() / 3) {
    flush_cache(cache);
  }
}

void add_to_table(Cache& cache, const Fragment& fragment) {
  LookupEntry& entry = cache.table[(fragment.tag >> 2) & (kTableEntries - 1)];
  entry = {fragment.tag, reinterpret_cast<uint64_t>(cache.base) + fragment.begin};
}

uint32_t add_restore(Cache& cache, const std::vector<uint32_t>& words) {
  constexpr size_t kExitWords = 16;
  const auto known = std::find(cache.restores.begin(), cache.restores.end(), words);
  const auto index = static_cast<uint32_t>(known - cache.restores.begin());
  if (known == cache.restores.end()) {
    if (words.size() + kExitWords > kReplayRoom / 4) {
      fatal("the code behind a call is too long");
    }
    cache.restores.push_back(words);
  }
  return index;
}

uint64_t prepare_replay(Cache& cache, const CallSite& call) {
  const std::vector<uint32_t>& words = cache.restores[call.restore];
  const uint32_t start = cache.size - kReplayRoom;
  CacheWriter writer(cache, start, cache.size);
  uint32_t* code = code_at(cache, start);
  uint32_t* end = std::copy(words.begin(), words.end(), code);
  *end++ = stub_word();
  end += ir::mov_immediate(0, EXIT_NONE, end);
  *end = enc::b(int64_t{cache.leave} - (reinterpret_cast<unsigned char*>(end) - cache.base));
  return reinterpret_cast<uint64_t>(code);
}

}  // namespace core
