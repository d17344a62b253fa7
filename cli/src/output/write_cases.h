#ifndef TREE_CLI_SRC_OUTPUT_WRITE_CASES_H_
#define TREE_CLI_SRC_OUTPUT_WRITE_CASES_H_

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "tree/grow/data_set.h"
#include "tree/nodes.h"
#include "tree/results.h"

namespace tree::cli {

/// Writes where every case of the data ends in the tree, and what is predicted for it, as comma- or
/// otherwise separated values: a line of names, then a line per row of the data with its number
/// from 1, the id of the node, the prediction, and for a target with classes the probability of
/// each of them. Numbers are written so that they can be read back exactly. Reports to `listener`
/// before every slice of a few thousand rows, and returns false as soon as it ends the work.
bool WriteCases(std::ostream& out, NodeImp const& root, grow::DataSet const& data,
                grow::CaseRoles const& roles, char delimiter, ProgressListener& listener);

/// A field of such a file: in quotes, with its own quotes doubled, where it has to be.
std::string CsvField(std::string_view text, char delimiter);

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_OUTPUT_WRITE_CASES_H_
