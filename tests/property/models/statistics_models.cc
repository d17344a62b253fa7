#include "property/models/statistics_models.h"

#include <iterator>

#include "property/models/agree.h"
#include "property/models/pair_sequence.h"
#include "property/models/sequences.h"

namespace tree::testing {

namespace {

constexpr int kMaxCount = 8;

// The eight single bits, and words that are none of them.
constexpr unsigned int kFlags[] = {0, 1, 2, 3, 4, 6, 8, 16, 24, 32, 64, 128, 129, 255, 256};

bool IsSingleFlag(unsigned int flag) {
  for (unsigned int single = 1; single <= 128; single *= 2) {
    if (flag == single) return true;
  }
  return false;
}

}  // namespace

double ClassModel::Count() const {
  double sum = 0.0;
  for (double const count : counts) sum += count;
  return sum;
}

double RegressionModel::Extended(unsigned int flag, double absent) const {
  auto const found = extended.find(flag);
  return found == extended.end() ? absent : found->second;
}

RegressionModel RegressionModel::Copy() const {
  RegressionModel copy = *this;
  copy.extended[1] = StdDev();
  return copy;
}

bool RegressionModel::Equals(RegressionModel const& other) const {
  return mean == other.mean && minimum == other.minimum && maximum == other.maximum &&
         StdDev() == other.StdDev() && Prediction() == other.Prediction() && bins == other.bins &&
         UnweightedCount() == other.UnweightedCount() && count == other.count;
}

void Change(ClsInfoImp& info, ClassModel& model, Choices& choices) {
  int const operation = choices.Below(6);
  double const value = choices.Value();
  auto const number = static_cast<std::size_t>(choices.Below(kMaxCount));
  int const index = static_cast<int>(number);
  switch (operation) {
    case 0:
      info.SetNumClasses(index);
      model.counts.resize(number);
      model.probabilities.resize(number);
      break;
    case 1:
      if (number >= model.counts.size()) break;
      info.SetClassCount(index, value);
      model.counts[number] = value;
      break;
    case 2:
      if (number >= model.counts.size()) break;
      info.SetClassProbability(index, value);
      model.probabilities[number] = value;
      break;
    case 3:
      info.SetPrediction(index - 2);
      model.prediction = index - 2;
      break;
    case 4:
      info.SetUnweightedCount(value);
      model.unweighted = value;
      break;
    default:
      info.SetPercentSize(value);
      model.percent = value;
      break;
  }
}

void Change(RegInfoImp& info, RegressionModel& model, Choices& choices) {
  int const operation = choices.Below(10);
  double const value = choices.Value();
  auto const number = static_cast<std::size_t>(choices.Below(kMaxCount));
  int const index = static_cast<int>(number);
  switch (operation) {
    case 0:
      info.SetCount(value);
      model.count = value;
      break;
    case 1:
      info.SetMean(value);
      model.mean = value;
      break;
    case 2:
      info.SetMinimum(value);
      model.minimum = value;
      break;
    case 3:
      info.SetMaximum(value);
      model.maximum = value;
      break;
    case 4:
      info.SetNumBins(index);
      model.bins.resize(number);
      break;
    case 5:
      if (number >= model.bins.size()) break;
      info.SetBinSize(index, value);
      model.bins[number] = value;
      break;
    case 6:
      if (number != 0) break;
      info.Clear();
      model = RegressionModel();
      break;
    default: {
      // Mostly one of the eight bits, now and then another word, which must change nothing.
      unsigned int const single = 1U << number;
      unsigned int const flag =
          choices.Below(8) == 1 ? static_cast<unsigned int>(choices.Below(256)) * 3 : single;
      info.SetExtendedStatistic(static_cast<RegInfoImp::StatisticStorageFlags>(flag), value);
      if (IsSingleFlag(flag)) model.extended[flag] = value;
      break;
    }
  }
}

void Change(PredictorImp& summary, PredictorModel& model, Choices& choices) {
  int const operation = choices.Below(4);
  int const number = choices.Below(kMaxCount);
  if (operation == 0) {
    model.minimum = choices.Value();
    model.maximum = choices.Value();
    summary.SetValueRange(model.minimum, model.maximum);
  } else if (operation == 1) {
    summary.SetNumValues(number - 1);
    model.values.resize(static_cast<std::size_t>(number == 0 ? 0 : number - 1));
  } else if (operation == 2) {
    model.values.clear();
    for (int left = number; left > 0; --left) model.values.push_back(choices.Value());
    summary.SetValues(model.values.data(), number);
  } else {
    model.hasMissing = choices.Flag();
    summary.SetHasMissingValues(model.hasMissing);
  }
}

void Check(ClsInfoImp const& info, ClassModel const& model) {
  double const count = model.Count();
  Agree("GetNumClasses", info.GetNumClasses(), static_cast<int>(model.counts.size()));
  Agree("ClsInfoImp::GetCount", info.GetCount(), count);
  Agree("ClsInfoImp::GetPrediction", info.GetPrediction(), model.prediction);
  Agree("ClsInfoImp::GetUnweightedCount", info.GetUnweightedCount(), model.unweighted);
  Agree("GetPercentSize", info.GetPercentSize(), model.percent);
  for (int index = 0; index < info.GetNumClasses(); ++index) {
    double const expected = model.counts[static_cast<std::size_t>(index)];
    Agree("GetClassCount", info.GetClassCount(index), expected);
    Agree("GetClassPercent", info.GetClassPercent(index), count > 0.0 ? expected / count : 0.0);
  }
  int const numProbabilities = static_cast<int>(model.probabilities.size());
  for (int index = -1; index <= numProbabilities; ++index) {
    bool const known = index >= 0 && index < numProbabilities;
    Agree("GetClassProbability", info.GetClassProbability(index),
          known ? model.probabilities[static_cast<std::size_t>(index)] : -1.0);
  }
}

void Check(RegInfoImp const& info, RegressionModel const& model) {
  Agree("RegInfoImp::GetCount", info.GetCount(), model.count);
  Agree("GetMean", info.GetMean(), model.mean);
  Agree("GetMinimum", info.GetMinimum(), model.minimum);
  Agree("GetMaximum", info.GetMaximum(), model.maximum);
  Agree("GetStdDev", info.GetStdDev(), model.StdDev());
  Agree("RegInfoImp::GetPrediction", info.GetPrediction(), model.Prediction());
  Agree("RegInfoImp::GetUnweightedCount", info.GetUnweightedCount(), model.UnweightedCount());
  int const numBins = static_cast<int>(model.bins.size());
  Agree("GetNumBins", info.GetNumBins(), numBins);
  for (int index = 0; index < numBins; ++index) {
    double const range = model.maximum - model.minimum;
    Agree("GetBinSize", info.GetBinSize(index), model.bins[static_cast<std::size_t>(index)]);
    Agree("GetBinLeftEndPoint", info.GetBinLeftEndPoint(index),
          range * index / numBins + model.minimum);
    Agree("GetBinRightEndPoint", info.GetBinRightEndPoint(index),
          range * (index + 1) / numBins + model.minimum);
  }
  for (unsigned int const flag : kFlags) {
    auto const storageFlag = static_cast<RegInfoImp::StatisticStorageFlags>(flag);
    bool const present = model.extended.contains(flag);
    auto const position =
        static_cast<int>(std::distance(model.extended.begin(), model.extended.lower_bound(flag)));
    bool const canInsert = IsSingleFlag(flag) && !present;
    double value = 4711.0;
    Agree("GetExtendedStatistic", info.GetExtendedStatistic(storageFlag, &value), present);
    Agree("GetExtendedStatistic", value, model.Extended(flag, 4711.0));
    if (present) Agree("GetExtendedStatistic", info.GetExtendedStatistic(storageFlag), value);
    Agree("GetExtendedStatisticPos", info.GetExtendedStatisticPos(storageFlag),
          present ? position : -1);
    Agree("GetExtendedStatisticInsertionPos", info.GetExtendedStatisticInsertionPos(storageFlag),
          canInsert ? position : -1);
  }
}

void Check(PredictorImp const& summary, PredictorModel const& model) {
  double minimum = 4711.0;
  double maximum = 4711.0;
  int count = -1;
  Agree("GetValueRange", summary.GetValueRange(&minimum, &maximum), true);
  Agree("minimum", minimum, model.minimum);
  Agree("maximum", maximum, model.maximum);
  Agree("GetNumValues", summary.GetNumValues(&count), true);
  Agree("number of values", count, static_cast<int>(model.values.size()));
  Agree("HasMissingValues", summary.HasMissingValues(), model.hasMissing);
  for (int wanted = -1; wanted <= count + 1; ++wanted) {
    bool const possible = wanted >= 0 && wanted <= count;
    std::vector<double> values(model.values.size() + 1, 4711.0);
    Agree("GetValues", summary.GetValues(values.data(), wanted), possible);
    for (std::size_t index = 0; index < values.size(); ++index) {
      bool const written = possible && static_cast<int>(index) < wanted;
      Agree("value", values[index], written ? model.values[index] : 4711.0);
    }
  }
}

void RunClassDistributions(Choices choices) { RunPair<ClsInfoImp, ClassModel>(choices); }

void RunRegressionStatistics(Choices choices) { RunPair<RegInfoImp, RegressionModel>(choices); }

void RunPredictorSummaries(Choices choices) { RunPair<PredictorImp, PredictorModel>(choices); }

}  // namespace tree::testing
