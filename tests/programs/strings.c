// String functions with first-fault and non-fault loads, on strings that end right before a page
// that cannot be read. Families: LDFF1 contiguous and gather, LDNF1, SETFFR, RDFFR with flags,
// BRKA, BRKB, INCP, CNTP, compares.
#define _GNU_SOURCE
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

enum { LONGEST = 70 };

#ifdef __ARM_FEATURE_SVE
#include <arm_sve.h>

static size_t length(const char* s) {
  size_t n = 0;
  for (;;) {
    svsetffr();
    const svuint8_t text = svldff1(svptrue_b8(), (const uint8_t*)s + n);
    const svbool_t read = svrdffr();
    const svbool_t ends = svcmpeq(read, text, 0);
    if (svptest_any(read, ends))
      return n + svcntp_b8(read, svbrkb_z(read, ends));
    n += svcntp_b8(read, read);
  }
}

static int compare(const char* a, const char* b) {
  for (size_t n = 0;;) {
    svsetffr();
    const svuint8_t x = svldff1(svptrue_b8(), (const uint8_t*)a + n);
    const svuint8_t y = svldff1(svptrue_b8(), (const uint8_t*)b + n);
    const svbool_t read = svrdffr();
    const svbool_t stops = svorr_z(read, svcmpne(read, x, y), svcmpeq(read, x, 0));
    if (svptest_any(read, stops)) {
      const svbool_t before = svbrkb_z(read, stops);
      const int p = svlasta(before, x), q = svlasta(before, y);
      return (p > q) - (p < q);
    }
    n += svcntp_b8(read, read);
  }
}

// Non-fault loads: what they cannot read, plain loads read one by one.
static long find(const char* s, size_t size, char wanted) {
  for (size_t i = 0; i < size;) {
    svsetffr();
    const svbool_t some = svwhilelt_b8(i, size);
    const svuint8_t text = svldnf1(some, (const uint8_t*)s + i);
    const svbool_t read = svrdffr_z(some);
    const svbool_t hits = svcmpeq(read, text, (uint8_t)wanted);
    if (svptest_any(read, hits))
      return i + svcntp_b8(read, svbrkb_z(read, hits));
    const size_t step = svcntp_b8(read, read);
    if (step == 0 && s[i] == wanted)
      return i;
    i += step == 0 ? 1 : step;
  }
  return -1;
}

// Elements that the type widens, first-fault.
static uint64_t sum_to_zero(const uint8_t* s) {
  uint64_t sum = 0;
  for (size_t n = 0;;) {
    svsetffr();
    const svuint32_t values = svldff1ub_u32(svptrue_b32(), s + n);
    const svbool_t read = svrdffr();
    const svbool_t zero = svcmpeq(read, values, 0);
    const svbool_t before = svbrkb_z(read, zero);
    sum += svaddv(svand_z(svptrue_b32(), before, read), values);
    if (svptest_any(read, zero))
      return sum;
    n += svcntp_b32(read, read);
  }
}

// A gather through pointers, the last of which point nowhere: how many can be read.
static uint64_t readable(const uint64_t* const* pointers, size_t n, uint64_t* sum) {
  uint64_t count = 0;
  for (size_t i = 0; i < n; i += svcntd()) {
    const svbool_t some = svwhilelt_b64(i, n);
    const svuint64_t addresses = svld1(some, (const uint64_t*)(pointers + i));
    svsetffr();
    const svuint64_t values = svldff1_gather_u64(some, addresses);
    const svbool_t read = svrdffr_z(some);
    *sum += svaddv(read, values);
    count += svcntp_b64(read, read);
    if (svcntp_b64(some, read) != svcntp_b64(some, some))
      break;
  }
  return count;
}

#else

static size_t length(const char* s) { return strlen(s); }

static int compare(const char* a, const char* b) {
  const int order = strcmp(a, b);
  return (order > 0) - (order < 0);
}

static long find(const char* s, size_t size, char wanted) {
  const char* place = memchr(s, wanted, size);
  return place ? place - s : -1;
}

static uint64_t sum_to_zero(const uint8_t* s) {
  uint64_t sum = 0;
  while (*s != 0)
    sum += *s++;
  return sum;
}

static uint64_t readable(const uint64_t* const* pointers, size_t n, uint64_t* sum) {
  uint64_t count = 0;
  while (count < n && pointers[count] > (const uint64_t*)4096)
    *sum += *pointers[count++];
  return count;
}

#endif

// The first byte behind a readable page; the page there cannot be read.
static char* page_end(void) {
  const long page = sysconf(_SC_PAGESIZE);
  char* pages = mmap(NULL, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (pages == MAP_FAILED || mprotect(pages + page, page, PROT_NONE) != 0)
    _exit(2);
  return pages + page;
}

int main(void) {
  char* const end = page_end();
  char* const other_end = page_end();
  long lengths = 0, sums = 0, places = 0;
  for (int n = 0; n <= LONGEST; n++) {
    char* const s = end - n - 1;
    for (int i = 0; i < n; i++)
      s[i] = (char)(1 + (i * 7 + n) % 250);
    s[n] = 0;
    lengths = lengths * 3 + (long)length(s);
    sums = sums * 3 + (long)sum_to_zero((uint8_t*)s);
    for (int wanted = 0; wanted < 256; wanted += 5)
      places = places * 3 + find(s, n + 1, (char)wanted);
  }
  printf("lengths %lx, sums %lx, places %lx\n", lengths, sums, places);

  long orders = 0;
  for (int n = 0; n <= LONGEST; n++)
    for (int change = 0; change <= n + 1; change += 3) {
      char* const a = end - n - 1;
      char* const b = other_end - n - 1;
      memset(a, 'x', n);
      a[n] = 0;
      memcpy(b, a, n + 1);
      if (change < n)
        b[change] = (char)(change & 1 ? 'w' : '\xfe');
      orders = orders * 5 + compare(a, b) + 2 * compare(b, a);
    }
  printf("orders %lx\n", orders);

  static uint64_t values[16];
  const uint64_t* pointers[16];
  // An odd number: the first element of a vector must be readable.
  for (int good = 1; good <= 15; good += 2) {
    for (int i = 0; i < 16; i++) {
      values[i] = 1000 + i * i;
      pointers[i] = i < good ? &values[15 - i] : (const uint64_t*)8;
    }
    uint64_t sum = 0;
    const uint64_t count = readable(pointers, 16, &sum);
    printf("%d good pointers: %llu read, sum %llu\n", good, (unsigned long long)count,
           (unsigned long long)sum);
  }
  return 0;
}
