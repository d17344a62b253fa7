#include "growing/tree_grower.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <new>
#include <numeric>
#include <utility>

#include "growing/class_priors.h"
#include "growing/gains_table.h"
#include "growing/placement.h"
#include "growing/random_draws.h"

namespace tree::grow {
namespace {

/// Ends an operation with a failure; does not leave the library.
struct Refusal {
  AlgorithmFailure failure;
  std::string message;
};

constexpr char const* kNoTrainingCases = "there are no training cases";

std::string Quoted(Column const& column) { return "\"" + column.description.name + "\""; }

/// The cases of one sample, by row, as `CaseSelection` gives them.
struct Cases {
  std::vector<std::size_t> rows;
  std::vector<double> weights;
  std::vector<double> frequencies;
};

bool AreWhole(std::vector<double> const& numbers) {
  return std::all_of(numbers.begin(), numbers.end(),
                     [](double number) { return number == std::floor(number); });
}

/// Cases that are there as often as their frequencies, which are whole, say. `caseWeights`: by row;
/// null when there are none.
Cases Repeat(Cases const& cases, double const* caseWeights, PollFunction const& poll) {
  double const size = std::accumulate(cases.frequencies.begin(), cases.frequencies.end(), 0.0);
  if (size > SortedCase::kMaxPlace) {
    throw InputError("frequencies make more than " + std::to_string(SortedCase::kMaxPlace) +
                     " cases of the rows, too many to draw from");
  }
  Cases repeated;
  repeated.rows.reserve(static_cast<std::size_t>(size));
  ForSlices(cases.rows.size(), poll, [&](std::size_t begin, std::size_t end) {
    for (std::size_t index = begin; index < end; ++index) {
      repeated.rows.insert(repeated.rows.end(), static_cast<std::size_t>(cases.frequencies[index]),
                           cases.rows[index]);
    }
  });
  if (caseWeights == nullptr) return repeated;
  repeated.weights.reserve(repeated.rows.size());
  for (std::size_t const row : repeated.rows) repeated.weights.push_back(caseWeights[row]);
  return repeated;
}

/// Many classes cost much: what a node knows of them grows with their number, and so do the tables
/// of categories; the costs with its square.
constexpr std::size_t kManyClasses = 1000;

/// Below the complexity of every pruned subtree: trees stay grown out, with leaves that do not
/// lower the risk, too.
constexpr double kGrownOut = -1.0;

/// Children removed and replaced one by one would leave rules without them: nodes are swapped
/// whole.
std::size_t PositionInParent(NodeImp const& node) {
  auto const& parent = static_cast<NodeImp const&>(*node.GetParent());
  std::size_t position = 0;
  while (parent.GetChildImp(static_cast<unsigned int>(position)) != &node) ++position;
  return position;
}

}  // namespace

struct TreeGrower::Sprout {
  std::vector<std::uint32_t> testCases;  // of the node that it is to replace
  std::unique_ptr<CaseLists> lists;
  std::unique_ptr<SplitMethod> method;
  std::unique_ptr<NodeStatistics> statistics;
  std::unique_ptr<Growth> growth;
  std::unique_ptr<NodeImp> root;
  unsigned int nextId = 0;
};

TreeGrower::TreeGrower(DataSet const& data, CaseRoles const& roles, Algorithm algorithm,
                       GrowOptions const& options)
    : algorithm_(std::move(algorithm)), workers_(options.numThreads) {
  workers_.SetListener(options.listener);
  workers_.Begin();
  workers_.BeginStage("reading the data", 0.0, 1.0);
  SelectSamples(data, roles, options);
  std::size_t const numClasses = training_->GetNumClasses();
  if (numClasses > kManyClasses) {
    ownRemarks_.push_back("target " + Quoted(data.GetColumn(roles.target)) + " has " +
                          std::to_string(numClasses) +
                          " classes, which takes much time and memory");
  }
  remarks_ = ownRemarks_;
  if (numClasses > 0) CheckClassNumbers(*algorithm_.priors, *algorithm_.costs, numClasses);
  if (training_->GetNumCases() > 0) basis_ = MakeBasis({});
}

TreeGrower::~TreeGrower() = default;

// ---- Data ----

void TreeGrower::SelectSamples(DataSet const& data, CaseRoles const& roles,
                               GrowOptions const& options) {
  PollFunction const poll = [this] { workers_.Poll(); };
  CaseSelection const selection(data, roles, poll);
  leftOut_ = selection.GetLeftOut();
  workers_.Advance(0.5);
  std::array<Cases, 2> samples;
  for (DataSample const sample : {TrainingSample, TestSample}) {
    samples[static_cast<std::size_t>(sample)] = {
        selection.GetRows(sample), selection.GetWeights(sample), selection.GetFrequencies(sample)};
  }
  bool const drawsSample = GetValidation() == ValidationSplitSample && !roles.sample.has_value();
  if (drawsSample || GetValidation() == ValidationCrossValidation) {
    // A case of frequency 3 is three cases, which are drawn one by one.
    Cases& cases = samples[TrainingSample];
    if (!AreWhole(cases.frequencies)) {
      ownRemarks_.push_back("column " + Quoted(data.GetColumn(*roles.frequencyWeight)) +
                            " has frequencies that are no whole numbers: validation draws each "
                            "row as a whole");
    } else if (!cases.frequencies.empty()) {
      cases = Repeat(
          cases, roles.caseWeight.has_value() ? data.GetColumn(*roles.caseWeight).values : nullptr,
          poll);
    }
  }
  if (drawsSample) {
    Cases const all = std::move(samples[TrainingSample]);
    samples = {};
    auto const drawn =
        DrawTestSample(all.rows.size(), options.testShare,
                       algorithm_.settings->GetValidationSpec()->GetRandomSeed(), poll);
    ForSlices(all.rows.size(), poll, [&](std::size_t begin, std::size_t end) {
      for (std::size_t index = begin; index < end; ++index) {
        Cases& chosen = samples[drawn[index]];
        chosen.rows.push_back(all.rows[index]);
        if (!all.weights.empty()) chosen.weights.push_back(all.weights[index]);
        if (!all.frequencies.empty()) chosen.frequencies.push_back(all.frequencies[index]);
      }
    });
  }
  auto const make = [&](Cases& cases) {
    return std::make_unique<TrainingData>(data, roles, *algorithm_.settings, std::move(cases.rows),
                                          cases.weights, cases.frequencies, options.maxCodedValues,
                                          algorithm_.numIntervals, algorithm_.orderedForm, poll);
  };
  training_ = make(samples[TrainingSample]);
  if (!samples[TestSample].rows.empty()) {
    test_ = make(samples[TestSample]);
    training_->ShareTarget(*test_);
  }
}

std::size_t TreeGrower::GetNumCases(DataSample sample) const noexcept {
  TrainingData const* const data = sample == TrainingSample ? training_.get() : test_.get();
  if (data == nullptr || data->GetNumCases() == 0) return 0;
  return std::max<std::size_t>(1, static_cast<std::size_t>(std::round(data->GetSize())));
}

int TreeGrower::GetNumFolds() const noexcept {
  auto const numCases =
      static_cast<int>(std::min<std::size_t>(training_->GetNumCases(), SortedCase::kMaxPlace));
  return std::min(std::as_const(*algorithm_.settings).GetValidationSpec()->GetNumCVFolds(),
                  numCases);
}

/// Folds grow trees, for which predictors have to be ready; risks on a sample are found by routing.
void TreeGrower::PrepareToEstimate() {
  if (training_->GetNumCases() == 0) throw Refusal{FailureNoData, kNoTrainingCases};
  if (GetValidation() == ValidationCrossValidation) Prepare(0.1);
}

PruningPath TreeGrower::FindPath(IndexedTree const& tree) {
  return {tree, NodeRisks(tree, basis_.Classes()), [this] { workers_.Poll(); }};
}

/// Makes the data ready, which takes `share` of the operation if it is the first.
void TreeGrower::Prepare(double share) {
  if (training_->GetNumCases() == 0) throw Refusal{FailureNoData, kNoTrainingCases};
  workers_.BeginStage("preparing the data", 0.0, share);
  training_->PreparePredictors(workers_);
  remarks_ = ownRemarks_;
  remarks_.insert(remarks_.end(), training_->GetRemarks().begin(), training_->GetRemarks().end());
}

TreeGrower::Basis TreeGrower::MakeBasis(std::vector<std::uint8_t> const& included) {
  std::vector<std::uint32_t> cases = AllCases(*training_);
  if (!included.empty()) {
    std::erase_if(cases, [&](std::uint32_t index) { return included[index] == 0; });
  }
  NodeSums const sums = SumCases(*training_, cases, [this] { workers_.Poll(); });
  Basis basis;
  basis.totalWeight = static_cast<double>(sums.weight) * training_->GetWeights().unit;
  if (training_->GetNumClasses() > 0) {
    basis.classes.emplace(*algorithm_.priors, *algorithm_.costs, ClassWeightsOf(*training_, sums));
  }
  return basis;
}

GrowthLimits TreeGrower::MakeLimits(int maxLevels) const {
  StopRule const& rule = *std::as_const(*algorithm_.settings).GetStopRule();
  double const size = training_->GetSize();
  GrowthLimits limits;
  limits.maxLevels = maxLevels;
  limits.minNodeSize = std::max(static_cast<double>(rule.GetMinNodeSize()),
                                rule.GetMinNodePercentSize() / 100.0 * size);
  limits.minChildSize = std::max(static_cast<double>(rule.GetMinChildSize()),
                                 rule.GetMinChildPercentSize() / 100.0 * size);
  return limits;
}

// ---- Failures ----

/// Runs an operation and turns what it throws into a failure.
template <class Operation>
bool TreeGrower::Attempt(Operation const& operation) noexcept {
  failure_ = FailureNone;
  message_.clear();
  auto const fail = [this](AlgorithmFailure failure, char const* message) {
    failure_ = failure;
    try {
      message_ = message;
    } catch (std::bad_alloc const&) {
      message_.clear();
    }
  };
  try {
    workers_.Begin();
    operation();
    return true;
  } catch (Refusal const& refusal) {
    fail(refusal.failure, refusal.message.c_str());
  } catch (Cancelled const&) {
    fail(FailureCancelled, "the operation was cancelled");
  } catch (std::bad_alloc const&) {
    fail(FailureOutOfMemory, "there is not enough memory");
  } catch (std::exception const& error) {
    fail(FailureInternal, error.what());
  }
  return false;
}

// ---- The tree ----

NodeImp* TreeGrower::FindNodeImp(unsigned int id) const noexcept {
  if (root_ == nullptr) return nullptr;
  PrefixNodeIterator walk(root_.get());
  while (Node const* const node = walk.Next()) {
    if (node->GetId() == id) {
      return const_cast<NodeImp*>(static_cast<NodeImp const*>(node));
    }
  }
  return nullptr;
}

NodeImp& TreeGrower::RequireNode(unsigned int id) const {
  if (root_ == nullptr) throw Refusal{FailureNoTree, "there is no tree"};
  NodeImp* const node = FindNodeImp(id);
  if (node == nullptr) {
    throw Refusal{FailureUnknownNode, "the tree has no node " + std::to_string(id)};
  }
  return *node;
}

int TreeGrower::GetNumNodes(NodeSelection selection) const noexcept {
  if (root_ == nullptr) return 0;
  int count = 0;
  PrefixNodeIterator walk(root_.get());
  while (Node const* const node = walk.Next()) {
    count += selection == AllNodes || node->GetNumChildren() == 0 ? 1 : 0;
  }
  return count;
}

GainsIntf* TreeGrower::MakeGains(GainsSettings const& settings) const noexcept {
  try {
    return root_ != nullptr ? MakeGainsTable(*root_, settings).release() : nullptr;
  } catch (std::bad_alloc const&) {
    return nullptr;
  }
}

/// The tree is another one: what was known of it holds no more.
void TreeGrower::Changed() {
  statistics_.reset();
  risksOfPath_.reset();
  risk_.reset();
}

/// Refuses a node that lacks what pruning and validation read of every node.
void TreeGrower::CheckStatistics(Node const& node) const {
  ClsInfo const* const classes = node.GetClsInfo(TrainingSample);
  bool const fits =
      IsClassificationTree()
          ? classes != nullptr &&
                static_cast<std::size_t>(classes->GetNumClasses()) == training_->GetNumClasses()
          : node.GetRegInfo(TrainingSample) != nullptr;
  if (fits && static_cast<NodeImp const&>(node).IsClassificationNode() == IsClassificationTree()) {
    if (!IsClassificationTree()) return;
    int const prediction = classes->GetPrediction();
    if (prediction >= 0 && prediction < classes->GetNumClasses()) return;
    throw Refusal{FailureInvalidArgument, "node " + std::to_string(node.GetId()) +
                                              " of the tree predicts " +
                                              std::to_string(prediction) + ", which is no class"};
  }
  throw Refusal{FailureInvalidArgument,
                "node " + std::to_string(node.GetId()) + " of the tree has no statistics of the " +
                    (IsClassificationTree() ? std::to_string(training_->GetNumClasses()) +
                                                  " classes in the training sample"
                                            : std::string("training sample"))};
}

bool TreeGrower::SetTree(NodeImp* root) noexcept {
  std::unique_ptr<NodeImp> taken(root);
  return Attempt([&] {
    unsigned int next = 0;
    if (taken != nullptr) {
      if (taken->IsClassificationNode() != IsClassificationTree()) {
        throw Refusal{FailureInvalidArgument,
                      "a classification tree and a regression tree cannot take each other's place"};
      }
      PrefixNodeIterator walk(taken.get());
      while (Node const* const node = walk.Next()) {
        CheckStatistics(*node);
        next = std::max(next, node->GetId() + 1);
      }
    }
    root_ = std::move(taken);
    nextId_ = std::max(nextId_, next);
    Changed();
  });
}

bool TreeGrower::PruneNode(unsigned int nodeId) noexcept {
  return Attempt([&] {
    RequireNode(nodeId).RemoveChildren(false);
    Changed();
  });
}

// ---- Growing ----

/// Makes a new node with the training cases of `node`, all of them when it is the root or null,
/// ready to grow. The lists of sorted predictors can be used up only with all cases.
std::unique_ptr<TreeGrower::Sprout> TreeGrower::PlantSprout(NodeImp const* node,
                                                            GrowthLimits const& limits,
                                                            SortedLists sortedLists) {
  auto sprout = std::make_unique<Sprout>();
  std::vector<std::uint8_t> included;
  if (node != root_.get() && node != nullptr) {
    IndexedTree const tree(*root_);
    std::size_t position = 0;
    while (&tree.GetNode(position) != node) ++position;
    RoutedCases const routed(tree, *training_, AllCases(*training_), workers_);
    included.assign(training_->GetNumCases(), 0);
    for (std::uint32_t const index : routed.CasesOf(position)) included[index] = 1;
    if (test_ != nullptr) {
      RoutedCases const tested(tree, *test_, AllCases(*test_), workers_);
      auto const cases = tested.CasesOf(position);
      sprout->testCases.assign(cases.begin(), cases.end());
    }
  } else if (test_ != nullptr) {
    sprout->testCases = AllCases(*test_);
  }
  sprout->lists =
      sortedLists == SortedLists::kUsedUp
          ? std::make_unique<CaseLists>(*training_, workers_, algorithm_.codeOrder)
          : std::make_unique<CaseLists>(*training_, included, workers_, algorithm_.codeOrder);
  sprout->method =
      algorithm_.makeMethod(*training_, basis_.Classes(), limits.minChildSize, basis_.totalWeight);
  sprout->statistics = std::make_unique<NodeStatistics>(*training_, TrainingSample,
                                                        basis_.Classes(), basis_.totalWeight);
  sprout->nextId = nextId_;
  sprout->growth = std::make_unique<Growth>(*training_, *sprout->lists, *sprout->method,
                                            *sprout->statistics, limits, sprout->nextId, workers_);
  sprout->root = std::make_unique<NodeImp>();
  sprout->root->SetId(node != nullptr ? node->GetId() : 0);
  if (sprout->lists->GetRoot().places.Size() == 0) {
    throw Refusal{FailureNoData,
                  "no training case reaches node " + std::to_string(sprout->root->GetId())};
  }
  sprout->growth->PlantRoot(*sprout->root);
  return sprout;
}

/// Puts a grown subtree in place of a node.
void TreeGrower::Graft(NodeImp& node, std::unique_ptr<NodeImp> grown) {
  if (&node == root_.get()) {
    root_ = std::move(grown);
  } else {
    auto* const parent = const_cast<NodeImp*>(static_cast<NodeImp const*>(node.GetParent()));
    auto const position = static_cast<unsigned int>(PositionInParent(node));
    parent->SetChild(position, grown.release());
    delete &node;
  }
  Changed();
}

/// Gives the nodes of a subtree the statistics of the test sample, of which `cases` reach it.
void TreeGrower::FillTestStatistics(NodeImp& root, std::vector<std::uint32_t> const& cases) {
  if (test_ == nullptr) return;
  workers_.BeginStage("testing", 0.9, 1.0);
  IndexedTree const tree(root);
  RoutedCases const routed(tree, *test_, cases, workers_);
  PollFunction const poll = [this] { workers_.Poll(); };
  double const total = static_cast<double>(SumCases(*test_, AllCases(*test_), poll).weight) *
                       test_->GetWeights().unit;
  NodeStatistics const statistics(*test_, TestSample, basis_.Classes(), total);
  workers_.Run(tree.GetNumNodes(), [&](std::size_t position) {
    auto const ofNode = routed.CasesOf(position);
    statistics.Fill(const_cast<NodeImp&>(tree.GetNode(position)), ofNode,
                    SumCases(*test_, ofNode, poll), poll);
  });
}

bool TreeGrower::Grow() noexcept {
  return Attempt([&] {
    Prepare(0.3);
    workers_.BeginStage("growing the tree", 0.3, 0.9);
    GrowthLimits const limits =
        MakeLimits(std::as_const(*algorithm_.settings).GetStopRule()->GetMaxTreeDepth());
    // Ids of a whole new tree begin again: it has no node in common with an older one.
    std::unique_ptr<NodeImp> old = std::move(root_);
    unsigned int const oldNextId = std::exchange(nextId_, 1);
    try {
      // Folds of a validation are grown on the sorted lists, too.
      bool const needed = GetValidation() == ValidationCrossValidation;
      std::unique_ptr<Sprout> const sprout =
          PlantSprout(nullptr, limits, needed ? SortedLists::kKept : SortedLists::kUsedUp);
      sprout->growth->Grow();
      sprout->growth.reset();
      sprout->lists.reset();
      FillTestStatistics(*sprout->root, sprout->testCases);
      nextId_ = sprout->nextId;
      root_ = std::move(sprout->root);
      Changed();
    } catch (...) {
      root_ = std::move(old);
      nextId_ = oldNextId;
      throw;
    }
  });
}

bool TreeGrower::GrowNode(unsigned int nodeId, int numLevels) noexcept {
  return Attempt([&] {
    if (root_ == nullptr ? nodeId != 0 || numLevels < 0 : numLevels < 1) {
      if (root_ == nullptr && nodeId != 0) throw Refusal{FailureNoTree, "there is no tree"};
      throw Refusal{FailureInvalidArgument,
                    "a tree cannot grow by " + std::to_string(numLevels) + " levels"};
    }
    NodeImp* const node = root_ != nullptr ? &RequireNode(nodeId) : nullptr;
    Prepare(0.3);
    workers_.BeginStage("growing the tree", 0.3, 0.9);
    if (node == nullptr) nextId_ = std::max(nextId_, 1U);
    std::unique_ptr<Sprout> const sprout =
        PlantSprout(node, MakeLimits(numLevels), SortedLists::kKept);
    sprout->growth->Grow();
    FillTestStatistics(*sprout->root, sprout->testCases);
    nextId_ = sprout->nextId;
    if (node != nullptr) {
      Graft(*node, std::move(sprout->root));
    } else {
      root_ = std::move(sprout->root);
      Changed();
    }
  });
}

bool TreeGrower::FindCandidateSplits(unsigned int nodeId,
                                     std::vector<SplitRule>* candidates) noexcept {
  if (candidates != nullptr) candidates->clear();
  return Attempt([&] {
    if (candidates == nullptr) throw Refusal{FailureInvalidArgument, "no place for the splits"};
    NodeImp const& node = RequireNode(nodeId);
    Prepare(0.5);
    workers_.BeginStage("finding splits", 0.5, 1.0);
    std::unique_ptr<Sprout> const sprout = PlantSprout(&node, MakeLimits(1), SortedLists::kKept);
    RuleList const rules = sprout->growth->FindRootSplits();
    if (rules.empty()) {
      throw Refusal{FailureNoSplit,
                    "node " + std::to_string(nodeId) + " has no split that the settings allow"};
    }
    std::vector<SplitRule> found;
    ChildOfPlace childOf(sprout->lists->GetNumPlaces(), kNoChild);
    for (std::unique_ptr<SplitRuleImp> const& rule : rules) {
      PlaceByRule(*training_, *sprout->lists, sprout->lists->GetRoot(), *rule, childOf);
      SetDumbRule(*sprout->lists, sprout->lists->GetRoot(), childOf, *rule);
      found.emplace_back(*rule);
    }
    candidates->swap(found);
  });
}

/// Refuses a rule that does not fit the predictors.
void TreeGrower::CheckSplit(SplitRuleImp const& rule) const {
  auto const& predictors = training_->GetPredictors();
  int const index = rule.GetPredictorIndex();
  if (index < 0 || index >= static_cast<int>(predictors.size())) {
    throw Refusal{FailureInvalidSplit, "there is no predictor " + std::to_string(index)};
  }
  GrowingPredictor const& predictor = predictors[static_cast<std::size_t>(index)];
  if (rule.IsOrdered() == predictor.IsNominal()) {
    throw Refusal{FailureInvalidSplit, "predictor " + Quoted(*predictor.column) + " is " +
                                           (predictor.IsNominal() ? "nominal" : "ordered") +
                                           ", and the rule is for another kind"};
  }
  if (!predictor.used) {
    throw Refusal{FailureInvalidSplit,
                  "predictor " + Quoted(*predictor.column) + " is not used: " + predictor.whyNot};
  }
  auto const* const ordered = dynamic_cast<OSplitRule const*>(&rule);
  if (ordered != nullptr &&
      ordered->GetMissingValue() != predictor.column->description.missingValue) {
    throw Refusal{FailureInvalidSplit,
                  "the rule has another missing value than predictor " + Quoted(*predictor.column)};
  }
  if (rule.GetNumChildren() < 2 || rule.GetNumChildren() > kMaxChildren) {
    throw Refusal{FailureInvalidSplit,
                  "a split cannot have " + std::to_string(rule.GetNumChildren()) + " children"};
  }
}

bool TreeGrower::ApplySplit(unsigned int nodeId, SplitRule const& rule) noexcept {
  return Attempt([&] {
    NodeImp& node = RequireNode(nodeId);
    SplitRuleImp const* const given = rule;
    if (given == nullptr) throw Refusal{FailureInvalidSplit, "the rule is empty"};
    Prepare(0.3);
    workers_.BeginStage("splitting a node", 0.3, 0.9);
    CheckSplit(*given);
    std::unique_ptr<Sprout> const sprout = PlantSprout(&node, MakeLimits(1), SortedLists::kKept);
    ChildOfPlace childOf(sprout->lists->GetNumPlaces(), kNoChild);
    PlaceByRule(*training_, *sprout->lists, sprout->lists->GetRoot(), *given, childOf);
    std::vector<bool> reached(static_cast<std::size_t>(given->GetNumChildren()));
    for (std::uint8_t const child : childOf) {
      if (child != kNoChild) reached[child] = true;
    }
    if (std::count(reached.begin(), reached.end(), true) < 2) {
      throw Refusal{FailureInvalidSplit, "the rule sends the cases of node " +
                                             std::to_string(nodeId) + " to less than two children"};
    }
    RuleList rules = sprout->growth->FindRootSplits();
    std::erase_if(rules, [&](std::unique_ptr<SplitRuleImp> const& each) {
      return each->GetPredictorIndex() == given->GetPredictorIndex();
    });
    rules.insert(rules.begin(), std::unique_ptr<SplitRuleImp>(given->Clone()));
    auto const limit = static_cast<std::size_t>(algorithm_.settings->GetMaxNumCompetitors());
    if (rules.size() > std::max<std::size_t>(1, limit))
      rules.resize(std::max<std::size_t>(1, limit));
    sprout->root->SetNumCompetitors(static_cast<unsigned int>(rules.size()));
    for (std::size_t position = 0; position < rules.size(); ++position) {
      sprout->root->SetCompetitor(static_cast<unsigned int>(position), rules[position].release());
    }
    sprout->growth->Grow();
    FillTestStatistics(*sprout->root, sprout->testCases);
    nextId_ = sprout->nextId;
    Graft(node, std::move(sprout->root));
  });
}

// ---- Risk and pruning ----

ValidationType TreeGrower::GetValidation() const {
  return std::as_const(*algorithm_.settings).GetValidationSpec()->GetType();
}

RiskModel TreeGrower::MakeRiskModel() const {
  if (!basis_.classes.has_value()) return {};
  return {*basis_.classes, algorithm_.priors->GetType() == PriorTypeAlternate};
}

/// The risk of each subtree of the path, estimated once for the present tree: whoever has seen the
/// sequence often prunes next.
std::vector<RiskEstimate> const& TreeGrower::RisksOfPath(IndexedTree const& tree,
                                                         PruningPath const& path) {
  if (!risksOfPath_.has_value()) risksOfPath_ = EstimateRisks(tree, path);
  return *risksOfPath_;
}

/// The risk of each subtree of the path, as the settings want it measured.
std::vector<RiskEstimate> TreeGrower::EstimateRisks(IndexedTree const& tree,
                                                    PruningPath const& path) {
  workers_.BeginStage("validating", 0.1, 1.0);
  switch (GetValidation()) {
    case ValidationCrossValidation: {
      std::vector<double> complexities;
      for (std::size_t step = 0; step < path.GetSteps().size(); ++step) {
        // The whole tree stands for growing without pruning.
        complexities.push_back(step == 0 ? kGrownOut : path.TypicalComplexity(step));
      }
      return CrossValidate(complexities);
    }
    case ValidationSplitSample:
      if (test_ == nullptr) throw Refusal{FailureNoData, "there are no test cases"};
      return EstimateOnSample(tree, path, *test_);
    default:
      return EstimateOnSample(tree, path, *training_);
  }
}

std::vector<RiskEstimate> TreeGrower::EstimateOnSample(IndexedTree const& tree,
                                                       PruningPath const& path,
                                                       TrainingData const& sample) {
  RoutedCases const routed(tree, sample, AllCases(sample), workers_);
  auto const lossOf = [&](std::size_t position) {
    return LossSums::Of(sample, routed.CasesOf(position), tree.GetNode(position).GetAssignment());
  };
  RiskModel const model = MakeRiskModel();
  LossSums sums(sample.GetNumClasses());
  PrunedSubtree subtree(tree, path);
  for (std::size_t position = 0; position < tree.GetNumNodes(); ++position) {
    if (subtree.IsTerminal(position)) sums += lossOf(position);
  }
  std::vector<RiskEstimate> risks;
  for (std::size_t step = 0; step < path.GetSteps().size(); ++step) {
    workers_.Poll();
    subtree.AdvanceTo(
        step, [&](std::size_t position) { sums -= lossOf(position); },
        [&](std::size_t position) { sums += lossOf(position); });
    risks.push_back(model.Estimate(sums));
  }
  return risks;
}

/// Source: Breiman, Friedman, Olshen and Stone 1984, section 3.4.2: trees grown without each fold
/// in turn, each pruned to the same complexity, predict the fold that they have not seen.
std::vector<RiskEstimate> TreeGrower::CrossValidate(std::vector<double> const& complexities) {
  ValidationSpec const& validation = *std::as_const(*algorithm_.settings).GetValidationSpec();
  if (GetNumFolds() < 2) {
    throw Refusal{FailureNoData, "there are too few cases for cross-validation"};
  }
  auto const numFolds = static_cast<std::size_t>(GetNumFolds());
  std::vector<std::uint32_t> const folds = DrawFolds(
      training_->GetNumCases(), numFolds, validation.GetRandomSeed(), [this] { workers_.Poll(); });
  std::vector<LossSums> sums(complexities.size(), LossSums(training_->GetNumClasses()));
  for (std::size_t fold = 0; fold < numFolds; ++fold) {
    double const begin = static_cast<double>(fold) / static_cast<double>(numFolds);
    workers_.BeginStage("cross-validating", 0.1 + 0.9 * begin,
                        0.1 + 0.9 * (begin + 1.0 / static_cast<double>(numFolds)));
    std::vector<std::uint8_t> included(folds.size());
    std::transform(folds.begin(), folds.end(), included.begin(), [&](std::uint32_t ofCase) {
      return static_cast<std::uint8_t>(ofCase == fold ? 0 : 1);
    });
    AddFold(included, complexities, sums);
  }
  RiskModel const model = MakeRiskModel();
  std::vector<RiskEstimate> risks;
  risks.reserve(sums.size());
  for (LossSums const& each : sums) risks.push_back(model.Estimate(each));
  return risks;
}

/// Grows a tree on the cases included and adds what it does to the others, once pruned to each of
/// the complexities, which ascend.
void TreeGrower::AddFold(std::vector<std::uint8_t> const& included,
                         std::vector<double> const& complexities, std::vector<LossSums>& sums) {
  Basis const basis = MakeBasis(included);
  GrowthLimits const limits =
      MakeLimits(std::as_const(*algorithm_.settings).GetStopRule()->GetMaxTreeDepth());
  CaseLists lists(*training_, included, workers_, algorithm_.codeOrder);
  std::unique_ptr<SplitMethod> const method =
      algorithm_.makeMethod(*training_, basis.Classes(), limits.minChildSize, basis.totalWeight);
  NodeStatistics const statistics(*training_, TrainingSample, basis.Classes(), basis.totalWeight);
  unsigned int nextId = 1;
  Growth growth(*training_, lists, *method, statistics, limits, nextId, workers_);
  NodeImp root;
  growth.PlantRoot(root);
  growth.Grow();

  IndexedTree const tree(root);
  PruningPath const path(tree, NodeRisks(tree, basis.Classes()), [this] { workers_.Poll(); });
  std::vector<std::uint32_t> held = AllCases(*training_);
  std::erase_if(held, [&](std::uint32_t index) { return included[index] != 0; });
  RoutedCases const routed(tree, *training_, std::move(held), workers_);
  auto const lossOf = [&](std::size_t position) {
    return LossSums::Of(*training_, routed.CasesOf(position),
                        tree.GetNode(position).GetAssignment());
  };
  LossSums present(training_->GetNumClasses());
  PrunedSubtree subtree(tree, path);
  for (std::size_t position = 0; position < tree.GetNumNodes(); ++position) {
    if (subtree.IsTerminal(position)) present += lossOf(position);
  }
  for (std::size_t step = 0; step < complexities.size(); ++step) {
    subtree.AdvanceTo(
        path.FindStep(complexities[step]),
        [&](std::size_t position) { present -= lossOf(position); },
        [&](std::size_t position) { present += lossOf(position); });
    sums[step] += present;
  }
}

bool TreeGrower::GetPruningSequence(std::vector<PruningStep>* steps) noexcept {
  if (steps != nullptr) steps->clear();
  return Attempt([&] {
    if (steps == nullptr) throw Refusal{FailureInvalidArgument, "no place for the steps"};
    if (root_ == nullptr) throw Refusal{FailureNoTree, "there is no tree to prune"};
    PrepareToEstimate();
    IndexedTree const tree(*root_);
    PruningPath const path = FindPath(tree);
    std::vector<RiskEstimate> const& risks = RisksOfPath(tree, path);
    std::vector<PruningStep> found;
    PrunedSubtree subtree(tree, path);
    for (std::size_t step = 0; step < risks.size(); ++step) {
      workers_.Poll();
      subtree.AdvanceTo(
          step, [](std::size_t) {}, [](std::size_t) {});
      PruningStep& each = found.emplace_back();
      each.numTerminalNodes = static_cast<int>(path.GetSteps()[step].numTerminalNodes);
      each.complexity = path.GetSteps()[step].complexity;
      each.risk = risks[step].risk;
      each.stdError = risks[step].stdError;
      for (std::size_t position = 0; position < tree.GetNumNodes(); ++position) {
        if (subtree.IsTerminal(position) && !tree.IsTerminal(position)) {
          each.nodesToPrune.push_back(tree.GetNode(position).GetId());
        }
      }
    }
    steps->swap(found);
  });
}

bool TreeGrower::Prune() noexcept {
  return Attempt([&] {
    if (root_ == nullptr) throw Refusal{FailureNoTree, "there is no tree to prune"};
    if (algorithm_.pruning == nullptr) return;
    PrepareToEstimate();
    IndexedTree const tree(*root_);
    PruningPath const path = FindPath(tree);
    std::vector<RiskEstimate> const& risks = RisksOfPath(tree, path);
    // Breiman, Friedman, Olshen and Stone 1984, section 3.4.3: the smallest subtree whose risk is
    // within so many standard errors of the least one.
    auto const least = std::min_element(risks.begin(), risks.end(),
                                        [](auto& a, auto& b) { return a.risk < b.risk; });
    double const allowance = algorithm_.pruning->GetPickMinRiskTree()
                                 ? 0.0
                                 : algorithm_.pruning->GetSERuleFactor() * least->stdError;
    double const limit = least->risk + allowance;
    std::size_t chosen = risks.size() - 1;
    while (risks[chosen].risk > limit) --chosen;

    PrunedSubtree subtree(tree, path);
    std::vector<NodeImp*> tops;
    subtree.AdvanceTo(
        chosen, [](std::size_t) {}, [](std::size_t) {});
    for (std::size_t position = 0; position < tree.GetNumNodes(); ++position) {
      if (subtree.IsTerminal(position) && !tree.IsTerminal(position)) {
        tops.push_back(const_cast<NodeImp*>(&tree.GetNode(position)));
      }
    }
    for (NodeImp* const top : tops) top->RemoveChildren(false);
    RiskEstimate const risk = risks[chosen];
    Changed();
    risk_ = risk;
  });
}

bool TreeGrower::Validate() noexcept {
  return Attempt([&] {
    if (root_ == nullptr) throw Refusal{FailureNoTree, "there is no tree to validate"};
    if (!risk_.has_value()) {
      PrepareToEstimate();
      IndexedTree const tree(*root_);
      PruningPath const path = FindPath(tree);
      risk_ = GetValidation() == ValidationCrossValidation ? CrossValidate({kGrownOut}).front()
                                                           : EstimateRisks(tree, path).front();
    }
    statistics_ =
        std::make_unique<TreeStatisticsImp>(*this, risk_->risk, risk_->stdError, GetValidation());
  });
}

}  // namespace tree::grow
