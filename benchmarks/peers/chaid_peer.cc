// CHAID of this library beside a bare program that only counts and merges: what the counting costs.
//
//     chaid_peer CASES [THREADS]
//
// Makes CASES cases of 20 predictors with 10 categories each, 5 nominal and 15 ordinal, and 2
// classes, and grows a tree of 3 levels, at least 50 cases in a child. Prints a line for each
// program: its name, seconds, terminal nodes. The bare program begins with its data as bytes; the
// library reads doubles, finds out what values there are, and leaves a whole tree with its
// statistics.

#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tree/grow/grower.h"

namespace {

using namespace tree;
using namespace tree::grow;

constexpr std::size_t kNumPredictors = 20;
constexpr std::size_t kNumNominal = 5;
constexpr std::size_t kNumCategories = 10;
constexpr int kNumLevels = 3;

struct Cases {
  std::vector<std::vector<std::uint8_t>> predictors;
  std::vector<std::uint8_t> classes;
};

/// Nominal and ordinal predictors matter about as much.
Cases MakeCases(std::size_t count) {
  std::mt19937_64 engine(11);
  Cases cases{std::vector(kNumPredictors, std::vector<std::uint8_t>(count)),
              std::vector<std::uint8_t>(count)};
  for (auto& column : cases.predictors) {
    for (std::uint8_t& code : column) code = static_cast<std::uint8_t>(engine() % kNumCategories);
  }
  for (std::size_t row = 0; row < count; ++row) {
    auto const& x = cases.predictors;
    double const signal = (x[0][row] % 3 == 1 ? 1.0 : 0.0) + (x[1][row] == 7 ? 0.7 : 0.0) +
                          0.15 * x[5][row] + (x[6][row] > 4 ? 0.4 : 0.0) + 0.05 * x[7][row];
    double const noise = static_cast<double>(engine() % 1000) / 250.0;
    cases.classes[row] = signal + noise > 3.2 ? 1 : 0;
  }
  return cases;
}

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

void Print(char const* name, double seconds, int numTerminal) {
  std::printf("%s %.3f %d\n", name, seconds, numTerminal);
}

// ---- The library ----

void GrowByLibrary(Cases const& cases, int numThreads) {
  std::size_t const count = cases.classes.size();
  std::vector<std::vector<double>> columns;
  for (auto const& codes : cases.predictors) columns.emplace_back(codes.begin(), codes.end());
  columns.emplace_back(cases.classes.begin(), cases.classes.end());
  DataSet data(count);
  CaseRoles roles;
  for (std::size_t position = 0; position <= kNumPredictors; ++position) {
    ColumnDescription description;
    description.name = "x" + std::to_string(position);
    bool const isTarget = position == kNumPredictors;
    bool const isNominal = isTarget || position < kNumNominal;
    description.level = isNominal ? global::MeasurementNominal : global::MeasurementOrdinal;
    int const index = data.BorrowColumn(description, columns[position].data());
    if (isTarget) {
      roles.target = index;
    } else {
      roles.predictors.push_back(index);
    }
  }
  CChaidSettingsImp settings(MakeCoreSettings(data, roles));
  settings.GetStopRule()->SetMinNodeSize(100);
  settings.GetStopRule()->SetMinChildSize(50);
  settings.GetStopRule()->SetMinImprovement(0.0);
  settings.GetStopRule()->SetMaxTreeDepth(kNumLevels);
  auto const start = Clock::now();
  std::unique_ptr<Grower> const grower =
      MakeGrower(data, roles, settings, {.numThreads = numThreads});
  if (!grower->Grow()) throw std::runtime_error(grower->GetFailureMessage());
  double const grown = SecondsSince(start);
  auto const again = Clock::now();
  if (!grower->Grow()) throw std::runtime_error(grower->GetFailureMessage());
  Print("prepared", SecondsSince(again), grower->GetNumNodes(TerminalNodes));
  Print("whole", grown, grower->GetNumNodes(TerminalNodes));
}

// ---- The bare program ----

using Row = std::array<double, 2>;  // cases by class
using Table = std::array<Row, kNumCategories>;

double ChiSquareOf(Row const& a, Row const& b) {
  double const columns[2] = {a[0] + b[0], a[1] + b[1]};
  double const excess = a[0] * b[1] - a[1] * b[0];
  double const product = (a[0] + a[1]) * (b[0] + b[1]) * columns[0] * columns[1];
  return product > 0.0 ? excess * excess * (columns[0] + columns[1]) / product : 0.0;
}

struct Groups {
  std::vector<Row> rows;
  std::array<std::uint8_t, kNumCategories> groupOf{};
};

/// Merges the pair that differs least, as long as it does not differ at the level.
Groups Merge(Table const& table, bool nominal) {
  double const limit = 3.841458820694124;  // chi-square of p = 0.05, one degree of freedom
  Groups groups;
  groups.rows.assign(table.begin(), table.end());
  for (std::size_t c = 0; c < kNumCategories; ++c) groups.groupOf[c] = static_cast<std::uint8_t>(c);
  while (groups.rows.size() > 2) {
    std::size_t first = 0;
    std::size_t second = 0;
    double least = limit;
    for (std::size_t i = 0; i + 1 < groups.rows.size(); ++i) {
      std::size_t const last = nominal ? groups.rows.size() : i + 2;
      for (std::size_t j = i + 1; j < last; ++j) {
        double const value = ChiSquareOf(groups.rows[i], groups.rows[j]);
        if (value < least) {
          least = value;
          first = i;
          second = j;
        }
      }
    }
    if (second == 0) break;
    for (std::size_t k = 0; k < 2; ++k) groups.rows[first][k] += groups.rows[second][k];
    groups.rows.erase(groups.rows.begin() + static_cast<std::ptrdiff_t>(second));
    for (std::uint8_t& group : groups.groupOf) {
      if (group == second) {
        group = static_cast<std::uint8_t>(first);
      } else if (group > second) {
        --group;
      }
    }
  }
  return groups;
}

/// About the square of the normal deviate that is as significant. Source: Wilson and Hilferty 1931,
/// The distribution of chi-square.
double SignificanceOf(std::vector<Row> const& rows) {
  Row columns{};
  for (Row const& row : rows) {
    for (std::size_t k = 0; k < 2; ++k) columns[k] += row[k];
  }
  double const total = columns[0] + columns[1];
  double chiSquare = 0.0;
  for (Row const& row : rows) {
    for (std::size_t k = 0; k < 2; ++k) {
      double const expected = (row[0] + row[1]) * columns[k] / total;
      if (expected > 0.0) chiSquare += (row[k] - expected) * (row[k] - expected) / expected;
    }
  }
  double const df = static_cast<double>(rows.size()) - 1.0;
  double const spread = 2.0 / (9.0 * df);
  return (std::cbrt(chiSquare / df) - (1.0 - spread)) / std::sqrt(spread);
}

void GrowBare(Cases const& cases) {
  std::size_t const count = cases.classes.size();
  auto const start = Clock::now();
  constexpr std::size_t kNodeSize = 2 * kNumCategories;
  std::vector<std::uint16_t> nodeOf(count);
  std::vector<std::uint32_t> base(count);  // of the row of the case's node, and its class
  std::size_t numNodes = 1;
  for (int level = 0; level < kNumLevels; ++level) {
    std::vector<std::uint32_t> tables(numNodes * kNumPredictors * kNodeSize);
    for (std::size_t row = 0; row < count; ++row) {
      base[row] = static_cast<std::uint32_t>(nodeOf[row] * kNodeSize + cases.classes[row]);
    }
    for (std::size_t predictor = 0; predictor < kNumPredictors; ++predictor) {
      std::uint32_t* const table = tables.data() + predictor * numNodes * kNodeSize;
      std::uint8_t const* const codes = cases.predictors[predictor].data();
      for (std::size_t row = 0; row < count; ++row) ++table[base[row] + 2U * codes[row]];
    }
    std::vector<std::size_t> chosen(numNodes);
    std::vector<std::array<std::uint16_t, kNumCategories>> childOf(numNodes);
    std::size_t numChildren = 0;
    for (std::size_t node = 0; node < numNodes; ++node) {
      Groups best;
      double greatest = -HUGE_VAL;
      for (std::size_t predictor = 0; predictor < kNumPredictors; ++predictor) {
        Table table;
        std::uint32_t const* const counts =
            tables.data() + (predictor * numNodes + node) * kNodeSize;
        for (std::size_t c = 0; c < kNumCategories; ++c) {
          table[c] = {static_cast<double>(counts[2 * c]), static_cast<double>(counts[2 * c + 1])};
        }
        Groups groups = Merge(table, predictor < kNumNominal);
        double const significance = SignificanceOf(groups.rows);
        if (significance > greatest) {
          greatest = significance;
          best = std::move(groups);
          chosen[node] = predictor;
        }
      }
      for (std::size_t c = 0; c < kNumCategories; ++c) {
        childOf[node][c] = static_cast<std::uint16_t>(numChildren + best.groupOf[c]);
      }
      numChildren += best.rows.size();
    }
    for (std::size_t row = 0; row < count; ++row) {
      std::size_t const node = nodeOf[row];
      nodeOf[row] = childOf[node][cases.predictors[chosen[node]][row]];
    }
    numNodes = numChildren;
  }
  Print("bare", SecondsSince(start), static_cast<int>(numNodes));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || argc > 3) {
    std::cerr << "usage: chaid_peer CASES [THREADS]\n";
    return 2;
  }
  try {
    Cases const cases = MakeCases(std::strtoul(argv[1], nullptr, 10));
    for (int run = 0; run < 3; ++run) GrowBare(cases);
    int const numThreads = argc > 2 ? std::atoi(argv[2]) : 1;
    for (int run = 0; run < 3; ++run) GrowByLibrary(cases, numThreads);
  } catch (std::exception const& error) {
    std::cerr << "chaid_peer: " << error.what() << '\n';
    return 1;
  }
}
