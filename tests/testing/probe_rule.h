#ifndef TREE_TESTS_TESTING_PROBE_RULE_H_
#define TREE_TESTS_TESTING_PROBE_RULE_H_

#include <string>
#include <utility>
#include <vector>

#include "tree/split_rules.h"

namespace tree::testing {

/// A split rule of no kind, with the base versions of all operations that have one. It answers what
/// it is told, and writes its cloning and its end to a log that has to outlive it and its clones.
class ProbeRule : public SplitRuleImp {
 public:
  explicit ProbeRule(int predictorIndex, std::vector<std::string>* log = nullptr,
                     std::string name = "probe")
      : SplitRuleImp(predictorIndex), log_(log), name_(std::move(name)) {}
  ProbeRule(ProbeRule const&) = default;
  ProbeRule& operator=(ProbeRule const&) = default;
  ~ProbeRule() override { Log("delete"); }

  int GetNumChildren() const override { return numChildren; }
  ValueSet* GetMappedValues(int child) const override {
    lastChild = child;
    return mappedValues;
  }
  SplitRuleImp* Clone() const override {
    Log("clone");
    if (isClonedToNull) return nullptr;
    auto* const clone = new ProbeRule(*this);
    clone->name_ = "clone of " + name_;
    return clone;
  }
  SplitRuleImp* EmptyClone() const override { return new ProbeRule(GetPredictorIndex()); }
  int Classify(double) const override { return -1; }
  bool IsOrdered() const override { return false; }
  bool AddMappedValues(ValueSet const& values) override {
    lastValues = &values;
    return acceptsValues;
  }

  int numChildren = 0;
  ValueSet* mappedValues = nullptr;
  bool acceptsValues = false;
  bool isClonedToNull = false;
  mutable int lastChild = -1;
  ValueSet const* lastValues = nullptr;

 private:
  void Log(char const* event) const {
    if (log_ != nullptr) log_->push_back(std::string(event) + " " + name_);
  }

  std::vector<std::string>* log_;
  std::string name_;
};

}  // namespace tree::testing

#endif  // TREE_TESTS_TESTING_PROBE_RULE_H_
