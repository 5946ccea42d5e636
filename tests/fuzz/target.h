// What a fuzz target consists of, and what the targets have in common.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

extern "C" {

// Runs one input. What must hold is checked by `require`.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

// Once, before the first input.
[[gnu::weak]] int LLVMFuzzerInitialize(int* argc, char*** argv);

// After the last input, if the driver of this folder ran them: what none of them did that some
// should have done, or an empty text.
[[gnu::weak]] const char* fuzz_missed();
}

// Ends the process if the condition does not hold, which is how a target tells of a finding.
#define REQUIRE(condition)                                                                         \
  do {                                                                                             \
    if (!(condition)) {                                                                            \
      fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #condition);                      \
      abort();                                                                                     \
    }                                                                                              \
  } while (false)

// Choices taken out of an input; behind its end all are 0.
struct Input {
  const uint8_t* at;
  size_t left;

  Input(const uint8_t* data, size_t size) : at(data), left(size) {}

  bool empty() const { return left == 0; }

  template <class T> T take() {
    T value = {};
    const size_t size = left < sizeof value ? left : sizeof value;
    if (size != 0)
      memcpy(&value, at, size);
    at += size, left -= size;
    return value;
  }

  // So that it stands for a generator of random numbers.
  unsigned operator()() { return take<uint16_t>(); }
};
