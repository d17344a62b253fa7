// Makes the data that the peers score, and scores them with this library.
//
//     score_peer data FILE CASES PERCENT            writes the data, so many percent missing
//     score_peer score FILE CASES DEPTH LEAF SURROGATES [SCORED]
//     score_peer tree FILE CASES DEPTH LEAF         writes the tree, and where each case ends
//
// The file holds doubles, a column after the other: 20 predictors, in which NaN is a missing value,
// then a number to predict; its sign is the class to predict. `score` grows a tree on the cases and
// scores them, or the first SCORED of them, by it in each way that there is. It prints lines of a
// name and nanoseconds per case, the smallest of several runs; the first ones say how large the
// tree is. `tree` writes FILE.tree, of seven doubles for each node, in the order of the levels:
// identifier, predictor, cut point, the positions of the children up to the cut point and above it,
// -1 where there are none, 1 where missing values go to the second of them, and the prediction; and
// FILE.ids, for each case the identifier, as 32 bits, of the node in which it ends.

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
#include <numeric>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
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
  explicit Timer(std::vector<std::uint32_t> expected)
      : expected_(std::move(expected)), ids_(expected_.size()) {}

  /// What is expected of cases that were picked.
  std::vector<std::uint32_t> ExpectPicks(std::vector<std::size_t> const& picks) const {
    std::vector<std::uint32_t> expected;
    expected.reserve(picks.size());
    for (std::size_t const pick : picks) expected.push_back(expected_[pick]);
    return expected;
  }

  using Way = std::function<void(std::uint32_t*)>;

  void Time(std::string const& name, Way const& score, int numRuns = kNumRuns) {
    TimeFastest(name, {score}, numRuns);
  }
  /// The fastest of several ways.
  void TimeFastest(std::string const& name, std::vector<Way> const& ways, int numRuns = kNumRuns) {
    if (ids_.size() < 100'000) numRuns *= 20;
    double best = std::numeric_limits<double>::infinity();
    for (int run = 0; run < numRuns; ++run) {
      for (Way const& score : ways) best = std::min(best, TimeOnce(name, score));
    }
    std::printf("%s %.2f\n", name.c_str(), best / static_cast<double>(ids_.size()));
    std::fflush(stdout);
  }

 private:
  double TimeOnce(std::string const& name, Way const& score) {
    std::fill(ids_.begin(), ids_.end(), 0);
    auto const start = std::chrono::steady_clock::now();
    score(ids_.data());
    std::chrono::duration<double, std::nano> const taken = std::chrono::steady_clock::now() - start;
    if (ids_ != expected_) throw std::runtime_error(name + " finds other nodes");
    return taken.count();
  }

  std::vector<std::uint32_t> expected_;
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
  using Until = score::BareTree::Until;
  auto const findBare = [&](Until until) {
    return [&, until](std::uint32_t* ids) {
      if (isComplete) {
        bare.FindComplete(rows.data(), numCases, kNumPredictors, until, ids);
      } else if (hasSurrogates) {
        bare.FindBySurrogates(rows.data(), numCases, kNumPredictors, ids);
      } else {
        bare.FindIncomplete(rows.data(), numCases, kNumPredictors, until, ids);
      }
    };
  };
  timer.TimeFastest("bare_" + type, {findBare(Until::kNoneMoves), findBare(Until::kLastLevel)});
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
  std::vector<std::size_t> picks(numCases);
  std::iota(picks.begin(), picks.end(), std::size_t{0});
  auto const scorePicks = [&](score::Cases const& cases) {
    return [&scorer, &picks, cases](std::uint32_t* ids) {
      score::Answers answers;
      answers.ids = ids;
      score::ScoreOptions options;
      options.numThreads = 1;
      options.selection = score::Selection{picks.data(), picks.size()};
      scorer.Score(cases, answers, options);
    };
  };
  timer.Time("picked_rows_" + type, scorePicks(byRows));
  timer.Time("picked_columns_" + type, scorePicks(byColumns));
  std::shuffle(picks.begin(), picks.end(), std::mt19937_64(11));
  Timer shuffled(timer.ExpectPicks(picks));
  shuffled.Time("shuffled_rows_" + type, scorePicks(byRows));
  shuffled.Time("shuffled_columns_" + type, scorePicks(byColumns));
  auto const findEach = [&rows, numCases](auto const& findOne) {
    return [&rows, numCases, findOne](std::uint32_t* ids) {
      for (std::size_t row = 0; row < numCases; ++row) {
        ids[row] = findOne(rows.data() + row * kNumPredictors);
      }
    };
  };
  auto const findComplete = [&bare](Value const* row) { return bare.FindOne(row); };
  auto const findIncomplete = [&bare](Value const* row) { return bare.FindOneIncomplete(row); };
  auto const findBySurrogates = [&bare](Value const* row) { return bare.FindOneBySurrogates(row); };
  if (isComplete) {
    timer.Time("bare_one_" + type, findEach(findComplete));
  } else if (hasSurrogates) {
    timer.Time("bare_one_" + type, findEach(findBySurrogates));
  } else {
    timer.TimeFastest("bare_one_" + type, {findEach(findIncomplete), findEach(findBySurrogates)});
  }
  timer.Time("one_" + type, [&](std::uint32_t* ids) {
    for (std::size_t row = 0; row < numCases; ++row) {
      ids[row] = scorer.GetId(scorer.FindPosition(rows.data() + row * kNumPredictors));
    }
  });
}

// A number that floats have too.
double MissingValue() { return -std::ldexp(1.0, 100); }

// Puts the missing value where there is none, and tells whether there are some.
bool FillMissing(Columns& columns) {
  bool anyMissing = false;
  for (std::size_t position = 0; position < kNumPredictors; ++position) {
    for (double& value : columns[position]) {
      if (!std::isnan(value)) continue;
      value = MissingValue();
      anyMissing = true;
    }
  }
  return anyMissing;
}

std::vector<double> MakeRows(Columns const& columns) {
  std::size_t const numCases = columns[0].size();
  std::vector<double> rows(numCases * kNumPredictors);
  for (std::size_t position = 0; position < kNumPredictors; ++position) {
    for (std::size_t row = 0; row < numCases; ++row) {
      rows[row * kNumPredictors + position] = columns[position][row];
    }
  }
  return rows;
}

void Walk(NodeImp const& root, std::vector<double> const& rows, std::uint32_t* ids) {
  for (std::size_t row = 0; row < rows.size() / kNumPredictors; ++row) {
    ids[row] =
        root.DropObservationThroughTree(rows.data() + row * kNumPredictors, nullptr)->GetId();
  }
}

void Score(Columns& columns, std::size_t numScored, char** options) {
  bool const isComplete = !FillMissing(columns);
  std::unique_ptr<NodeImp> const root = GrowTree(columns, MissingValue(), options);
  if (numScored < columns[0].size()) {
    for (std::vector<double>& column : columns) column.resize(numScored);
  }
  auto const scorer = score::Scorer::FromTree(*root);
  std::printf("nodes %u\ndepth %u\nbytes %zu\nclasses %u\n", scorer.GetNumNodes(),
              scorer.GetDepth(), scorer.GetSize(), scorer.GetNumClasses());

  std::vector<double> const rows = MakeRows(columns);
  std::vector<std::uint32_t> expected(columns[0].size());
  Walk(*root, rows, expected.data());
  Timer timer(expected);
  timer.Time(
      "walk", [&](std::uint32_t* ids) { Walk(*root, rows, ids); }, 2);
  TimeValues<float>("float", columns, *root, MissingValue(), isComplete, timer);
  TimeValues<double>("double", columns, *root, MissingValue(), isComplete, timer);
}

template <class Number>
void WriteNumbers(std::vector<Number> const& numbers, std::string const& path) {
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<char const*>(numbers.data()),
             static_cast<std::streamsize>(numbers.size() * sizeof(Number)));
  if (!file.flush()) throw std::runtime_error("cannot write " + path);
}

void WriteTree(Columns& columns, std::string const& path, char** options) {
  FillMissing(columns);
  std::unique_ptr<NodeImp> const root = GrowTree(columns, MissingValue(), options);
  std::vector<std::uint32_t> ids(columns[0].size());
  Walk(*root, MakeRows(columns), ids.data());
  WriteNumbers(ids, path + ".ids");

  std::vector<double> numbers;
  std::vector<NodeImp const*> nodes = {root.get()};
  for (std::size_t next = 0; next < nodes.size(); ++next) {
    NodeImp const& node = *nodes[next];
    if (node.GetNumChildren() == 0) {
      numbers.insert(numbers.end(),
                     {double(node.GetId()), -1.0, 0.0, -1.0, -1.0, 0.0, node.GetAssignment()});
      continue;
    }
    auto const& rule = dynamic_cast<OSplitRule const&>(*node.GetCompetitorImp(0));
    auto const below = static_cast<unsigned int>(rule.Classify(rule.GetCutPoint()));
    auto const first = static_cast<double>(nodes.size());
    bool const missingAbove = rule.GetDumbChildPos() != static_cast<int>(below);
    numbers.insert(numbers.end(),
                   {double(node.GetId()), double(rule.GetPredictorIndex()), rule.GetCutPoint(),
                    first, first + 1.0, missingAbove ? 1.0 : 0.0, node.GetAssignment()});
    nodes.push_back(node.GetChildImp(below));
    nodes.push_back(node.GetChildImp(1 - below));
  }
  WriteNumbers(numbers, path + ".tree");
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
    } else if (what == "tree" && argc == 6) {
      Columns columns = Read(argv[2], std::strtoul(argv[3], nullptr, 10));
      char noSurrogates[] = "0";
      char* options[] = {argv[4], argv[5], noSurrogates};
      WriteTree(columns, argv[2], options);
    } else {
      std::cerr << "usage: see the top of score_peer.cc\n";
      return 2;
    }
  } catch (std::exception const& error) {
    std::cerr << "score_peer: " << error.what() << '\n';
    return 1;
  }
}
