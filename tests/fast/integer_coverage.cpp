// Every row of integer, predicate, compare and count instructions has a test in this program.
#include "tests/fast/fixture.h"

namespace {

// Those classes by the encoding: 0x04 but for FABS and FNEG, 0x24, 0x25 but for its moves of
// immediates, and of 0x05 the bitmask immediates (not their move), RBIT and REVW.
bool in_these_classes(const Row& row) {
  const uint32_t value = row.value;
  switch (value >> 24) {
  case 0x04:
    return (value & 0x003ee000) != 0x001ca000;
  case 0x24:
    return true;
  case 0x25:
    return (value & 0x003ec000) != 0x0038c000;
  case 0x05:
    return ((value & 0x00300000) == 0 && (value & 0x00c00000) != 0x00c00000) ||
           (value & 0x003ce000) == 0x00248000;
  default:
    return false;
  }
}

[[maybe_unused]] const auto* const coverage =
    testing::AddGlobalTestEnvironment(new fixture::Coverage(in_these_classes));

}  // namespace
