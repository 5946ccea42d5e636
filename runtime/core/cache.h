// A thread's private code cache: fragments, their exits, and the maps back to the application.
//
//   base                                                            limit
//   | leave | miss | fragment | fragment | ...            | cursor ... |
//
//   fragment:  head    LDP X0, X1, slots   look-up and dispatcher enter here
//              body    ...                 direct links enter here
//              site    B stub              patched to B body-of-target when linked
//              stub    STP X0, X1; X0 = number; B leave
#pragma once

#include <cstdint>
#include <vector>

#include "runtime/core/context.h"
#include "runtime/core/lock.h"

namespace core {

enum class ExitKind : uint8_t { direct, system_call, code_changed };

// Which word goes to the next fragment: the site; or the stub's first one, where a conditional
// branch at the site does not reach that far.
enum class Link : uint8_t { none, site, stub };

struct Exit {
  uint64_t target;  // application address behind the exit
  uint32_t site;    // offset of the branch to patch, 0 if the exit is never linked
  uint32_t check;   // where the look at Context::pending begins, just in front of the site; 0: none
  uint32_t stub;    // offset of the stub
  uint32_t branch;  // the conditional branch at the site, with any offset; 0 if it is B
  ExitKind kind;
  Link link;
};

// Where an application instruction stands in a fragment. At that place the application's value of
// the scratch register is in Context::mangle_save, and with kScratchPair that of the register
// behind it in Context::mangle_save2; kNoScratch if there is none.
struct Place {
  uint16_t code_word;  // from the fragment's beginning
  uint8_t app_word;    // from the fragment's tag
  uint8_t scratch;
};
inline constexpr uint8_t kNoScratch = 31;
inline constexpr uint8_t kScratchPair = 32;

// The head that links go past.
inline constexpr uint32_t kHeadSize = 4;

// A clean call. After a fault in the callee, the words of `restore` give the registers back as they
// were in front of the application's instruction.
struct CallSite {
  uint64_t pc;
  uint32_t return_offset;
  uint32_t restore;  // index into Cache::restores
};

struct Fragment {
  uint64_t tag;
  uint32_t begin, end;
  uint32_t first_exit, first_place, first_call;
  // The inline look-up, 0 if there is none: where it has saved X0 and X1, and its jump.
  uint32_t lookup, lookup_branch;
  uint16_t exit_count, place_count, call_count;
  uint8_t lookup_register;  // has the target
  bool lookup_saved;        // the register is X2, and the application's is in exit_x2
  bool checks;              // the exits look at Context::pending, so that nobody need unlink them
};

struct Cache {
  // Held by the owner while it changes the tables below, and by another thread that unlinks. The
  // owner reads without it, and its signal handler may while code of the cache runs.
  Lock mutex;
  unsigned char* base;
  uint32_t size;
  uint32_t cursor;
  bool toggles;  // the host refuses writable and executable memory: switch between the two
  uint32_t leave, miss, first_fragment;
  std::vector<Fragment> fragments;  // by ascending `begin`
  std::vector<Exit> exits;
  std::vector<Place> places;
  std::vector<CallSite> calls;
  // What stood behind a call in the client's list, for all calls: mostly the same. Kept over
  // flushes.
  std::vector<std::vector<uint32_t>> restores;
  std::vector<uint32_t> index;  // open addressing by tag: fragment number + 1, 0 if free
  LookupEntry* table;           // aligned to its size
  void* table_mapping;
  std::vector<uint32_t> words;  // the fragment under construction
};

inline constexpr uint32_t kCacheSize = 32U << 20;
// The last bytes of the cache are kept for prepare_replay.
inline constexpr uint32_t kReplayRoom = 16384;

Cache* create_cache();
void destroy_cache(Cache* cache);
// Forgets all fragments. Nothing of the cache may be running.
void flush_cache(Cache& cache);

// While a writer lives, the cache may be written; at its end the written range is made visible to
// instruction fetch.
class CacheWriter {
public:
  CacheWriter(Cache& cache, uint32_t begin, uint32_t end);
  ~CacheWriter();
  CacheWriter(const CacheWriter&) = delete;
  CacheWriter& operator=(const CacheWriter&) = delete;

private:
  Cache& cache_;
  uint32_t begin_, end_;
};

inline uint32_t* code_at(Cache& cache, uint32_t offset) {
  return reinterpret_cast<uint32_t*>(cache.base + offset);
}

// The fragment for an application address, or the one that holds an address of the cache; null if
// there is none.
Fragment* find_fragment(Cache& cache, uint64_t tag);
Fragment* fragment_holding(Cache& cache, uint64_t code);
void add_fragment(Cache& cache, const Fragment& fragment);
inline bool in_cache(const Cache& cache, uint64_t code) {
  return code - reinterpret_cast<uint64_t>(cache.base) < cache.size;
}

// Whether the branch of an exit's site can go to an offset of the cache.
bool site_reaches(const Exit& exit, uint32_t target);
// The branch of an exit's site to an offset of the cache, and the first word of an exit's stub.
uint32_t site_word(const Exit& exit, uint32_t target);
uint32_t stub_word();

// Lets an exit go straight to a fragment, or back to its stub.
void link_exit(Cache& cache, Exit& exit, const Fragment& target);
void unlink_exits(Cache& cache, const Fragment& fragment);
// Lets no fragment of another thread's cache go on to the next one: see request_flush.
void unlink_all(Cache& cache);
// Makes indirect branches find `fragment`.
void add_to_table(Cache& cache, const Fragment& fragment);

// The index of these words in `restores`.
uint32_t add_restore(Cache& cache, const std::vector<uint32_t>& words);

// Puts a call's restoring half behind everything else, with an exit to the dispatcher at its end;
// returns where it starts. For a fault inside a clean call.
uint64_t prepare_replay(Cache& cache, const CallSite& call);

}  // namespace core
