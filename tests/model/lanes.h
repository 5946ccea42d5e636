// Families of the reference model against plain loops over lanes.
//
// A check runs a model function on random operands at several vector lengths, and its row, if the
// row is the model's, through the stub. In both cases a verifier compares lane by lane with the
// definition. What lies above the vector length is junk in every operand. Through the stub the
// whole record is compared.
#pragma once

#include <array>
#include <functional>

#include "sve/model/context.h"
#include "tests/fast/fixture.h"

namespace lanes {

using fixture::Random;
__extension__ typedef __int128 Wide;  // an element as an exact integer

inline constexpr unsigned lengths[] = {2, 4, 6, 8, 32};  // of which 6 is no power of two

// Where a register number stands in the word, and of how many registers.
struct Field {
  unsigned low, count;
};

// What the families take; d is the destination with its old value. At a vector length of 128 bits
// the same stands in registers.
struct Operands {
  VecV d, n, m;
  PredV pd, pn, pm, pg;
  uint64_t xd, xn, xm;
  uint64_t imm;
  uint32_t word;  // the immediate's bits in the word
};

// An immediate and its bits in the word.
struct Immediate {
  uint64_t value;
  uint32_t word;
};

template <class E> E get(const VecV& vector, unsigned e) {
  E x;
  memcpy(&x, vector.bytes + e * sizeof(E), sizeof(E));
  return x;
}

inline bool bit(const PredV& predicate, unsigned i) {
  return (predicate.words[i / 64] >> (i % 64) & 1) != 0;
}

template <class E> bool active(const PredV& predicate, unsigned e) {
  return bit(predicate, e * sizeof(E));
}

template <class E> unsigned count(unsigned vl) { return vl * 8 / sizeof(E); }

// How a family's row is put into a word, and where its result goes.
struct Form {
  enum class Result { vector, predicate, general, scalar, none };

  std::string name;
  Result result;
  unsigned width = 8;  // of operands and of scalar results, in bytes
  bool sets_flags = false;
  bool raises = false;      // may change fpsr
  bool moderate = false;    // floating-point operands of small exponents, zeros among them
  bool predicates = false;  // n and m are predicate registers
  // Where the register numbers stand; a field of no registers is none of the form's.
  Field n{5, 32}, m{16, 32}, g{10, 8};
};

// Random operands. The immediate is made by the caller.
Operands random_operands(Random& random, const Form& form, Immediate immediate);

CpuContext random_context(Random& random, unsigned vl);

// A record and the operands that it holds, and the word that names them.
struct RowCase {
  cpu_state before;
  Operands operands;
  uint32_t word;
  unsigned d;
};
RowCase random_row_case(Random& random, const Form& form, const Row& row, Immediate immediate);

// Runs the row's stub; all of the record but the destination must be what the bridge makes of it.
// Returns the record after it.
cpu_state run_row(const RowCase& chosen, const Form& form, const Row& row);

// The context as a record has it.
CpuContext context_of(const cpu_state& state);

VecV vector_of(const uint8_t* slot);
PredV predicate_of(const uint8_t* slot);

// The row of this name if the model carries it out, or null.
const Row* model_row(std::string_view name);

// The architecture's PredTest, written out.
uint32_t flags_of(const PredV& mask, const PredV& result, unsigned width, unsigned vl);

// Names of model rows that no test of the program has executed.
std::vector<std::string> model_rows_not_executed();

// Cases at each vector length.
inline constexpr int cases = 25;

// What a model function gives; the family's form says which of the values it is.
struct Outcome {
  VecV vector;
  PredV predicate;
  uint64_t scalar;
};

inline Outcome outcome(const VecV& value) { return {value, {}, 0}; }
inline Outcome outcome(const PredV& value) { return {{}, value, 0}; }
inline Outcome outcome(uint64_t value) { return {{}, {}, value}; }

// Everything that a verifier looks at.
struct Execution {
  const Operands& operands;
  const Outcome& result;
  const CpuContext& before;
  const CpuContext& after;
  unsigned vl;
};

using MakeImmediate = std::function<Immediate(Random&)>;
using Invoke = std::function<Outcome(const Operands&, CpuContext*)>;
using Verify = std::function<void(const Execution&)>;

// Calls the function at every length and runs the row's stub, and verifies each outcome.
void check(const Form& form, const MakeImmediate& immediate, const Invoke& invoke,
           const Verify& verify);

// Fails, naming the element, unless both are equal.
void expect_element(uint64_t actual, uint64_t expected, unsigned e);

// The same for an element of a vector and an exact integer, cut to the element.
template <class E> void expect_lane(const VecV& result, unsigned e, Wide expected) {
  const uint64_t mask = fixture::width_mask(sizeof(E));
  expect_element(static_cast<uint64_t>(get<E>(result, e)) & mask,
                 static_cast<uint64_t>(expected) & mask, e);
}

inline Immediate no_immediate(Random&) { return {0, 0}; }

}  // namespace lanes
