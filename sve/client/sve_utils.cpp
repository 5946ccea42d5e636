// The decoder maps, and everything that has to exist before the first instruction is emulated.
#include "sve/client/sve_utils.h"

#include <unistd.h>

#include <algorithm>
#include <array>

#include "sve/client/dispatch.h"
#include "sve/client/statistics.h"
#include "sve/client/sve_signals.h"

// The linker's bounds of what the tables of sve/client/rows put into the section sve_rows.
extern "C" const Row __start_sve_rows[];
extern "C" const Row __stop_sve_rows[];

std::span<const Row> all_rows() { return {__start_sve_rows, __stop_sve_rows}; }

const Row* row_of_stub(decode_stub stub) {
  for (const Row& row : all_rows())
    if (row.stub == stub)
      return &row;
  return nullptr;
}

namespace {

struct MapShape {
  uint32_t mask;
  unsigned step;
};

// decoder_map_1 to decoder_map_44: from the most fixed bits to the fewest. Between maps with
// equally many, the cascade of execute_sve_instruction has an order of its own, in the steps.
// clang-format off
constexpr std::array<MapShape, decoder_maps> map_shapes = {{
    {0xffffffff,  1},  {0xfffffe1f,  2},  {0xfffffff0,  3},  {0xfffffe10,  5},
    {0xffffc21f,  4},  {0xfffffc10,  6},  {0xfffffe00,  7},  {0xffffe3c0,  8},
    {0xffe0fc1f,  9},  {0xfffffc00, 10},  {0xffffe300, 11},  {0xfffff800, 12},
    {0xffffc210, 15},  {0xffffe200, 17},  {0xfff0fe10, 14},  {0xffffe010, 16},
    {0xff3ffc00, 13},  {0xff2ffc00, 20},  {0xfff8fc00, 19},  {0xffffe000, 21},
    {0xffffc200, 18},  {0xfff0fc00, 25},  {0xffffc000, 23},  {0xffbfe000, 24},
    {0xffe0fc10, 27},  {0xff27fc00, 26},  {0xfffee000, 22},  {0xff23fc00, 28},
    {0xffe0fc00, 29},  {0xffa0fc00, 33},  {0xffe0f800, 30},  {0xff21fc00, 32},
    {0xfff0c210, 31},  {0xffe0e010, 34},  {0xffe0f000, 35},  {0xfff0e000, 36},
    {0xffe0e000, 37},  {0xfff0c000, 38},  {0xfffc0000, 39},  {0xffc0e010, 40},
    {0xffc0e000, 43},  {0xffe0c000, 41},  {0xffe02010, 42},  {0xffe08000, 44},
}};
// clang-format on

// A key holds the encoding group, so that a map without rows of a word's group cannot hold it.
static_assert(std::ranges::all_of(map_shapes, [](const MapShape& shape) {
  return encoding_group(shape.mask) == encoding_group(~0u);
}));

std::array<decoder_map, decoder_maps> build_decoder_maps() {
  std::array<decoder_map, decoder_maps> maps{};
  for (unsigned i = 0; i < decoder_maps; i++) {
    maps[i].mask = map_shapes[i].mask;
    maps[i].step = map_shapes[i].step;
  }
  for (const Row& row : all_rows())
    for (decoder_map& map : maps)
      if (map.mask == row.mask) {
        map.stubs.emplace(decoder_key(row.value, row.mask), row.stub);
        map.groups |= 1u << encoding_group(row.value);
      }
  return maps;
}

// execute_sve_instruction's cascade, as indices of maps.
constexpr std::array<uint8_t, decoder_maps> execution_order = [] {
  std::array<uint8_t, decoder_maps> order{};
  for (unsigned i = 0; i < decoder_maps; i++)
    order[map_shapes[i].step - 1] = static_cast<uint8_t>(i);
  return order;
}();

decode_stub find_in(const decoder_map& map, uint32_t word) {
  if ((map.groups >> encoding_group(word) & 1) == 0)
    return nullptr;
  const auto found = map.stubs.find(decoder_key(word, map.mask));
  return found == map.stubs.end() ? nullptr : found->second;
}

}  // namespace

// The library's one static initialiser. These objects are constructed in this order, and destroyed
// in the reverse one.
Sites icounts;
uint32_t page_size = static_cast<uint32_t>(sysconf(_SC_PAGESIZE));
static const std::array<decoder_map, decoder_maps> maps = build_decoder_maps();
[[maybe_unused]] static const int initialized = (guard_sve_stats_over_fork(), SVEInitialize());

const decoder_map& decoder_map_number(unsigned number) { return maps[number - 1]; }

decode_stub is_sve(unsigned int word) {
  if (!in_sve_space(word))
    return nullptr;
  for (const decoder_map& map : maps)
    if (const decode_stub stub = find_in(map, word))
      return stub;
  return nullptr;
}

decode_stub stub_to_execute(unsigned int word) {
  if (!in_sve_space(word))
    return nullptr;
  for (const uint8_t index : execution_order)
    if (const decode_stub stub = find_in(maps[index], word))
      return stub;
  return nullptr;
}

aarch64_decode_rc execute_sve_instruction(cpu_state* state) {
  auto* const pc = reinterpret_cast<unsigned int*>(state->pc);
  const unsigned int word = *pc;
  const decode_stub stub = stub_to_execute(word);
  if (stub == nullptr)
    return aarch64_decode_unimplemented;
  if (const aarch64_decode_rc result = stub(state, word); result != aarch64_decode_ok)
    return result;
  update_sve_stats(pc, word);
  state->pc += 4;
  return aarch64_decode_ok;
}
