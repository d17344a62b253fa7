#include <cstdlib>
#include <iostream>

#include <gtest/gtest.h>
#include <rapidcheck.h>

namespace {

// The same cases on every run; RC_PARAMS chooses others, "seed=7 max_success=100000" for instance.
constexpr char kDefaultParameters[] = "seed=20240229 max_success=200";

class ParametersPrinter : public testing::Environment {
 public:
  void SetUp() override {
    std::cout << "RC_PARAMS=\"" << rc::detail::configToString(rc::detail::configuration())
              << "\"\n";
  }
};

}  // namespace

int main(int argc, char** argv) {
  setenv("RC_PARAMS", kDefaultParameters, /*overwrite=*/0);
  testing::InitGoogleTest(&argc, argv);
  testing::AddGlobalTestEnvironment(new ParametersPrinter);
  return RUN_ALL_TESTS();
}
