#include "tests/model/twin_row.h"

extern "C" const TwinRow __start_sve_twins[];
extern "C" const TwinRow __stop_sve_twins[];

std::span<const TwinRow> all_twins() { return {__start_sve_twins, __stop_sve_twins}; }

const TwinRow* twin_named(std::string_view name) {
  for (const TwinRow& twin : all_twins())
    if (name == twin.name)
      return &twin;
  return nullptr;
}
