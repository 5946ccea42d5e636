// The rows, the decoder maps that they fill, and the cascades that find them.
#include "sve/decode/dispatch.h"

#include <algorithm>
#include <array>
#include <bit>

// The linker's bounds of what the tables of sve/decode/rows put into the section sve_rows.
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

// A row's value holds the encoding group, so that a map without rows of a word's group cannot hold
// the word.
static_assert(std::ranges::all_of(decoder_maps, [](const decoder_map& map) {
  return encoding_group(map.mask) == encoding_group(~0u);
}));

// execute_sve_instruction's cascade, as indices of maps.
constexpr std::array<uint8_t, decoder_map_count> execution_order = [] {
  std::array<uint8_t, decoder_map_count> order{};
  for (unsigned i = 0; i < decoder_map_count; i++)
    order[decoder_maps[i].step - 1] = static_cast<uint8_t>(i);
  return order;
}();

constexpr uint64_t map_bit(unsigned index) { return uint64_t{1} << index; }

// The maps' rows by value: no two rows have a value in common, since they have no word in common,
// so one table in open addressing serves all maps. Each start of a process fills it again.
struct RowTable {
  static constexpr unsigned slot_bits = 12;
  std::array<uint16_t, 1 << slot_bits> slots;           // index of a row + 1, 0 if free
  std::array<uint64_t, encoding_groups> maps_of_group;  // the maps that have rows in the group
};

constexpr size_t first_slot(uint32_t value) {
  constexpr uint32_t golden_ratio = 0x9e3779b9;
  return value * golden_ratio >> (32 - RowTable::slot_bits);
}

constexpr size_t next_slot(size_t slot) { return (slot + 1) % (1 << RowTable::slot_bits); }

constinit RowTable row_table{};

}  // namespace

void enter_rows() {
  uint16_t number = 0;
  for (const Row& row : all_rows()) {
    size_t slot = first_slot(row.value);
    while (row_table.slots[slot] != 0)
      slot = next_slot(slot);
    row_table.slots[slot] = ++number;
    row_table.maps_of_group[encoding_group(row.value)] |= map_bit(row.map);
  }
}

const Row* row_in_map(unsigned index, uint32_t word) {
  const uint32_t mask = decoder_maps[index].mask;
  const uint32_t value = word & mask;
  for (size_t slot = first_slot(value); row_table.slots[slot] != 0; slot = next_slot(slot)) {
    const Row& row = all_rows()[row_table.slots[slot] - 1];
    if (row.value == value && row.mask == mask)
      return &row;
  }
  return nullptr;
}

decode_stub is_sve(unsigned int word) {
  if (!in_sve_space(word))
    return nullptr;
  uint64_t maps = row_table.maps_of_group[encoding_group(word)];
  for (; maps != 0; maps &= maps - 1)
    if (const Row* row = row_in_map(std::countr_zero(maps), word))
      return row->stub;
  return nullptr;
}

decode_stub stub_to_execute(unsigned int word) {
  if (!in_sve_space(word))
    return nullptr;
  const uint64_t maps = row_table.maps_of_group[encoding_group(word)];
  for (const uint8_t index : execution_order)
    if ((maps & map_bit(index)) != 0)
      if (const Row* row = row_in_map(index, word))
        return row->stub;
  return nullptr;
}
