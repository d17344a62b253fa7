#ifndef TREE_CLI_TESTS_CLI_TESTING_CREDIT_DATA_H_
#define TREE_CLI_TESTS_CLI_TESTING_CREDIT_DATA_H_

#include <sstream>
#include <string>
#include <utility>

#include "tree/grow/csv.h"

namespace tree::cli::testing {

/// Three cases with a column of every kind.
inline constexpr char kCreditText[] =
    "class,amount,purpose,rating,weight,part\n"
    "good,1000,car,low,1,0\n"
    "bad,2500,tv,high,2,1\n"
    "fair,400,car,low,1,0\n";

inline grow::DataSet Read(std::string const& text, grow::CsvOptions const& options = {}) {
  std::istringstream stream(text);
  return std::move(grow::ReadCsv(stream, "test.csv", options)->data);
}

/// Its classes are bad, fair and good; rating is ordinal, low or high.
inline grow::DataSet CreditData() {
  grow::CsvOptions options;
  options.categories = {{"rating", {"low", "high"}}};
  return Read(kCreditText, options);
}

/// What a piece of work refuses as not fitting the data; empty when it does not.
template <class Work>
std::string InputRefusal(Work work) {
  try {
    work();
  } catch (grow::InputError const& error) {
    return error.what();
  }
  return "";
}

}  // namespace tree::cli::testing

#endif  // TREE_CLI_TESTS_CLI_TESTING_CREDIT_DATA_H_
