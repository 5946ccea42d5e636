// Small algorithms as applications have them, vectorised by the compiler where it can, and by hand
// where a loop's length depends on its data: COMPACT, BRKB, PNEXT, CLASTA, EXT and SPLICE in their
// usual places.
#include <algorithm>
#include <cstring>
#include <numeric>
#include <string>
#include <vector>

#include "kernels.h"

#ifdef __ARM_FEATURE_SVE
#include <arm_sve.h>
#endif

using kernels::Numbers;

namespace {

template <class T> void print(const char* name, const std::vector<T>& values) {
  kernels::print_line<T>(name, kernels::hash_bytes(values.data(), values.size() * sizeof(T)));
}

std::vector<uint32_t> random_words(size_t n, uint64_t seed) {
  Numbers numbers(seed);
  std::vector<uint32_t> words(n);
  for (uint32_t& word : words)
    word = numbers.any<uint32_t>();
  return words;
}

#ifdef __ARM_FEATURE_SVE

// Moves what is below the pivot to the front; returns how many those are.
size_t partition(uint32_t* values, uint32_t* spare, size_t n, uint32_t pivot) {
  size_t low = 0, high = 0;
  for (size_t i = 0; i < n; i += svcntw()) {
    const svbool_t some = svwhilelt_b32(i, n);
    const svuint32_t v = svld1(some, values + i);
    const svbool_t below = svcmplt(some, v, pivot), above = svnot_z(some, below);
    const size_t below_count = svcntp_b32(some, below), above_count = svcntp_b32(some, above);
    svst1(svwhilelt_b32(size_t{0}, below_count), values + low, svcompact(below, v));
    svst1(svwhilelt_b32(size_t{0}, above_count), spare + high, svcompact(above, v));
    low += below_count;
    high += above_count;
  }
  memcpy(values + low, spare, high * sizeof *spare);
  return low;
}

// Sums of all elements up to each.
void prefix_sums(uint32_t* values, size_t n) {
  uint32_t carry = 0;
  const svuint32_t zero = svdup_u32(0);
  for (size_t i = 0; i < n; i += svcntw()) {
    const svbool_t some = svwhilelt_b32(i, n);
    svuint32_t v = svld1(some, values + i);
    for (size_t distance = 1; distance < svcntw(); distance *= 2) {
      // Shift up by `distance` elements: the last of zero, then the first of v.
      const svbool_t tail = svrev_b32(svwhilelt_b32(size_t{0}, distance));
      v = svadd_x(svptrue_b32(), v, svsplice(tail, zero, v));
    }
    v = svadd_x(svptrue_b32(), v, carry);
    svst1(some, values + i, v);
    carry = svlastb(some, v);
  }
}

size_t search(const uint32_t* values, size_t n, uint32_t wanted) {
  for (size_t i = 0; i < n; i += svcntw()) {
    const svbool_t some = svwhilelt_b32(i, n);
    const svbool_t hits = svcmpeq(some, svld1(some, values + i), wanted);
    if (svptest_any(some, hits))
      return i + svcntp_b32(some, svbrkb_z(some, hits));
  }
  return n;
}

// One element after the other, each seeing what the one before left behind.
void chain(uint32_t* table, size_t size, const uint32_t* values, size_t n) {
  for (size_t i = 0; i < n; i += svcntw()) {
    const svbool_t some = svwhilelt_b32(i, n);
    const svuint32_t v = svld1(some, values + i);
    svbool_t one = svpfalse();
    while (one = svpnext_b32(some, one), svptest_any(some, one)) {
      const uint32_t value = svclastb(one, 0u, v);
      uint32_t& slot = table[value % size];
      slot = slot * 33 + value;
    }
  }
}

#else

size_t partition(uint32_t* values, uint32_t*, size_t n, uint32_t pivot) {
  return std::stable_partition(values, values + n, [=](uint32_t v) { return v < pivot; }) - values;
}

void prefix_sums(uint32_t* values, size_t n) { std::partial_sum(values, values + n, values); }

size_t search(const uint32_t* values, size_t n, uint32_t wanted) {
  return std::find(values, values + n, wanted) - values;
}

void chain(uint32_t* table, size_t size, const uint32_t* values, size_t n) {
  for (size_t i = 0; i < n; i++)
    table[values[i] % size] = table[values[i] % size] * 33 + values[i];
}

#endif

void quicksort(uint32_t* values, uint32_t* spare, size_t n) {
  if (n < 2)
    return;
  const uint32_t pivot = values[n / 2];
  const size_t low = partition(values, spare, n, pivot);
  quicksort(values, spare, low);
  // What equals the pivot comes first in the upper part, by one more pass.
  const size_t equal = partition(values + low, spare, n - low, pivot + 1);
  if (pivot != UINT32_MAX)
    quicksort(values + low + equal, spare, n - low - equal);
}

void sort_and_search() {
  std::vector<uint32_t> words = random_words(997, 3), spare(words.size()), sorted = words;
  quicksort(sorted.data(), spare.data(), sorted.size());
  print("sorted", sorted);
  std::vector<uint32_t> places;
  for (size_t i = 0; i < words.size(); i += 37)
    places.push_back(search(words.data(), words.size(), sorted[i]));
  places.push_back(search(words.data(), words.size(), 12345));
  print("places", places);
  prefix_sums(words.data(), words.size());
  print("prefix sums", words);
  std::vector<uint32_t> table(61);
  chain(table.data(), table.size(), words.data(), words.size());
  print("chained", table);
}

void sieve() {
  std::vector<uint8_t> composite(4000);
  for (size_t i = 2; i * i < composite.size(); i++)
    if (!composite[i])
      for (size_t k = i * i; k < composite.size(); k += i)
        composite[k] = 1;
  uint32_t primes = 0, sum = 0;
  for (size_t i = 2; i < composite.size(); i++) {
    primes += !composite[i];
    sum += composite[i] ? 0 : i;
  }
  printf("%u primes, sum %u\n", primes, sum);
}

void life() {
  constexpr int side = 40;
  static uint8_t cells[side + 2][side + 2], next[side + 2][side + 2];
  Numbers numbers(11);
  for (int y = 1; y <= side; y++)
    for (int x = 1; x <= side; x++)
      cells[y][x] = numbers.next() >> 63;
  for (int step = 0; step < 20; step++) {
    for (int y = 1; y <= side; y++)
      for (int x = 1; x <= side; x++) {
        const uint8_t around = cells[y - 1][x - 1] + cells[y - 1][x] + cells[y - 1][x + 1] +
                               cells[y][x - 1] + cells[y][x + 1] + cells[y + 1][x - 1] +
                               cells[y + 1][x] + cells[y + 1][x + 1];
        next[y][x] = around == 3 || (cells[y][x] && around == 2);
      }
    memcpy(cells, next, sizeof cells);
  }
  kernels::print_line<uint8_t>("life", kernels::hash_bytes(cells, sizeof cells));
}

void matrices() {
  constexpr int n = 21;
  static int16_t a[n][n], b[n][n];
  static int32_t c[n][n];
  Numbers numbers(5);
  for (int i = 0; i < n * n; i++) {
    a[i / n][i % n] = numbers.any<int16_t>();
    b[i / n][i % n] = numbers.any<int16_t>();
  }
  for (int i = 0; i < n; i++)
    for (int k = 0; k < n; k++)
      for (int j = 0; j < n; j++)
        c[i][j] += a[i][k] * b[k][j];
  kernels::print_line<int32_t>("matrix product", kernels::hash_bytes(c, sizeof c));
}

void checksums() {
  const std::vector<uint32_t> words = random_words(600, 17);
  // Eight streams of a CRC, one bit at a time, in step.
  uint32_t crc[8];
  std::fill(crc, crc + 8, 0xffffffffu);
  for (size_t i = 0; i < words.size() / 8; i++)
    for (int bit = 0; bit < 32; bit++)
      for (int stream = 0; stream < 8; stream++) {
        const uint32_t low = (crc[stream] ^ words[8 * i + stream] >> bit) & 1;
        crc[stream] = crc[stream] >> 1 ^ (low ? 0xedb88320u : 0);
      }
  kernels::print_line<uint32_t>("crc", kernels::hash_bytes(crc, sizeof crc));

  uint32_t adler_a = 1, adler_b = 0;
  for (size_t i = 0; i < words.size(); i++) {
    adler_a += words[i] & 0xff;
    adler_b += (words.size() - i) * (words[i] & 0xff);
  }
  printf("adler %u\n", (adler_b % 65521) << 16 | adler_a % 65521);

  uint64_t mixed = 0;
  for (const uint32_t word : words) {
    uint64_t x = word * 0x9e3779b97f4a7c15ull;
    x ^= x >> 31;
    x *= 0xbf58476d1ce4e5b9ull;
    mixed += x ^ x >> 27;
  }
  printf("mixed %016llx\n", static_cast<unsigned long long>(mixed));
}

void text() {
  std::string line = "The quick brown fox jumps over the lazy dog, 0123456789 times!";
  for (int i = 0; i < 3; i++)
    line += line;
  size_t blanks = 0;
  for (char& c : line) {
    blanks += c == ' ';
    c = c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c;
  }
  std::string digits(2 * line.size(), ' ');
  for (size_t i = 0; i < line.size(); i++) {
    const uint8_t high = static_cast<uint8_t>(line[i]) >> 4, low = line[i] & 15;
    digits[2 * i] = high < 10 ? '0' + high : 'a' + high - 10;
    digits[2 * i + 1] = low < 10 ? '0' + low : 'a' + low - 10;
  }
  printf("%s %zu\n%.120s\n", line.substr(0, 62).c_str(), blanks, digits.c_str());
}

}  // namespace

int main() {
  sort_and_search();
  sieve();
  life();
  matrices();
  checksums();
  text();
}
