// The rows and the cascades that find them.
#include "sve/client/dispatch.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

TEST(Rows, ArePairwiseDisjoint) {
  for (const Row& a : all_rows())
    for (const Row& b : all_rows())
      if (&a != &b) {
        EXPECT_NE((a.value ^ b.value) & a.mask & b.mask, 0u) << a.name << " and " << b.name;
      }
}

TEST(Rows, HaveTheirOwnNames) {
  std::set<std::string> names;
  for (const Row& row : all_rows()) {
    EXPECT_TRUE(names.insert(row.name).second) << row.name;
  }
}

}  // namespace
