#include "peers/rpart/grown_tree.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "tree/settings.h"

namespace tree::grow::rpart {
namespace {

/// Every ordered predictor sorted: what codes make of them is the same, as other tests show.
constexpr GrowOptions kOptions{0, 0.3, 0};

constexpr int kMostCategories = 1000;  // more than any predictor has

global::MeasurementLevel LevelOf(Predictor const& predictor) {
  switch (predictor.level) {
    case Level::kNominal:
      return global::MeasurementNominal;
    case Level::kOrdinal:
      return global::MeasurementOrdinal;
    default:
      return global::MeasurementContinuous;
  }
}

CsvOptions OptionsFor(Fixture const& fixture) {
  CsvOptions options;
  for (Predictor const& predictor : fixture.predictors) {
    options.levels[predictor.name] = LevelOf(predictor);
  }
  options.levels[fixture.target] =
      fixture.classes.empty() ? global::MeasurementContinuous : global::MeasurementNominal;
  if (fixture.weights) options.levels[fixture.weights->column] = global::MeasurementContinuous;
  return options;
}

CaseRoles RolesFor(Fixture const& fixture, DataSet const& data, WeightsMean weightsMean) {
  CaseRoles roles;
  roles.target = data.RequireColumn(fixture.target);
  for (Predictor const& predictor : fixture.predictors) {
    roles.predictors.push_back(data.RequireColumn(predictor.name));
  }
  if (fixture.weights) {
    auto& role =
        weightsMean == WeightsMean::kFrequencies ? roles.frequencyWeight : roles.caseWeight;
    role = data.RequireColumn(fixture.weights->column);
  }
  return roles;
}

void SetLimits(Fixture const& fixture, CartSettings& settings) {
  auto const limitOf = [&](char const* name) {
    return static_cast<int>(fixture.settings.at(name));
  };
  StopRule& stopRule = *settings.GetStopRule();
  stopRule.SetMinImprovement(0.0);
  stopRule.SetMinNodeSize(limitOf("minsplit"));
  stopRule.SetMinNodePercentSize(0.0);
  stopRule.SetMinChildSize(limitOf("minbucket"));
  stopRule.SetMinChildPercentSize(0.0);
  stopRule.SetMaxTreeDepth(limitOf("maxdepth"));
  settings.SetMaxNumCompetitors(limitOf("maxcompete") + 1);  // ours counts the primary split
  settings.SetMaxNumSurrogates(limitOf("maxsurrogate"));
  settings.SetMaxNominalPredCategories(kMostCategories);
}

/// Classes have the indexes of the fixture: both sort labels by bytes.
void SetPriorsAndCosts(Fixture const& fixture, CCartSettings& settings) {
  bool const areGiven = fixture.classes.front().priorIsGiven;
  if (!areGiven) settings.GetPriors()->Set(PriorTypeAlternate);
  auto const numClasses = static_cast<int>(fixture.classes.size());
  CostImp& costs = dynamic_cast<CostImp&>(*settings.GetCost());
  costs.SetDefault(CostImp::CostMatrixMain, numClasses);
  for (int predicted = 0; predicted < numClasses; ++predicted) {
    TargetClass const& of = fixture.classes[static_cast<std::size_t>(predicted)];
    if (areGiven) settings.GetPriors()->Set(predicted, of.prior);
    for (std::size_t observed = 0; observed < of.costs.size(); ++observed) {
      costs.Set(predicted, static_cast<int>(observed), of.costs[observed]);
    }
    settings.GetPriors()->AlterValues(!of.costs.empty());
  }
}

void Demand(bool worked, Grower const& grower) {
  if (!worked) throw std::runtime_error(grower.GetFailureMessage());
}

bool IsSplit(NodeImp const& node) { return node.GetNumChildren() > 0; }

}  // namespace

GrownTree::GrownTree(Fixture const& fixture, std::filesystem::path const& dataFolder,
                     WeightsMean weightsMean)
    : fixture_(fixture),
      csv_(ReadCsv((dataFolder / fixture.dataFile).string(), OptionsFor(fixture))),
      roles_(RolesFor(fixture, csv_->data, weightsMean)) {
  CoreSettingsImp const core = MakeCoreSettings(csv_->data, roles_);
  if (fixture.classes.empty()) {
    RCartSettingsImp settings(core);
    SetLimits(fixture, settings);
    grower_ = MakeGrower(csv_->data, roles_, settings, kOptions);
  } else {
    CCartSettingsImp settings(core);
    SetLimits(fixture, settings);
    SetPriorsAndCosts(fixture, settings);
    grower_ = MakeGrower(csv_->data, roles_, settings, kOptions);
  }
  Demand(grower_->Grow(), *grower_);
  SendCasesAsRpartDoes();
  PruneAt(fixture.settings.at("cp"));
}

/// Where rpart's own surrogates send cases elsewhere, the trees below would be of different cases:
/// there the root takes over rpart's cut points, and what is below it grows again.
void GrownTree::SendCasesAsRpartDoes() {
  std::optional<SurrogatesByDefinition> const& defined = fixture_.nodes.front().byDefinition;
  if (!defined || defined->numMoved == 0) return;
  std::unique_ptr<NodeImp> root(grower_->GetTree()->Clone());
  for (int position = 0; position < root->GetNumSurrogates(); ++position) {
    SplitRuleImp& rule = *root->GetSurrogateImp(static_cast<unsigned int>(position));
    auto const theirs = std::find_if(
        fixture_.nodes.front().surrogates.begin(), fixture_.nodes.front().surrogates.end(),
        [&](Surrogate const& each) { return each.predictor == PredictorOf(rule).name; });
    if (theirs == fixture_.nodes.front().surrogates.end()) continue;
    if (auto const* const cut = std::get_if<Cut>(&theirs->ways)) {
      dynamic_cast<OSplitRule&>(rule).SetCutPoint(cut->value);
    }
  }
  std::array<unsigned int, 2> const children{root->GetChild(0)->GetId(),
                                             root->GetChild(1)->GetId()};
  grownFirst_[1].reset(grower_->GetTree()->Clone());
  Demand(grower_->SetTree(root.release()), *grower_);
  for (unsigned int const child : children) {
    Demand(grower_->GrowNode(child, static_cast<int>(fixture_.settings.at("maxdepth")) - 1),
           *grower_);
  }
}

/// `complexity`: relative to the risk of the root, below 0 for the whole tree.
void GrownTree::PruneAt(double complexity) {
  std::vector<PruningStep> steps;
  Demand(grower_->GetPruningSequence(&steps), *grower_);
  double const limit = complexity * steps.back().risk;
  std::size_t step = 0;
  while (step + 1 < steps.size() && steps[step + 1].complexity <= limit) ++step;
  for (unsigned int const id : steps[step].nodesToPrune) {
    Demand(grower_->PruneNode(id), *grower_);
  }
}

std::vector<NodePair> GrownTree::PairNodes() const {
  std::map<unsigned long long, NodeImp const*> ours{{1, grower_->GetTree()}};  // by their number
  std::vector<NodePair> pairs;
  for (Node const& node : fixture_.nodes) {
    auto const found = ours.find(node.number);
    if (found == ours.end()) continue;
    NodePair& pair = pairs.emplace_back(NodePair{&node, found->second, 0});
    if (node.splits.empty() || !IsSplit(*pair.ours)) continue;
    SplitRuleImp const& primary = *pair.ours->GetCompetitorImp(0);
    if (PredictorOf(primary).name != node.splits.front().predictor) continue;
    pair.leftChild = LeftChild(primary, node.splits.front().ways);
    auto const left = static_cast<unsigned int>(pair.leftChild);
    ours[2 * node.number] = pair.ours->GetChildImp(left);
    ours[2 * node.number + 1] = pair.ours->GetChildImp(1 - left);
  }
  return pairs;
}

NodeImp const& GrownTree::AsGrownFirst(NodePair const& pair) const {
  auto const first = grownFirst_.find(pair.theirs->number);
  return first != grownFirst_.end() ? *first->second : *pair.ours;
}

Predictor const& GrownTree::PredictorOf(SplitRuleImp const& rule) const {
  return fixture_.predictors.at(static_cast<std::size_t>(rule.GetPredictorIndex()));
}

double GrownTree::CodeOf(std::string const& predictor, std::string const& label) const {
  auto const& labels = csv_->data.GetColumn(csv_->data.RequireColumn(predictor)).description.labels;
  auto const found = std::find(labels.begin(), labels.end(), label);
  if (found == labels.end()) throw std::runtime_error(predictor + " has no category " + label);
  return static_cast<double>(found - labels.begin());
}

int GrownTree::LeftChild(SplitRuleImp const& rule, Ways const& ways) const {
  if (auto const* const cut = std::get_if<Cut>(&ways)) {
    int const lower = rule.Classify(dynamic_cast<OSplitRule const&>(rule).GetCutPoint());
    return cut->lowerGoesLeft ? lower : 1 - lower;
  }
  return rule.Classify(CodeOf(PredictorOf(rule).name, std::get<Sets>(ways).left.front())) == 1;
}

bool GrownTree::Divides(SplitRuleImp const& rule, Ways const& ways, int leftChild,
                        std::set<std::string> const& either) const {
  if (auto const* const cut = std::get_if<Cut>(&ways)) {
    double const cutPoint = dynamic_cast<OSplitRule const&>(rule).GetCutPoint();
    return std::abs(cutPoint - cut->value) <= 1e-12 * std::abs(cut->value) &&
           LeftChild(rule, ways) == leftChild;
  }
  Sets const& sets = std::get<Sets>(ways);
  Predictor const& predictor = PredictorOf(rule);
  return std::all_of(
      predictor.categories.begin(), predictor.categories.end(), [&](std::string const& label) {
        auto const isIn = [&](std::vector<std::string> const& side) {
          return std::find(side.begin(), side.end(), label) != side.end();
        };
        int const expected = isIn(sets.left) ? leftChild : isIn(sets.right) ? 1 - leftChild : -1;
        int const child = rule.Classify(CodeOf(predictor.name, label));
        return child == expected || (child >= 0 && expected >= 0 && either.count(label) > 0);
      });
}

std::set<std::string> GrownTree::EvenCategories(NodePair const& pair,
                                                std::string const& predictor) const {
  Column const& column = csv_->data.GetColumn(csv_->data.RequireColumn(predictor));
  SplitRuleImp const& primary = *pair.ours->GetCompetitorImp(0);
  CaseSelection const cases(csv_->data, roles_);
  std::vector<std::size_t> const& rows = cases.GetRows(TrainingSample);
  std::vector<double> const& weights = cases.GetWeights(TrainingSample);
  std::map<double, double> balances;  // by code
  std::vector<double> values(roles_.predictors.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    CopyCase(csv_->data, roles_.predictors, rows[i], values.data());
    if (grower_->GetTree()->DropObservationThroughTree(values.data(), pair.ours) == nullptr)
      continue;
    int const child =
        primary.Classify(values[static_cast<std::size_t>(primary.GetPredictorIndex())]);
    if (child < 0 || column.IsMissing(rows[i])) continue;
    balances[column.values[rows[i]]] +=
        (child == 0 ? 1.0 : -1.0) * (weights.empty() ? 1.0 : weights[i]);
  }
  std::set<std::string> even;
  for (auto const& [code, balance] : balances) {
    if (balance == 0.0) even.insert(column.description.labels[static_cast<std::size_t>(code)]);
  }
  return even;
}

std::string GrownTree::Describe(SplitRuleImp const& rule) const {
  std::ostringstream text;
  text.precision(17);
  Predictor const& predictor = PredictorOf(rule);
  text << predictor.name;
  if (rule.IsOrdered()) {
    double const cutPoint = dynamic_cast<OSplitRule const&>(rule).GetCutPoint();
    text << " up to " << cutPoint << " to child " << rule.Classify(cutPoint);
    return text.str();
  }
  for (int child = 0; child < 2; ++child) {
    text << "; child " << child << ':';
    for (std::string const& label : predictor.categories) {
      if (rule.Classify(CodeOf(predictor.name, label)) == child) text << ' ' << label;
    }
  }
  return text.str();
}

}  // namespace tree::grow::rpart
