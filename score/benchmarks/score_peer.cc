// Makes the data that the peers score, and scores them with this library.
//
//     score_peer data FILE CASES PERCENT            writes the data, so many percent missing
//     score_peer score FILE CASES DEPTH LEAF SURROGATES [SCORED]
//
// The file holds doubles, a column after the other: 20 predictors, in which NaN is a missing value,
// then a number to predict; its sign is the class to predict. `score` grows a tree on the cases and
// scores them, or the first SCORED of them, by it in each way that there is. It prints lines of a
// name and nanoseconds per case, the smallest of several runs; the first ones say how large the
// tree is.

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <limits>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "bare_tree.h"
#include "tree/grow/grower.h"
#include "tree/score/scorer.h"
#include "tree/support.h"

namespace {

using namespace tree;

constexpr std::size_t kNumPredictors = 20;
constexpr int kNumRuns = 7;
using Columns = std::vector<std::vector<double>>;

/// Predictors that go together in fives, so that each has some that can stand in for it; and much
/// noise, so that what a deep node decides is hard to foresee.
Columns MakeData(std::size_t numCases, double shareMissing) {
  std::mt19937_64 engine(7);
  std::normal_distribution<double> normal;
  std::uniform_real_distribution<double> share;
  Columns columns(kNumPredictors + 1, std::vector<double>(numCases));
  for (std::size_t row = 0; row < numCases; ++row) {
    double const common[] = {normal(engine), normal(engine), normal(engine), normal(engine)};
    for (std::size_t position = 0; position < kNumPredictors; ++position) {
      double const value = common[position / 5] + 0.7 * normal(engine);
      columns[position][row] = static_cast<double>(static_cast<float>(value));
    }
    columns[kNumPredictors][row] = 3.0 * normal(engine);
    for (std::size_t position = 0; position < kNumPredictors; ++position) {
      columns[kNumPredictors][row] +=
          columns[position][row] * columns[(position + 7) % kNumPredictors][row] / 8.0;
    }
  }
  for (std::size_t position = 0; position < kNumPredictors; ++position) {
    for (double& value : columns[position]) {
      if (share(engine) < shareMissing) value = std::numeric_limits<double>::quiet_NaN();
    }
  }
  return columns;
}

void Write(Columns const& columns, char const* path) {
  std::ofstream file(path, std::ios::binary);
  for (auto const& column : columns) {
    file.write(reinterpret_cast<char const*>(column.data()),
               static_cast<std::streamsize>(column.size() * sizeof(double)));
  }
  if (!file.flush()) throw std::runtime_error(std::string("cannot write ") + path);
}

Columns Read(char const* path, std::size_t numCases) {
  Columns columns(kNumPredictors + 1, std::vector<double>(numCases));
  std::ifstream file(path, std::ios::binary);
  for (auto& column : columns) {
    file.read(reinterpret_cast<char*>(column.data()),
              static_cast<std::streamsize>(column.size() * sizeof(double)));
  }
  if (!file) throw std::runtime_error(std::string("cannot read ") + path);
  return columns;
}

std::unique_ptr<NodeImp> GrowTree(Columns const& columns, double missingValue, char** options) {
  std::vector<double> classes;
  for (double const value : columns[kNumPredictors]) classes.push_back(value > 0.0 ? 1.0 : 0.0);
  grow::DataSet data(classes.size());
  grow::CaseRoles roles;
  for (std::size_t position = 0; position < kNumPredictors; ++position) {
    grow::ColumnDescription description;
    description.name = "x" + std::to_string(position);
    description.missingValue = missingValue;
    roles.predictors.push_back(data.BorrowColumn(description, columns[position].data()));
  }
  grow::ColumnDescription description;
  description.name = "y";
  description.level = global::MeasurementNominal;
  roles.target = data.BorrowColumn(description, classes.data());
  CCartSettingsImp settings(grow::MakeCoreSettings(data, roles));
  settings.GetPriors()->Set(PriorTypeAlternate);
  int const leaf = std::atoi(options[1]);
  settings.GetStopRule()->SetMaxTreeDepth(std::atoi(options[0]));
  settings.GetStopRule()->SetMinNodeSize(2 * leaf);
  settings.GetStopRule()->SetMinChildSize(leaf);
  settings.GetStopRule()->SetMinImprovement(0.0);
  settings.SetMaxNumSurrogates(std::atoi(options[2]));
  settings.SetMaxNumCompetitors(1);
  auto const grower = grow::MakeGrower(data, roles, settings, {0});
  if (!grower->Grow()) throw std::runtime_error(grower->GetFailureMessage());
  auto const& root = dynamic_cast<NodeImp const&>(*grower->GetRootNode());
  return std::unique_ptr<NodeImp>(root.Clone());
}

/// Times one way to score all cases, and compares what comes of it.
class Timer {
 public:
  explicit Timer(std::vector<std::uint32_t> const& expected)
      : expected_(expected), ids_(expected.size()) {}

  void Time(std::string const& name, std::function<void(std::uint32_t*)> const& score,
            int numRuns = kNumRuns) {
    if (ids_.size() < 100'000) numRuns *= 20;
    double best = std::numeric_limits<double>::infinity();
    for (int run = 0; run < numRuns; ++run) {
      auto const start = std::chrono::steady_clock::now();
      score(ids_.data());
      std::chrono::duration<double, std::nano> const taken =
          std::chrono::steady_clock::now() - start;
      best = std::min(best, taken.count());
    }
    if (ids_ != expected_) throw std::runtime_error(name + " finds other nodes");
    std::printf("%s %.2f\n", name.c_str(), best / static_cast<double>(ids_.size()));
    std::fflush(stdout);
  }

 private:
  std::vector<std::uint32_t> const& expected_;
  std::vector<std::uint32_t> ids_;
};

template <class Value>
void TimeValues(std::string const& type, Columns const& columns, NodeImp const& root,
                double missingValue, bool isComplete, Timer& timer) {
  std::size_t const numCases = columns[0].size();
  std::vector<Value> rows(numCases * kNumPredictors);
  std::vector<std::vector<Value>> ownColumns(kNumPredictors, std::vector<Value>(numCases));
  std::vector<score::Column> views;
  for (std::size_t position = 0; position < kNumPredictors; ++position) {
    for (std::size_t row = 0; row < numCases; ++row) {
      auto const value = static_cast<Value>(columns[position][row]);
      rows[row * kNumPredictors + position] = value;
      ownColumns[position][row] = value;
    }
    views.emplace_back(ownColumns[position].data());
  }
  score::BareTree const bare(root, missingValue);
  auto const scorer = score::Scorer::FromTree(root);
  bool const hasSurrogates = bare.HasSurrogates();
  timer.Time("bare_" + type, [&](std::uint32_t* ids) {
    if (isComplete) {
      bare.FindComplete(rows.data(), numCases, kNumPredictors, ids);
    } else if (hasSurrogates) {
      bare.FindBySurrogates(rows.data(), numCases, kNumPredictors, ids);
    } else {
      bare.FindIncomplete(rows.data(), numCases, kNumPredictors, ids);
    }
  });
  auto const byRows = score::Cases::OfRows(rows.data(), numCases, kNumPredictors);
  auto const byColumns = score::Cases::OfColumns(views.data(), views.size(), numCases);
  for (int const numThreads : {1, 2}) {
    std::string const suffix = numThreads == 1 ? "" : "_2threads";
    auto const score = [&](score::Cases const& cases) {
      return [&scorer, cases, numThreads](std::uint32_t* ids) {
        score::Answers answers;
        answers.ids = ids;
        score::ScoreOptions options;
        options.numThreads = numThreads;
        scorer.Score(cases, answers, options);
      };
    };
    timer.Time("rows_" + type + suffix, score(byRows));
    timer.Time("columns_" + type + suffix, score(byColumns));
  }
  if (isComplete) {
    timer.Time("bare_one_" + type, [&](std::uint32_t* ids) {
      for (std::size_t row = 0; row < numCases; ++row) {
        ids[row] = bare.FindOne(rows.data() + row * kNumPredictors);
      }
    });
  }
  timer.Time("one_" + type, [&](std::uint32_t* ids) {
    for (std::size_t row = 0; row < numCases; ++row) {
      ids[row] = scorer.GetId(scorer.FindPosition(rows.data() + row * kNumPredictors));
    }
  });
}

void Score(Columns& columns, std::size_t numScored, char** options) {
  std::size_t numCases = columns[0].size();
  // A number that floats have too.
  double const missingValue = -std::ldexp(1.0, 100);
  bool isComplete = true;
  for (std::size_t position = 0; position < kNumPredictors; ++position) {
    for (double& value : columns[position]) {
      if (!std::isnan(value)) continue;
      value = missingValue;
      isComplete = false;
    }
  }
  std::unique_ptr<NodeImp> const root = GrowTree(columns, missingValue, options);
  if (numScored < numCases) {
    numCases = numScored;
    for (std::vector<double>& column : columns) column.resize(numCases);
  }
  auto const scorer = score::Scorer::FromTree(*root);
  std::printf("nodes %u\ndepth %u\nbytes_per_node %.2f\n", scorer.GetNumNodes(), scorer.GetDepth(),
              static_cast<double>(scorer.GetSize()) / scorer.GetNumNodes());

  std::vector<double> rows(numCases * kNumPredictors);
  for (std::size_t position = 0; position < kNumPredictors; ++position) {
    for (std::size_t row = 0; row < numCases; ++row) {
      rows[row * kNumPredictors + position] = columns[position][row];
    }
  }
  std::vector<std::uint32_t> expected(numCases);
  auto const walk = [&](std::uint32_t* ids) {
    for (std::size_t row = 0; row < numCases; ++row) {
      ids[row] =
          root->DropObservationThroughTree(rows.data() + row * kNumPredictors, nullptr)->GetId();
    }
  };
  walk(expected.data());
  Timer timer(expected);
  timer.Time("walk", walk, 2);
  TimeValues<float>("float", columns, *root, missingValue, isComplete, timer);
  TimeValues<double>("double", columns, *root, missingValue, isComplete, timer);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    std::string const what = argc > 1 ? argv[1] : "";
    if (what == "data" && argc == 5) {
      Write(MakeData(std::strtoul(argv[3], nullptr, 10), std::atof(argv[4]) / 100.0), argv[2]);
    } else if (what == "score" && (argc == 7 || argc == 8)) {
      Columns columns = Read(argv[2], std::strtoul(argv[3], nullptr, 10));
      Score(columns, argc == 8 ? std::strtoul(argv[7], nullptr, 10) : columns[0].size(), argv + 4);
    } else {
      std::cerr << "usage: see the top of score_peer.cc\n";
      return 2;
    }
  } catch (std::exception const& error) {
    std::cerr << "score_peer: " << error.what() << '\n';
    return 1;
  }
}
