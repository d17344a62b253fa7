// How fast cases are scored: grows a tree on the numbers of a CSV file, and sends its rows through
// it again and again, from node to node and by a scorer.
//
//     scoring_speed FILE TARGET

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <vector>

#include "tree/grow/csv.h"
#include "tree/grow/grower.h"
#include "tree/score/scorer.h"

namespace {

using namespace tree;

/// Rows of all predictors, one after another.
std::vector<double> RowsOf(grow::DataSet const& data, grow::CaseRoles const& roles) {
  std::vector<double> rows(data.GetNumCases() * roles.predictors.size());
  for (std::size_t row = 0; row < data.GetNumCases(); ++row) {
    grow::CopyCase(data, roles.predictors, row, rows.data() + row * roles.predictors.size());
  }
  return rows;
}

/// Prints how many million cases a second `score` answers for, with what a call answers for.
template <class Score>
void Measure(char const* name, std::size_t numCases, Score const& score) {
  using Clock = std::chrono::steady_clock;
  score();  // warm
  auto const start = Clock::now();
  std::chrono::duration<double> seconds{};
  std::size_t numCalls = 0;
  for (; seconds.count() < 0.5; ++numCalls) {
    score();
    seconds = Clock::now() - start;
  }
  double const perSecond = static_cast<double>(numCases * numCalls) / seconds.count();
  std::printf("%-26s %8.1f million cases a second\n", name, perSecond / 1e6);
}

void Run(char const* file, char const* target) {
  grow::CsvOptions csv;
  std::optional<grow::CsvData> const read = grow::ReadCsv(file, csv);
  grow::DataSet const& data = read->data;
  grow::CaseRoles roles;
  roles.target = data.RequireColumn(target);
  for (int column = 0; column < data.GetNumColumns(); ++column) {
    if (column != roles.target) roles.predictors.push_back(column);
  }
  RCartSettingsImp settings(grow::MakeCoreSettings(data, roles));
  settings.GetStopRule()->SetMaxTreeDepth(12);
  settings.GetStopRule()->SetMinNodeSize(20);
  settings.GetStopRule()->SetMinChildSize(10);
  settings.GetStopRule()->SetMinImprovement(0.0);
  std::unique_ptr<grow::Grower> const grower = grow::MakeGrower(data, roles, settings);
  if (!grower->Grow()) throw std::runtime_error(grower->GetFailureMessage());
  NodeImp const& root = *grower->GetTree();
  auto const scorer = score::Scorer::FromTree(root);
  std::printf("%d terminal nodes, %u levels; %zu cases, %zu predictors\n",
              grower->GetNumNodes(TerminalNodes), scorer.GetDepth(), data.GetNumCases(),
              roles.predictors.size());

  std::vector<double> const rows = RowsOf(data, roles);
  std::vector<double> predictions(data.GetNumCases());
  Measure("from node to node", data.GetNumCases(), [&] {
    for (std::size_t row = 0; row < predictions.size(); ++row) {
      predictions[row] =
          root.DropObservationThroughTree(rows.data() + row * roles.predictors.size(), nullptr)
              ->GetAssignment();
    }
  });
  score::Answers answers;
  answers.predictions = predictions.data();
  auto const cases = score::Cases::OfRows(rows.data(), predictions.size(), roles.predictors.size());
  for (int const numThreads : {1, 0}) {
    score::ScoreOptions options;
    options.numThreads = numThreads;
    Measure(numThreads == 1 ? "by a scorer, one thread" : "by a scorer, all cores",
            data.GetNumCases(), [&] { scorer.Score(cases, answers, options); });
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: scoring_speed FILE TARGET\n";
    return 2;
  }
  try {
    Run(argv[1], argv[2]);
  } catch (std::exception const& error) {
    std::cerr << "scoring_speed: " << error.what() << '\n';
    return 1;
  }
}
