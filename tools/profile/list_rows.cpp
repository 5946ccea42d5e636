// list_rows <file>: writes the rows, one in a line: value, mask, name of the stub, tier; then,
// behind tabs, the assembly form, and the function with the operand forms. What a profile calls an
// instruction comes from here, so that it is written in the tables of rows alone.
#include <cstdio>

#include "sve/decode/dispatch.h"

namespace {

const char* name_of(Tier tier) {
  switch (tier) {
  case Tier::fast:
    return "fast";
  case Tier::host_fp:
    return "host_fp";
  case Tier::model:
    return "model";
  case Tier::no_operation:
    return "no_operation";
  }
  return "unknown";
}

}  // namespace

int main(int argc, char** argv) {
  std::FILE* const file = argc == 2 ? std::fopen(argv[1], "w") : nullptr;
  if (file == nullptr)
    return 1;
  for (const Row& row : all_rows())
    std::fprintf(file, "0x%08x 0x%08x %s %s\t%s\t%s\n", row.value, row.mask, row.name,
                 name_of(row.tier), row.assembly(), row.operands());
  return std::fclose(file) == 0 ? 0 : 1;
}
