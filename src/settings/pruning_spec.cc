#include "tree/settings.h"

namespace tree {

PruningSpec::~PruningSpec() = default;

PruningSpecImp::PruningSpecImp() = default;

PruningSpecImp::PruningSpecImp(PruningSpecImp const& other) = default;

PruningSpecImp& PruningSpecImp::operator=(PruningSpecImp const& other) = default;

PruningSpecImp::~PruningSpecImp() = default;

PruningSpec* PruningSpecImp::Clone() const { return new PruningSpecImp(*this); }

bool PruningSpecImp::GetPickMinRiskTree() const { return pickMinRiskTree_; }

double PruningSpecImp::GetSERuleFactor() const { return seRuleFactor_; }

void PruningSpecImp::SetPickMinRiskTree(bool flag) { pickMinRiskTree_ = flag; }

void PruningSpecImp::SetSERuleFactor(double factor) {
  if (factor >= 0.0) seRuleFactor_ = factor;
}

}  // namespace tree
