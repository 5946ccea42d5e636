// A thread's private code cache: fragments, their exits, and the maps back to the application.
//
//   base                                                            limit
//   | leave | miss | fragment | fragment | ...            | cursor ... |
//
//   fragment:  head    LDP X0, X1, slots   look-up and dispatcher enter here; X28 is the context
//              body    ...                 links enter here; X28 holds anything
//              site    B stub              patched to B body-of-target when linked
//              stub    LDR X28, =context; STP X0, X1; X0 = number; B leave
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "runtime/core/context.h"
#include "runtime/core/lock.h"

namespace core {

enum class ExitKind : uint8_t { direct, indirect, system_call, code_changed };

// Which word goes to the next fragment: the site; or the stub's patched one, where a conditional
// branch at the site does not reach that far.
enum class Link : uint8_t { none, site, stub };

struct Exit {
  uint64_t target;   // application address behind the exit; of an indirect one: Cache::predictions
  uint64_t returns;  // what X30 holds behind the exit, 0 if that is not known
  uint32_t site;     // offset of the word to patch, 0 if the exit is never linked
  uint32_t check;    // where the look at Context::pending begins, in front of the site; 0: none
  uint32_t stub;     // offset of the stub
  uint32_t branch;   // the word of a linked site, if it is no B: a conditional branch to anywhere,
                     // or the first word of a prediction; else 0
  uint32_t copy;     // body of the leaf's copy that this exit goes to, 0 if there is none
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

// What is known of the targets of an indirect branch; predict.h has the picture.
inline constexpr unsigned kMaxPredictions = 3;
struct Prediction {
  uint64_t targets[kMaxPredictions];
  uint32_t literal;  // offset of the first target as the code compares it
  uint32_t exit;     // number of the site's exit
  uint8_t count;
  uint8_t target_register;
};

// A value behind a fragment's instructions, and which word of the fragment loads it.
struct Literal {
  uint64_t value;
  uint32_t word;
};

// A clean call. After a fault in the callee, the words of `restore` give the registers back as they
// were in front of the application's instruction.
struct CallSite {
  uint64_t pc;
  uint32_t constants;  // the offset of what the call loads, which also tells the call
  uint32_t restore;    // index into Cache::restores
};

struct Fragment {
  uint64_t tag;
  uint32_t begin, end;
  uint32_t first_exit, first_place, first_call, first_prediction;
  // The inline look-up, 0 if there is none: where it has saved X0 and X1, and its jump.
  uint32_t lookup, lookup_branch;
  // From here to there an indirect branch has been made, but for its jump: all registers are the
  // application's, and target_register has its PC. 0 if there is none.
  uint32_t branched, branched_end;
  uint16_t exit_count, place_count, call_count;
  uint16_t leaf_words;      // of a leaf: its instructions in front of the RET, as they are; else 0
  uint8_t lookup_register;  // has the target
  uint8_t target_register;
  bool lookup_saved;  // the register is X2, and the application's is in exit_x2
  bool checks;        // the exits look at Context::pending, so that nobody need unlink them
  bool hidden;        // not found by its tag: part of the code of other fragments, or forgotten
};

// The words of a fragment under construction. There is room for the largest one and for what one
// more instruction becomes, so that a word costs no look at the room.
class Words {
public:
  void push_back(uint32_t word) { words_[size_++] = word; }
  void clear() { size_ = 0; }
  size_t size() const { return size_; }
  bool is_full() const { return size_ > kMost; }
  uint32_t* data() const { return words_.get(); }
  uint32_t& operator[](size_t index) const { return words_[index]; }

private:
  static constexpr size_t kMost = 0xffff;  // what a Place can say
  static constexpr size_t kRoom = 4096;
  std::unique_ptr<uint32_t[]> words_{new uint32_t[kMost + kRoom]};
  size_t size_ = 0;
};

// Code of the application in [begin, end) is not what it was.
struct CodeChange {
  uint64_t begin, end;
};

struct CacheTables {
  unsigned char* base;
  uint32_t size;
  uint32_t cursor;
  uint32_t forgotten;  // fragments that are in the tables still
  bool toggles;        // the host refuses writable and executable memory: switch between the two
  uint32_t leave, miss, first_fragment;
  std::vector<Fragment> fragments;  // by ascending `begin`
  std::vector<Exit> exits;
  std::vector<Place> places;
  std::vector<CallSite> calls;
  std::vector<Prediction> predictions;
  uint32_t searches[32];  // the look-up for a target in Xt, as predictions share it; 0: not yet
  // What stood behind a call in the client's list, for all calls: mostly the same. Kept over
  // flushes.
  std::vector<std::vector<uint32_t>> restores;
  std::vector<CodeChange> changes;  // by other threads, that the owner has yet to take note of
  std::vector<uint32_t> index;      // open addressing by tag: fragment number + 1, 0 if free
  LookupEntry* table;               // aligned to its size
  void* table_mapping;
  Words words;  // of the fragment under construction, and what they load
  std::vector<Literal> literals;
};

struct Cache : CacheTables {
  // Held by the owner while it changes the tables, and by another thread that unlinks. The owner
  // reads without it, and its signal handler may while code of the cache runs.
  Lock mutex;
};

// A cache's size, unless the process may not have as much memory.
inline constexpr uint32_t kCacheSize = 32U << 20, kSmallestCache = 1U << 20;
// The last bytes of the cache are kept for prepare_replay.
inline constexpr uint32_t kReplayRoom = 16384;

Cache* create_cache();
void destroy_cache(Cache* cache);
// New memory and tables in the place of some that cannot be trusted.
void renew_cache(Cache& cache);
// Where a cache cannot be both: ends the time in which it may be written.
void make_executable(const Cache& cache);
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
// The branch of an exit's site to an offset of the cache, and the word of an exit's stub that may
// become a branch.
uint32_t site_word(const Exit& exit, uint32_t target);
uint32_t stub_word();
inline constexpr uint32_t kStubPatch = 4;

// Overwrites one word of finished code.
void patch(Cache& cache, uint32_t offset, uint32_t word);
// Lets an exit go straight to the body of a fragment, or back to its stub.
void link_exit(Cache& cache, Exit& exit, uint32_t body);
void unlink_exit(Cache& cache, Exit& exit);
void unlink_exits(Cache& cache, const Fragment& fragment);
// Lets no fragment of another thread's cache go on to the next one: see request_forgetting.
void unlink_all(Cache& cache);
// Forgets the fragments of application code in [begin, end), and all ways to them. Nothing of the
// cache may be running.
void forget_fragments(Cache& cache, uint64_t begin, uint64_t end);
// Makes indirect branches find `fragment`.
void add_to_table(Cache& cache, const Fragment& fragment);

// The index of these words in `restores`.
uint32_t add_restore(Cache& cache, const std::vector<uint32_t>& words);

// Puts a call's restoring half behind everything else, with an exit to the dispatcher at its end;
// returns where it starts. For a fault inside a clean call.
uint64_t prepare_replay(Cache& cache, const CallSite& call);

}  // namespace core
