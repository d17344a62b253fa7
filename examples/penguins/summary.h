#ifndef EXAMPLES_PENGUINS_SUMMARY_H_
#define EXAMPLES_PENGUINS_SUMMARY_H_

#include <iosfwd>

#include "tree/results.h"
#include "tree/settings.h"

// The sections of the output that sum the tree up, each with the settings that led to it.

namespace penguins {

/// The settings with their costs and priors, and the priors as the costs alter them.
void PrintSettings(std::ostream& out, tree::CCartSettings const& settings);

/// Validates the tree, and shows its statistics as the library writes them. When it cannot be
/// validated, the section says why.
void PrintStatistics(std::ostream& out, tree::TreeAlgorithm& algorithm);

/// A gains table of the species, whose rows take more and more terminal nodes together, with the
/// shares of all species in each row.
void PrintGains(std::ostream& out, tree::TreeAlgorithmBase const& algorithm, int species);

}  // namespace penguins

#endif  // EXAMPLES_PENGUINS_SUMMARY_H_
