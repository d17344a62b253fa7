// Makes the data that the peers grow trees on, and grows the same trees with this library.
//
//     grow_peer data FILE CASES NOMINAL             writes the data
//     grow_peer grow FILE CASES NOMINAL KIND DEPTH LEAF THREADS SURROGATES COMPETITORS
//     grow_peer write-csv FILE CASES NOMINAL        writes the same data as text
//     grow_peer read-csv FILE                       reads it
//
// The file holds doubles, a column after the other: 20 predictors, of which the first NOMINAL are
// categories from 0 to 9, then a number to predict; its sign is the class to predict.
// `grow` prints: seconds, terminal nodes, MB of memory beyond the data at the peak; `read-csv`:
// seconds, rows.

#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "tree/grow/csv.h"
#include "tree/grow/grower.h"

namespace {

using namespace tree;
using namespace tree::grow;

constexpr std::size_t kNumPredictors = 20;
using Columns = std::vector<std::vector<double>>;

/// Four predictors matter; two of them only together.
Columns MakeData(std::size_t numCases, std::size_t numNominal) {
  std::mt19937_64 engine(7);
  std::normal_distribution<double> normal;
  Columns columns(kNumPredictors + 1, std::vector<double>(numCases));
  for (std::size_t position = 0; position < kNumPredictors; ++position) {
    for (double& value : columns[position]) {
      value = position < numNominal ? static_cast<double>(engine() % 10) : normal(engine);
    }
  }
  for (std::size_t row = 0; row < numCases; ++row) {
    double value = columns[5][row] + 0.8 * columns[6][row] * columns[7][row] -
                   (columns[8][row] > 0.0 ? 0.5 : 0.0) + 0.3 * columns[9][row] + normal(engine);
    if (numNominal > 0 && columns[0][row] == 3.0) value += 0.5;
    columns[kNumPredictors][row] = value;
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

double PeakMegabytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

/// `kind`: what is grown: number or class, by CART, or quest.
void Grow(Columns& columns, std::size_t numNominal, std::string const& kind, char** options) {
  bool const classes = kind != "number";
  if (classes) {
    for (double& value : columns[kNumPredictors]) value = value > 0.0 ? 1.0 : 0.0;
  }
  DataSet data(columns[0].size());
  CaseRoles roles;
  for (std::size_t position = 0; position <= kNumPredictors; ++position) {
    ColumnDescription description;
    description.name = "x" + std::to_string(position);
    bool const isTarget = position == kNumPredictors;
    if (isTarget ? classes : position < numNominal) description.level = global::MeasurementNominal;
    int const index = data.BorrowColumn(description, columns[position].data());
    if (isTarget) {
      roles.target = index;
    } else {
      roles.predictors.push_back(index);
    }
  }
  CoreSettingsImp const core = MakeCoreSettings(data, roles);
  int const numSurrogates = std::atoi(options[3]);
  std::unique_ptr<AlgSettings> settings;
  if (kind == "quest") {
    auto quest = std::make_unique<QuestSettingsImp>(core);
    quest->GetPriors()->Set(PriorTypeAlternate);
    quest->SetMaxNumSurrogates(numSurrogates);
    settings = std::move(quest);
  } else if (classes) {
    auto ofClasses = std::make_unique<CCartSettingsImp>(core);
    ofClasses->GetPriors()->Set(PriorTypeAlternate);
    ofClasses->SetMaxNumSurrogates(numSurrogates);
    settings = std::move(ofClasses);
  } else {
    auto ofNumbers = std::make_unique<RCartSettingsImp>(core);
    ofNumbers->SetMaxNumSurrogates(numSurrogates);
    settings = std::move(ofNumbers);
  }
  int const leaf = std::atoi(options[1]);
  settings->GetStopRule()->SetMaxTreeDepth(std::atoi(options[0]));
  settings->GetStopRule()->SetMinNodeSize(2 * leaf);
  settings->GetStopRule()->SetMinChildSize(leaf);
  settings->GetStopRule()->SetMinImprovement(0.0);
  settings->SetMaxNumCompetitors(std::atoi(options[4]) + 1);

  double const before = PeakMegabytes();
  auto const start = std::chrono::steady_clock::now();
  std::unique_ptr<Grower> const grower =
      MakeGrower(data, roles, *settings, {std::atoi(options[2])});
  if (!grower->Grow()) throw std::runtime_error(grower->GetFailureMessage());
  std::chrono::duration<double> const seconds = std::chrono::steady_clock::now() - start;
  std::printf("%.3f %d %.0f\n", seconds.count(), grower->GetNumNodes(TerminalNodes),
              PeakMegabytes() - before);
}

/// Categories become words, and numbers have six digits.
void WriteCsv(Columns const& columns, std::size_t numNominal, char const* path) {
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> const file(std::fopen(path, "wb"), &std::fclose);
  if (file == nullptr) throw std::runtime_error(std::string("cannot write ") + path);
  for (std::size_t position = 0; position <= kNumPredictors; ++position) {
    std::fprintf(file.get(), "%sx%zu", position > 0 ? "," : "", position);
  }
  for (std::size_t row = 0; row < columns[0].size(); ++row) {
    for (std::size_t position = 0; position <= kNumPredictors; ++position) {
      char const* const before = position > 0 ? "," : "\n";
      if (position < numNominal) {
        std::fprintf(file.get(), "%scategory %g", before, columns[position][row]);
      } else {
        std::fprintf(file.get(), "%s%.6g", before, columns[position][row]);
      }
    }
  }
  std::fputc('\n', file.get());
  if (std::fflush(file.get()) != 0) throw std::runtime_error(std::string("cannot write ") + path);
}

void ReadCsvFile(char const* path) {
  auto const start = std::chrono::steady_clock::now();
  std::optional<CsvData> const read = ReadCsv(path);
  std::chrono::duration<double> const seconds = std::chrono::steady_clock::now() - start;
  std::printf("%.3f %zu\n", seconds.count(), read->data.GetNumCases());
}

}  // namespace

int main(int argc, char** argv) {
  try {
    std::string const what = argc > 1 ? argv[1] : "";
    if (what == "data" && argc == 5) {
      Write(MakeData(std::strtoul(argv[3], nullptr, 10), std::strtoul(argv[4], nullptr, 10)),
            argv[2]);
    } else if (what == "grow" && argc == 11) {
      Columns columns = Read(argv[2], std::strtoul(argv[3], nullptr, 10));
      Grow(columns, std::strtoul(argv[4], nullptr, 10), argv[5], argv + 6);
    } else if (what == "write-csv" && argc == 5) {
      std::size_t const numNominal = std::strtoul(argv[4], nullptr, 10);
      WriteCsv(MakeData(std::strtoul(argv[3], nullptr, 10), numNominal), numNominal, argv[2]);
    } else if (what == "read-csv" && argc == 3) {
      ReadCsvFile(argv[2]);
    } else {
      std::cerr << "usage: see the top of grow_peer.cc\n";
      return 2;
    }
  } catch (std::exception const& error) {
    std::cerr << "grow_peer: " << error.what() << '\n';
    return 1;
  }
}
