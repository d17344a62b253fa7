#include "tree/containers.h"

template class TArray<double>;
template class TArray<int>;
template class TMatrix<double>;
