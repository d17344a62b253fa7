// Settings, once around: each of the five kinds as it is made and as a person configures it, what
// the setters make of values that they do not take, and what a copy from one kind to another takes
// over and what it keeps.

#include <cstddef>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "settings_tour/configured.h"
#include "settings_tour/description.h"
#include "settings_tour/questions.h"
#include "settings_tour/text_table.h"
#include "tree/settings.h"

namespace settings_tour {
namespace {

using Kinds = std::vector<std::unique_ptr<tree::AlgSettings>>;

Kinds AllConfigured() {
  Kinds kinds;
  kinds.push_back(std::make_unique<tree::RCartSettingsImp>(ConfiguredRCart()));
  kinds.push_back(std::make_unique<tree::CCartSettingsImp>(ConfiguredCCart()));
  kinds.push_back(std::make_unique<tree::RChaidSettingsImp>(ConfiguredRChaid()));
  kinds.push_back(std::make_unique<tree::CChaidSettingsImp>(ConfiguredCChaid()));
  kinds.push_back(std::make_unique<tree::QuestSettingsImp>(ConfiguredQuest()));
  return kinds;
}

// --- new and configured ---

void PrintConfiguring(tree::AlgSettings const& fresh, tree::AlgSettings const& configured,
                      std::string const& question) {
  std::cout << "\n" << KindName(configured) << ": " << question << "\n\n";
  std::vector<Setting> const before = Describe(fresh);
  std::vector<Setting> const after = Describe(configured);
  TextTable table;
  table.AddRow({"setting", "new", "configured"});
  for (std::size_t row = 0; row < after.size(); ++row) {
    table.AddRow({after[row].name, before[row].value, after[row].value});
  }
  table.Print(std::cout);
}

void PrintAllConfiguring() {
  std::cout << "Five kinds of settings, new and configured\n";
  PrintConfiguring(tree::RCartSettingsImp(BodyMassQuestion()), ConfiguredRCart(), "body mass");
  PrintConfiguring(tree::CCartSettingsImp(SpeciesQuestion()), ConfiguredCCart(), "species");
  PrintConfiguring(tree::RChaidSettingsImp(BodyMassQuestion()), ConfiguredRChaid(), "body mass");
  PrintConfiguring(tree::CChaidSettingsImp(WeightClassQuestion()), ConfiguredCChaid(),
                   "weight class");
  PrintConfiguring(tree::QuestSettingsImp(SpeciesQuestion()), ConfiguredQuest(), "species");
}

// --- what setters do not take ---

/// A call of a setter that answers nothing.
void AddCall(TextTable& table, std::string const& call, double before, double after) {
  table.AddRow({call, Number(before), Number(after), "-"});
}

/// A call of a setter that answers whether it took the value.
void AddCall(TextTable& table, std::string const& call, double before, double after, bool answer) {
  table.AddRow({call, Number(before), Number(after), answer ? "true" : "false"});
}

void TryLimits(TextTable& table) {
  tree::CCartSettingsImp cart = ConfiguredCCart();
  double before = cart.GetMaxNumCompetitors();
  cart.SetMaxNumCompetitors(10);
  AddCall(table, "competitors to 10, of 7 predictors", before, cart.GetMaxNumCompetitors());

  before = cart.GetMaxNominalPredCategories();
  cart.SetMaxNominalPredCategories(0);
  AddCall(table, "nominal categories to 0", before, cart.GetMaxNominalPredCategories());

  before = cart.GetMaxNumSurrogates();
  cart.SetMaxNumSurrogates(10);
  AddCall(table, "CART: surrogates to 10, of 7 predictors", before, cart.GetMaxNumSurrogates());

  tree::QuestSettingsImp quest = ConfiguredQuest();
  before = quest.GetMaxNumSurrogates();
  quest.SetMaxNumSurrogates(6);
  AddCall(table, "QUEST: surrogates to 6, of 7 predictors", before, quest.GetMaxNumSurrogates());
}

void TryStopRule(TextTable& table) {
  tree::StopRuleImp stop;
  double before = stop.GetMinNodeSize();
  stop.SetMinNodeSize(-1);
  AddCall(table, "least node size to -1", before, stop.GetMinNodeSize());

  before = stop.GetMinChildPercentSize();
  stop.SetMinChildPercentSize(100.5);
  AddCall(table, "least child size, % to 100.5", before, stop.GetMinChildPercentSize());

  before = stop.GetMaxTreeDepth();
  stop.SetMaxTreeDepth(-3);
  AddCall(table, "tree depth to -3", before, stop.GetMaxTreeDepth());
}

void TryValidation(TextTable& table) {
  tree::ValidationSpecImp validation;
  validation.Set(tree::ValidationSplitSample);
  double before = validation.GetType();
  bool answer = validation.Set(tree::ValidationNone);
  AddCall(table, "validation from split sample (1) to none (0)", before, validation.GetType(),
          answer);

  before = validation.GetNumCVFolds();
  answer = validation.SetNumCVFolds(1);
  AddCall(table, "folds to 1", before, validation.GetNumCVFolds(), answer);

  before = static_cast<double>(validation.GetRandomSeed());
  answer = validation.SetRandomSeed(0);
  AddCall(table, "seed to 0", before, static_cast<double>(validation.GetRandomSeed()), answer);
}

void TryMisclassification(TextTable& table) {
  tree::CostImp cost;
  double before = cost.GetNumClasses();
  bool answer = cost.Set(0, 2, 3.0);
  AddCall(table, "costs: cell (0,2) to 3; classes", before, cost.GetNumClasses(), answer);

  before = cost.Get(1, 1);
  answer = cost.Set(1, 1, 2.0);
  AddCall(table, "costs: cell (1,1) to 2", before, cost.Get(1, 1), answer);

  tree::PriorsImp priors;
  priors.Set(0, 0.6);
  before = priors.Get(0);
  answer = priors.Set(0, -0.1);
  AddCall(table, "priors: class 0 to -0.1", before, priors.Get(0), answer);

  before = priors.GetNumClasses();
  answer = priors.Set(tree::PriorTypeDefault);
  AddCall(table, "priors: type to default; classes", before, priors.GetNumClasses(), answer);

  tree::ScoresImp scores;
  before = scores.Get(1);
  answer = scores.Set(2, 5400.0);
  AddCall(table, "scores: category 2 to 5400; category 1", before, scores.Get(1), answer);
}

void PrintLimits() {
  std::cout << "\n\nWhat setters make of unusual values\n\n";
  TextTable table;
  table.AddRow({"asked for", "before", "after", "answer"});
  TryLimits(table);
  TryStopRule(table);
  TryValidation(table);
  TryMisclassification(table);
  table.Print(std::cout);
}

// --- copies ---

/// The value that `settings` give to `name`; empty when they hold nothing of that name.
std::string ValueOf(std::string const& name, std::vector<Setting> const& settings) {
  for (Setting const& setting : settings) {
    if (setting.name == name) return setting.value;
  }
  return "";
}

std::string Verdict(std::string const& source, std::string const& before,
                    std::string const& after) {
  if (source == before && after == before) return "the same in both";
  if (after == source) return "copied";
  if (after == before) return source.empty() ? "kept: the source has none" : "kept";
  return "changed";
}

void PrintCopy(tree::AlgSettings const& from, tree::AlgSettings const& into,
               std::string const& lesson) {
  std::unique_ptr<tree::AlgSettings> const copy(into.Clone());
  copy->CopyFrom(from);

  std::cout << "\n" << KindName(from) << " into " << KindName(into) << ": " << lesson << "\n\n";
  std::vector<Setting> const source = Describe(from);
  std::vector<Setting> const after = Describe(*copy);
  TextTable table;
  table.AddRow({"setting", "source", "before", "after", "what became of it"});
  for (Setting const& before : Describe(into)) {
    std::string const sourceValue = ValueOf(before.name, source);
    std::string const afterValue = ValueOf(before.name, after);
    table.AddRow({before.name, sourceValue.empty() ? "-" : sourceValue, before.value, afterValue,
                  Verdict(sourceValue, before.value, afterValue)});
  }
  table.Print(std::cout);
}

/// How many settings have the source's value after a copy, and how many have not.
std::string CountTakenAndKept(tree::AlgSettings const& from, tree::AlgSettings const& into) {
  std::unique_ptr<tree::AlgSettings> const copy(into.Clone());
  copy->CopyFrom(from);
  std::vector<Setting> const source = Describe(from);
  int taken = 0;
  int kept = 0;
  for (Setting const& after : Describe(*copy)) {
    ++(ValueOf(after.name, source) == after.value ? taken : kept);
  }
  return std::to_string(taken) + " + " + std::to_string(kept);
}

void PrintAllPairs() {
  std::cout << "\n\nCopies between kinds: settings as in the source + settings kept\n\n";
  Kinds const kinds = AllConfigured();
  TextTable table;
  std::vector<std::string> header = {"from \\ into"};
  for (auto const& into : kinds) header.push_back(KindName(*into));
  table.AddRow(header);
  for (auto const& from : kinds) {
    std::vector<std::string> cells = {KindName(*from)};
    for (auto const& into : kinds) cells.push_back(CountTakenAndKept(*from, *into));
    table.AddRow(cells);
  }
  table.Print(std::cout);
}

void PrintCopies() {
  std::cout << "\n\nCopies in detail\n";
  PrintCopy(ConfiguredRCart(), ConfiguredCCart(),
            "the target stays categorical; one family, so pruning and surrogates go along");
  PrintCopy(ConfiguredCChaid(), ConfiguredRChaid(),
            "the target stays continuous; what is CHAID's goes along");
  PrintCopy(ConfiguredCChaid(), ConfiguredQuest(),
            "neither target is continuous, so the source's level wins");
  PrintCopy(ConfiguredCCart(), ConfiguredQuest(),
            "both prune and have priors, but only what all kinds share goes along");
  PrintCopy(ConfiguredQuest(), tree::QuestSettingsImp(SpeciesQuestion()),
            "the same kind, so everything");
}

void AddLimits(TextTable& table, std::string const& when, tree::CartSettings const& cart) {
  table.AddRow({when, std::to_string(cart.GetCoreSettings()->GetNumPredictors()),
                std::to_string(cart.GetMaxNumCompetitors()),
                std::to_string(cart.GetMaxNumSurrogates())});
}

/// A copy brings fewer predictors, but the limit on surrogates is not the source's to bring.
void PrintLeftOverLimit() {
  tree::CChaidSettingsImp const fewPredictors(SpeciesByBillAndFlipper());
  tree::CCartSettingsImp cart = ConfiguredCCart();
  cart.SetMaxNumSurrogates(5);

  std::cout << "\n\nA limit that a copy leaves behind\n\n";
  TextTable table;
  table.AddRow({"C-CART", "predictors", "competitors", "surrogates"});
  AddLimits(table, "before", cart);
  cart.CopyFrom(fewPredictors);
  AddLimits(table, "after CopyFrom of C-CHAID", cart);
  cart.ValidateNumSurrogates();
  AddLimits(table, "after ValidateNumSurrogates", cart);
  table.Print(std::cout);
}

/// Copies share nothing: what happens to the source afterwards stays there.
void PrintIndependence() {
  tree::CCartSettingsImp source = ConfiguredCCart();
  tree::CCartSettingsImp copy(SpeciesQuestion());
  copy.CopyFrom(source);
  source.GetPriors()->Set(0, 0.9);
  source.GetStopRule()->SetMaxTreeDepth(99);

  std::cout << "\n\nThe source changes after the copy\n\n";
  TextTable table;
  table.AddRow({"", "source", "copy"});
  table.AddRow(
      {"prior of class 0", Number(source.GetPriors()->Get(0)), Number(copy.GetPriors()->Get(0))});
  table.AddRow({"tree depth", std::to_string(source.GetStopRule()->GetMaxTreeDepth()),
                std::to_string(copy.GetStopRule()->GetMaxTreeDepth())});
  table.Print(std::cout);
}

}  // namespace
}  // namespace settings_tour

int main() {
  settings_tour::PrintAllConfiguring();
  settings_tour::PrintLimits();
  settings_tour::PrintAllPairs();
  settings_tour::PrintCopies();
  settings_tour::PrintLeftOverLimit();
  settings_tour::PrintIndependence();
}
