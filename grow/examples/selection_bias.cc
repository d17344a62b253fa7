// Shows which predictors the algorithms prefer where there is nothing to choose: selection_bias
// [TRIALS]
//
// In each trial, classes are drawn that have nothing to do with any predictor, and each algorithm
// splits the root. An algorithm that looks at every split prefers predictors with many of them;
// one that tests each predictor first should choose all about equally often. In kind the simulation
// of Loh and Shih 1997, Split selection methods for classification trees, section 5.

#include <array>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <memory>
#include <random>
#include <vector>

#include "tree/grow/grower.h"

namespace {

using namespace tree;
using namespace tree::grow;

constexpr std::size_t kNumCases = 300;
constexpr int kNumClasses = 3;

struct Predictor {
  char const* name;
  global::MeasurementLevel level;
  int numValues;  // 0 for as many as there are cases
};
constexpr std::array<Predictor, 6> kPredictors{{
    {"normal", global::MeasurementContinuous, 0},
    {"exponential", global::MeasurementContinuous, 0},
    {"ordinal, 2 values", global::MeasurementOrdinal, 2},
    {"ordinal, 10 values", global::MeasurementOrdinal, 10},
    {"nominal, 2 categories", global::MeasurementNominal, 2},
    {"nominal, 15 categories", global::MeasurementNominal, 15},
}};

class Trial {
 public:
  explicit Trial(std::mt19937& engine) : data_(kNumCases) {
    roles_.target = Add("class", global::MeasurementNominal,
                        [&] { return static_cast<double>(engine() % kNumClasses); });
    std::normal_distribution<double> normal;
    std::exponential_distribution<double> exponential;
    for (Predictor const& predictor : kPredictors) {
      roles_.predictors.push_back(Add(predictor.name, predictor.level, [&] {
        if (predictor.numValues > 0) {
          return static_cast<double>(engine() % static_cast<unsigned int>(predictor.numValues));
        }
        return roles_.predictors.empty() ? normal(engine) : exponential(engine);
      }));
    }
  }

  CoreSettingsImp MakeSettings() const { return MakeCoreSettings(data_, roles_); }

  /// The predictor that splits the root.
  std::size_t Choose(AlgSettings& settings) const {
    settings.GetStopRule()->SetMaxTreeDepth(1);
    settings.GetStopRule()->SetMinNodeSize(2);
    settings.GetStopRule()->SetMinChildSize(1);
    settings.GetStopRule()->SetMinImprovement(0.0);
    auto const grower = MakeGrower(data_, roles_, settings, {.numThreads = 1});
    if (!grower->Grow()) throw InputError(grower->GetFailureMessage());
    NodeImp const& root = *grower->GetTree();
    if (root.GetNumCompetitors() == 0) throw InputError("a root was not split");
    return static_cast<std::size_t>(root.GetCompetitorImp(0)->GetPredictorIndex());
  }

 private:
  template <class Draw>
  int Add(char const* name, global::MeasurementLevel level, Draw const& draw) {
    ColumnDescription description;
    description.name = name;
    description.level = level;
    std::vector<double> values(kNumCases);
    for (double& value : values) value = draw();
    return data_.AddColumn(description, values);
  }

  DataSet data_;
  CaseRoles roles_;
};

void Simulate(int numTrials) {
  std::array<std::array<int, 3>, kPredictors.size()> chosen{};
  std::mt19937 engine(17);
  for (int number = 0; number < numTrials; ++number) {
    Trial const trial(engine);
    CCartSettingsImp cart(trial.MakeSettings());
    ++chosen[trial.Choose(cart)][0];
    CChaidSettingsImp chaid(trial.MakeSettings());
    chaid.SetAlphaOfSplitNode(1.0);
    ++chosen[trial.Choose(chaid)][1];
    QuestSettingsImp quest(trial.MakeSettings());
    ++chosen[trial.Choose(quest)][2];
  }
  std::cout << numTrials << " trials, " << std::fixed << std::setprecision(1)
            << 100.0 / kPredictors.size() << " % for each predictor without a preference\n"
            << std::left << std::setw(26) << "" << std::right << "   CART   CHAID   QUEST\n";
  for (std::size_t predictor = 0; predictor < kPredictors.size(); ++predictor) {
    std::cout << std::left << std::setw(26) << kPredictors[predictor].name << std::right;
    for (int const count : chosen[predictor]) {
      std::cout << std::setw(6) << 100.0 * count / numTrials << " %";
    }
    std::cout << '\n';
  }
}

}  // namespace

int main(int argc, char* argv[]) {
  int const numTrials = argc == 2 ? std::atoi(argv[1]) : 10000;
  if (argc > 2 || numTrials < 1) {
    std::cerr << "usage: selection_bias [TRIALS]\n";
    return 2;
  }
  try {
    Simulate(numTrials);
  } catch (InputError const& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
