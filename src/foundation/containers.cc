#include "tree/containers.h"

template class TArray<double>;
template class TArray<int>;
template class TMatrix<double>;
template class MCTree::AArrayRO<tree::VariableSettings*>;
template class MCTree::AArrayRW<tree::VariableSettings*>;
template class MCTree::ArrayRW<tree::VariableSettings*>;
