#include "tree/results.h"

namespace tree {

TreeAlgorithmBase::~TreeAlgorithmBase() = default;

TreeAlgorithm::~TreeAlgorithm() = default;

ProgressListener::~ProgressListener() = default;

}  // namespace tree
