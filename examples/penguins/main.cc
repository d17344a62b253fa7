#include <cstring>
#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "hand_built/hand_built_tree.h"
#include "penguins/penguin_settings.h"
#include "penguins/penguin_table.h"
#include "penguins/penguin_tree.h"
#include "penguins/report.h"
#include "penguins/summary.h"

// Sends real penguins down a classification tree of their species.

namespace {

constexpr int kUsageError = 2;

constexpr char kUsage[] =
    "usage: penguins [FILE]\n"
    "\n"
    "Reads penguins from a CSV file (by default data/penguins.csv), counts them into a\n"
    "classification tree of three species, routes each of them through it and prints the tree,\n"
    "how the cases were placed, the predicted by the observed species, and what settings with\n"
    "costs make of the tree: altered priors, risk and gains.\n"
    "\n"
    "Columns: species, island, bill_length_mm, bill_depth_mm, flipper_length_mm, body_mass_g;\n"
    "others are not looked at. Empty fields, NaN and NA are missing values.\n";

std::unique_ptr<tree::NodeImp> CountedTree(std::vector<penguins::Penguin> const& penguins) {
  std::unique_ptr<tree::NodeImp> root = penguins::BuildRules();
  penguins::CountCases(*root, penguins);
  return root;
}

void Run(std::string const& file) {
  penguins::PenguinTable const table = penguins::ReadPenguins(file);
  for (std::string const& remark : table.remarks) std::cerr << remark << '\n';
  tree::CCartSettingsImp const settings = penguins::MakeSettings(table.penguins);
  hand_built::HandBuiltTree algorithm(settings, CountedTree(table.penguins));
  tree::NodeImp const& root = *algorithm.GetTree();

  penguins::PrintData(std::cout, file, table.penguins);
  penguins::PrintTree(std::cout, root);
  penguins::PrintPredictorSummaries(std::cout, root);
  penguins::PrintPlacements(std::cout, root, table.penguins);
  penguins::PrintMissing(std::cout, root, table.penguins);
  penguins::PrintPredictions(std::cout, root, table.penguins);
  penguins::PrintSettings(std::cout, settings);
  penguins::PrintStatistics(std::cout, algorithm);
  penguins::PrintGains(std::cout, algorithm, penguins::kChinstrap);
}

}  // namespace

int main(int argc, char* argv[]) {
  if (argc == 2 && std::strcmp(argv[1], "--help") == 0) {
    std::cout << kUsage;
    return 0;
  }
  if (argc > 2 || (argc == 2 && argv[1][0] == '-')) {
    std::cerr << "usage: penguins [FILE] (penguins --help says more)\n";
    return kUsageError;
  }
  try {
    Run(argc == 2 ? argv[1] : "data/penguins.csv");
  } catch (std::exception const& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
  if (!std::cout.flush()) {
    std::cerr << "standard output cannot be written\n";
    return 1;
  }
  return 0;
}
