#include "tests/model/lanes.h"

namespace lanes {

namespace {

constexpr uint32_t fpsr_bits = 0x0800009f;

// Of a small exponent, so that even a fused operation on half precision is exact in double.
uint64_t moderate_fp(Random& random, unsigned width) {
  const unsigned fraction_bits = width == 2 ? 10 : width == 4 ? 23 : 52;
  const uint64_t bias = (1ull << (8 * width - 2 - fraction_bits)) - 1;
  const uint64_t sign = random() % 2 << (8 * width - 1);
  if (random() % 16 == 0)
    return sign;
  const uint64_t fraction = random() % 4 == 0 ? 0 : random() & ((1ull << fraction_bits) - 1);
  return sign | (bias - 4 + random() % 9) << fraction_bits | fraction;
}

void fill(Random& random, uint8_t* bytes, size_t size, const Form& form) {
  const unsigned width = form.width;
  for (size_t i = 0; i < size; i += width) {
    const uint64_t value =
        form.moderate ? moderate_fp(random, width) : fixture::interesting_value(random, width);
    memcpy(bytes + i, &value, width);
  }
}

VecV random_vector(Random& random, const Form& form) {
  VecV value;
  fill(random, value.bytes, sizeof value.bytes, form);
  return value;
}

PredV random_predicate(Random& random) {
  PredV value;
  const uint64_t style = random() % 4;  // none, all, few, any
  for (uint64_t& word : value.words)
    word = style == 0   ? 0
           : style == 1 ? ~0ull
           : style == 2 ? random() & random() & random()
                        : random();
  return value;
}

uint64_t random_scalar(Random& random) {
  return fixture::interesting_value(random, random() % 2 == 0 ? 8 : 4) +
         (random() % 3 == 0 ? random() << 32 : 0);
}

uint64_t general(const cpu_state& state, unsigned i) { return i == 31 ? 0 : state.x[i]; }

}  // namespace

Operands random_operands(Random& random, const Form& form, Immediate immediate) {
  return {random_vector(random, form),
          random_vector(random, form),
          random_vector(random, form),
          random_predicate(random),
          random_predicate(random),
          random_predicate(random),
          random_predicate(random),
          random_scalar(random),
          random_scalar(random),
          random_scalar(random),
          immediate.value,
          immediate.word};
}

CpuContext random_context(Random& random, unsigned vl) {
  return {static_cast<uint32_t>(random()), static_cast<uint32_t>(random()) & fpsr_bits, 0, vl,
          random_predicate(random)};
}

CpuContext context_of(const cpu_state& state) {
  return {static_cast<uint32_t>(state.nzcv), state.fpsr, state.fpcr | state.fz16, 2,
          predicate_of(state.ffr)};
}

VecV vector_of(const uint8_t* slot) {
  VecV value = {};
  memcpy(value.bytes, slot, vector_bytes);
  return value;
}

PredV predicate_of(const uint8_t* slot) {
  PredV value = {};
  for (unsigned i = 0; i < vector_bytes; i++)
    value.words[0] |= static_cast<uint64_t>(slot[i] & 1) << i;
  return value;
}

const Row* model_row(std::string_view name) {
  for (const Row& row : all_rows())
    if (name == row.name)
      return row.tier == Tier::model ? &row : nullptr;
  throw std::runtime_error("no row " + std::string(name));
}

RowCase random_row_case(Random& random, const Form& form, const Row& row, Immediate immediate) {
  RowCase chosen;
  cpu_state& state = chosen.before;
  state = fixture::random_state(random);
  state.fpsr &= fpsr_bits;
  state.fpcr = 0;
  state.fz16 = form.raises ? 0 : state.fz16;
  for (auto& slot : state.z)
    fill(random, slot, vector_bytes, form);
  for (uint64_t& x : state.x)
    x = random_scalar(random);
  const auto number = [&](Field field, bool predicate) {
    const unsigned registers = predicate ? std::min(field.count, p_registers) : field.count;
    return registers == 0 ? 0 : static_cast<unsigned>(random() % registers);
  };
  const unsigned d = form.result == Form::Result::none
                         ? 0
                         : number({0, z_registers}, form.result == Form::Result::predicate);
  const unsigned nn = number(form.n, form.predicates), mm = number(form.m, form.predicates),
                 gg = number(form.g, true);
  chosen.d = d;
  chosen.word =
      row.value | d | nn << form.n.low | mm << form.m.low | gg << form.g.low | immediate.word;
  chosen.operands = {vector_of(state.z[d]),
                     vector_of(state.z[nn]),
                     vector_of(state.z[mm]),
                     predicate_of(state.p[d % p_registers]),
                     predicate_of(state.p[nn % p_registers]),
                     predicate_of(state.p[mm % p_registers]),
                     predicate_of(state.p[gg]),
                     general(state, d),
                     general(state, nn),
                     general(state, mm),
                     immediate.value,
                     immediate.word};
  return chosen;
}

cpu_state run_row(const RowCase& chosen, const Form& form, const Row& row) {
  cpu_state state = chosen.before;
  fixture::execute(state, row, chosen.word);
  cpu_state expected = chosen.before;
  expected.fpcr |= expected.fz16;
  for (uint8_t& byte : expected.ffr)
    byte &= 1;
  expected.nzcv = form.sets_flags ? state.nzcv : expected.nzcv & 0xffffffff;
  EXPECT_EQ(state.nzcv >> 32, 0u);
  if (form.raises)
    expected.fpsr = state.fpsr;
  switch (form.result) {
  case Form::Result::vector:
    memcpy(expected.z[chosen.d], state.z[chosen.d], vector_bytes);
    break;
  case Form::Result::scalar:
    memset(expected.z[chosen.d], 0, vector_bytes);
    memcpy(expected.z[chosen.d], state.z[chosen.d], form.width);
    break;
  case Form::Result::predicate:
    for (unsigned i = 0; i < vector_bytes; i++)
      expected.p[chosen.d][i] = state.p[chosen.d][i] & 1;
    break;
  case Form::Result::general:
    if (chosen.d != 31)
      expected.x[chosen.d] = state.x[chosen.d];
    break;
  case Form::Result::none:
    break;
  }
  if (memcmp(&expected, &state, sizeof state) != 0) {
    const testing::ScopedTrace trace(__FILE__, __LINE__, fixture::hex(chosen.word));
    fixture::expect_same(expected, state);
  }
  return state;
}

uint32_t flags_of(const PredV& mask, const PredV& result, unsigned width, unsigned vl) {
  bool any = false, first = false, last = false, seen = false;
  for (unsigned i = 0; i < vl * 8; i += width)
    if (bit(mask, i)) {
      last = bit(result, i);
      if (!seen)
        first = last;
      seen = true;
      any = any || last;
    }
  return (first ? 1u << 31 : 0) | (any ? 0 : 1u << 30) | (last ? 0 : 1u << 29);
}

namespace {

void check_function(const Form& form, Random& random, unsigned vl, const MakeImmediate& immediate,
                    const Invoke& invoke, const Verify& verify) {
  const Operands operands = random_operands(random, form, immediate(random));
  const CpuContext before = random_context(random, vl);
  CpuContext after = before;
  const Outcome result = invoke(operands, &after);
  verify({operands, result, before, after, vl});
  if (!form.sets_flags) {
    EXPECT_EQ(after.nzcv, before.nzcv);
  }
  EXPECT_EQ(after.nzcv & 0x0fffffff, before.nzcv & 0x0fffffff);
  if (!form.raises) {
    EXPECT_EQ(after.fpsr, before.fpsr);
  }
  EXPECT_EQ(after.fpcr, before.fpcr);
  EXPECT_EQ(0, memcmp(&after.ffr, &before.ffr, sizeof after.ffr));
}

void check_row(const Form& form, Random& random, const Row& row, const MakeImmediate& immediate,
               const Verify& verify) {
  const RowCase chosen = random_row_case(random, form, row, immediate(random));
  const cpu_state state = run_row(chosen, form, row);
  if (form.result == Form::Result::general && chosen.d == 31)
    return;  // dropped, which run_row has seen to
  const testing::ScopedTrace word(__FILE__, __LINE__, fixture::hex(chosen.word));
  const Outcome result = {
      vector_of(state.z[chosen.d]), predicate_of(state.p[chosen.d % p_registers]),
      form.result == Form::Result::general ? state.x[chosen.d]
                                           : fixture::lane(state.z[chosen.d], 8, 0)};
  verify({chosen.operands, result, context_of(chosen.before), context_of(state), 2});
}

}  // namespace

void check(const Form& form, const MakeImmediate& immediate, const Invoke& invoke,
           const Verify& verify) {
  Random random(std::hash<std::string>{}(form.name));
  const testing::ScopedTrace trace(__FILE__, __LINE__, form.name);
  for (const unsigned vl : lengths)
    for (int i = 0; i < cases && !testing::Test::HasFailure(); i++)
      check_function(form, random, vl, immediate, invoke, verify);
  if (const Row* const row = model_row(form.name))
    for (int i = 0; i < cases && !testing::Test::HasFailure(); i++)
      check_row(form, random, *row, immediate, verify);
}

void expect_element(uint64_t actual, uint64_t expected, unsigned e) {
  if (actual != expected)
    ADD_FAILURE() << "element " << e << " is " << fixture::hex(actual) << ", not "
                  << fixture::hex(expected);
}

std::vector<std::string> model_rows_not_executed() {
  std::vector<std::string> names;
  for (const Row& row : all_rows())
    if (row.tier == Tier::model && !fixture::executed_rows().contains(row.name))
      names.push_back(row.name);
  return names;
}

}  // namespace lanes
