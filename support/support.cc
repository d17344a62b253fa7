#include "tree/support.h"

#include <limits>

// A stand-in for the support library that the tree library imports, so that the project builds and
// runs alone. The missing value has to compare equal to itself, and no real measurement takes it.

double systemMissingValue() { return std::numeric_limits<double>::lowest(); }

double GetInfinity() { return std::numeric_limits<double>::infinity(); }
