#include "runtime/core/decoded.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <mutex>
#include <new>
#include <vector>

#include "runtime/core/entry.h"
#include "runtime/core/lock.h"

namespace core {
namespace {

constexpr uint64_t kPageSize = 4096;
constexpr unsigned kPageWords = kPageSize / 4, kPart = 64;

struct DecodedPage {
  uint64_t address;
  uint64_t known[kPageWords / kPart];  // a bit for each word that was decoded
  bool ambiguous;                      // there were fragments of different words at one address
  uint32_t words[kPageWords];

  bool is_empty() const {
    return std::all_of(std::begin(known), std::end(known), [](uint64_t bits) { return bits == 0; });
  }
  bool is_known(unsigned at) const { return (known[at / kPart] >> at % kPart & 1) != 0; }
  // Words that share a part of `known`.
  void note(unsigned at, const uint32_t* from, unsigned number) {
    uint64_t& part = known[at / kPart];
    const uint64_t bits = ~uint64_t{0} >> (kPart - number) << at % kPart;
    for (unsigned i = 0; (part & bits) != 0 && i < number; ++i) {
      ambiguous = ambiguous || (is_known(at + i) && words[at + i] != from[i]);
    }
    part |= bits;
    std::memcpy(words + at, from, number * sizeof *from);
  }
};

// By address: the place of a page is the first free one from its number on.
struct DecodedPages {
  std::vector<DecodedPage*> places;
  size_t count = 0;

  DecodedPage*& place(uint64_t address) {
    size_t at = address / kPageSize;
    while (places[at % places.size()] != nullptr &&
           places[at % places.size()]->address != address) {
      ++at;
    }
    return places[at % places.size()];
  }
  DecodedPage* find(uint64_t address) { return count == 0 ? nullptr : place(address); }
  DecodedPage& get(uint64_t address);
  void grow();
};

// Places for those pages that still have words.
void DecodedPages::grow() {
  constexpr size_t kFirstSize = 64;
  const auto live = static_cast<size_t>(std::ranges::count_if(
      places, [](const DecodedPage* page) { return page != nullptr && !page->is_empty(); }));
  std::vector<DecodedPage*> old(std::max(kFirstSize, live * 4));
  old.swap(places);
  for (DecodedPage* page : old) {
    if (page != nullptr && page->is_empty()) {
      delete page;
      --count;
    } else if (page != nullptr) {
      place(page->address) = page;
    }
  }
}

DecodedPage& DecodedPages::get(uint64_t address) {
  if (places.size() <= count * 2) {
    grow();
  }
  DecodedPage*& page = place(address);
  if (page == nullptr) {
    page = new DecodedPage;
    page->address = address, page->ambiguous = false;
    std::fill(std::begin(page->known), std::end(page->known), 0);
    ++count;
  }
  return *page;
}

constinit DecodedPages decoded;

}  // namespace

constinit Lock decoded_mutex;

namespace {

bool holds(uint64_t address, uint32_t word) {
  uint32_t now;
  return core_copy(&now, reinterpret_cast<const void*>(address), sizeof now) == 0 && now == word;
}

// Calls what(page, word's number in it) for each known word of [begin, end).
template <class What> void each_known(uint64_t begin, uint64_t end, const What& what) {
  const auto in_page = [&](DecodedPage& page) {
    const uint64_t first = std::max(begin, page.address) & ~uint64_t{3};
    const uint64_t last = std::min(end, page.address + kPageSize);
    for (uint64_t at = first; at < last; at += 4) {
      const auto number = static_cast<unsigned>((at - page.address) / 4);
      if (page.is_known(number)) {
        what(page, number);
      }
    }
  };
  const uint64_t first = begin & ~(kPageSize - 1);
  if ((end - first) / kPageSize < decoded.places.size()) {
    for (uint64_t at = first; at < end; at += kPageSize) {
      if (DecodedPage* page = decoded.find(at)) {
        in_page(*page);
      }
    }
  } else {
    for (DecodedPage* page : decoded.places) {
      if (page != nullptr && page->address >= first && page->address < end) {
        in_page(*page);
      }
    }
  }
}

// If there is a known word of [begin, end), or one that is another now: forgets all of them.
bool forget(uint64_t begin, uint64_t end, bool only_rewritten) {
  const std::lock_guard lock(decoded_mutex);
  bool found = false;
  each_known(begin, end, [&](const DecodedPage& page, unsigned at) {
    found = found || !only_rewritten || page.ambiguous ||
            !holds(page.address + uint64_t{at} * 4, page.words[at]);
  });
  if (found) {
    each_known(begin, end, [](DecodedPage& page, unsigned at) {
      page.known[at / kPart] &= ~(uint64_t{1} << at % kPart);
      page.ambiguous = page.ambiguous && !page.is_empty();
    });
  }
  return found;
}

}  // namespace

void note_decoded(uint64_t pc, const uint32_t* words, unsigned count) {
  const std::lock_guard lock(decoded_mutex);
  while (count != 0) {
    const auto at = static_cast<unsigned>(pc % kPageSize / 4);
    const unsigned number = std::min(count, kPart - at % kPart);
    decoded.get(pc & ~(kPageSize - 1)).note(at, words, number);
    words += number, pc += number * 4, count -= number;
  }
}

bool forget_decoded(uint64_t begin, uint64_t end) { return forget(begin, end, false); }
bool forget_rewritten(uint64_t begin, uint64_t end) { return forget(begin, end, true); }

void abandon_decoded() { new (&decoded) DecodedPages; }

}  // namespace core
