#ifndef TREE_CLI_TESTS_CLI_TESTING_ENVIRONMENT_H_
#define TREE_CLI_TESTS_CLI_TESTING_ENVIRONMENT_H_

#include <stdlib.h>  // NOLINT(modernize-deprecated-headers): setenv is of POSIX

#include <string>
#include <utility>

namespace tree::cli::testing {

/// Gives a variable of the environment another value for as long as this object lives.
class ChangedVariable {
 public:
  ChangedVariable(std::string name, std::string const& value)
      : name_(std::move(name)), hadValue_(::getenv(name_.c_str()) != nullptr) {
    if (hadValue_) former_ = ::getenv(name_.c_str());
    ::setenv(name_.c_str(), value.c_str(), 1);
  }
  ~ChangedVariable() {
    if (hadValue_) {
      ::setenv(name_.c_str(), former_.c_str(), 1);
    } else {
      ::unsetenv(name_.c_str());
    }
  }
  ChangedVariable(ChangedVariable const&) = delete;
  ChangedVariable& operator=(ChangedVariable const&) = delete;

 private:
  std::string name_;
  bool hadValue_;
  std::string former_;
};

}  // namespace tree::cli::testing

#endif  // TREE_CLI_TESTS_CLI_TESTING_ENVIRONMENT_H_
