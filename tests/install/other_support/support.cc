#include <limits>

// Another support library than the project's stand-in: its missing value differs.

double systemMissingValue();
double GetInfinity();

double systemMissingValue() { return -999.0; }

double GetInfinity() { return std::numeric_limits<double>::infinity(); }
