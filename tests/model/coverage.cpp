// Fails a whole run of the program that leaves a row of the model out.
#include "tests/model/lanes.h"

namespace {

class ModelCoverage : public testing::Environment {
public:
  void TearDown() override {
    if (GTEST_FLAG_GET(filter) != "*")
      return;
    for (const std::string& name : lanes::model_rows_not_executed())
      ADD_FAILURE() << "no test executes " << name;
  }
};

[[maybe_unused]] const auto* const coverage = testing::AddGlobalTestEnvironment(new ModelCoverage);

}  // namespace
