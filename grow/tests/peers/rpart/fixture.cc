#include "fixture.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace tree::grow::rpart {
namespace {

std::vector<std::string> CutAtTabs(std::string const& line) {
  std::vector<std::string> fields;
  std::size_t begin = 0;
  for (std::size_t tab = line.find('\t'); tab != std::string::npos; tab = line.find('\t', begin)) {
    fields.push_back(line.substr(begin, tab - begin));
    begin = tab + 1;
  }
  fields.push_back(line.substr(begin));
  return fields;
}

/// The fields of a line, taken one by one.
class Line {
 public:
  explicit Line(std::string const& text) : fields_(CutAtTabs(text)) {}

  std::size_t NumLeft() const { return fields_.size() - position_; }

  std::string Text() {
    if (NumLeft() == 0) throw std::runtime_error("a field is missing");
    return fields_[position_++];
  }

  template <typename Number>
  Number Value() {
    std::string const text = Text();
    Number value{};
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) {
      throw std::runtime_error("'" + text + "' is no number of its kind");
    }
    return value;
  }
  double Real() { return Value<double>(); }
  std::size_t Count() { return Value<std::size_t>(); }

  std::vector<std::string> Texts(std::size_t count) {
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < count; ++i) texts.push_back(Text());
    return texts;
  }
  std::vector<double> Reals(std::size_t count) {
    std::vector<double> values;
    for (std::size_t i = 0; i < count; ++i) values.push_back(Real());
    return values;
  }

  /// The meaning of the next field, one of a few words.
  template <typename Meaning>
  Meaning Word(std::vector<std::pair<std::string_view, Meaning>> const& words) {
    std::string const text = Text();
    for (auto const& [word, meaning] : words) {
      if (text == word) return meaning;
    }
    throw std::runtime_error("unknown word '" + text + "'");
  }

 private:
  std::vector<std::string> fields_;
  std::size_t position_ = 0;
};

void Demand(bool held, std::string const& reason) {
  if (!held) throw std::runtime_error(reason);
}

/// Puts a fixture together, line by line.
class Reader {
 public:
  void Read(Line line) {
    std::string const keyword = line.Text();
    Demand(!ended_, "a line after the end");
    Demand(begun_ || keyword == "rpart-tree", "not a fixture");
    auto const handler = handlers_.find(keyword);
    Demand(handler != handlers_.end(), "unknown keyword '" + keyword + "'");
    (this->*handler->second)(line);
    Demand(line.NumLeft() == 0, "too many fields");
    lastKeyword_ = keyword;
  }

  Fixture Finish() {
    Demand(ended_, "no end");
    Demand(fixture_.terminalNodes.size() == fixture_.numRows, "not a terminal node for each row");
    for (Node const& node : fixture_.nodes) {
      Demand(!node.byDefinition || node.byDefinition->list.size() == numDefined_[node.number],
             "not as many defined surrogates as told");
    }
    return std::move(fixture_);
  }

 private:
  using Handler = void (Reader::*)(Line&);

  void Begin(Line& line) {
    Demand(!begun_ && line.Text() == "1", "unknown version of the format");
    begun_ = true;
  }
  void End(Line&) { ended_ = true; }

  void ReadName(Line& line) { fixture_.name = line.Text(); }
  void ReadData(Line& line) {
    fixture_.dataFile = line.Text();
    fixture_.numRows = line.Count();
    fixture_.numGrown = line.Count();
  }
  void ReadTarget(Line& line) {
    fixture_.target = line.Text();
    targetIsNominal_ = line.Word<bool>({{"nominal", true}, {"continuous", false}});
  }
  void ReadPredictor(Line& line) {
    Predictor predictor;
    predictor.name = line.Text();
    predictor.level = line.Word<Level>({{"continuous", Level::kContinuous},
                                        {"ordinal", Level::kOrdinal},
                                        {"nominal", Level::kNominal}});
    predictor.numMissing = line.Count();
    if (predictor.level == Level::kNominal) {
      predictor.categories = line.Texts(line.Count());
      Demand(std::is_sorted(predictor.categories.begin(), predictor.categories.end()),
             "categories out of order");
    }
    fixture_.predictors.push_back(std::move(predictor));
  }
  void ReadWeights(Line& line) {
    std::string column = line.Text();
    fixture_.weights =
        Weights{std::move(column), line.Word<bool>({{"whole", true}, {"real", false}})};
  }
  void ReadClass(Line& line) {
    Demand(targetIsNominal_, "a class of a continuous target");
    TargetClass of;
    of.label = line.Text();
    of.prior = line.Real();
    of.alteredPrior = line.Real();
    of.priorIsGiven = line.Word<bool>({{"given", true}, {"observed", false}});
    fixture_.classes.push_back(std::move(of));
  }
  void ReadCost(Line& line) {
    std::string const label = line.Text();
    auto const of = std::find_if(fixture_.classes.begin(), fixture_.classes.end(),
                                 [&](TargetClass const& each) { return each.label == label; });
    Demand(of != fixture_.classes.end(), "unknown class '" + label + "'");
    of->costs = line.Reals(fixture_.classes.size());
  }
  void ReadSetting(Line& line) {
    std::string const name = line.Text();
    fixture_.settings[name] = line.Real();
  }

  void ReadNode(Line& line) {
    Node node;
    node.number = line.Value<unsigned long long>();
    node.numCases = line.Count();
    node.weight = line.Real();
    node.deviance = line.Real();
    node.complexity = line.Real();
    isSplit_ = line.Word<bool>({{"split", true}, {"terminal", false}});
    fixture_.nodes.push_back(std::move(node));
  }
  Node& CurrentNode() {
    Demand(!fixture_.nodes.empty(), "no node yet");
    return fixture_.nodes.back();
  }
  Node& CurrentSplitNode() {
    Node& node = CurrentNode();
    Demand(isSplit_, "a split of a terminal node");
    return node;
  }
  void ReadPrediction(Line& line) {
    Node& node = CurrentNode();
    if (targetIsNominal_) {
      node.predictedClass = line.Text();
      node.probability = line.Real();
    } else {
      node.predictedMean = line.Real();
    }
  }
  void ReadWeightsByClass(Line& line) {
    CurrentNode().weightsByClass = line.Reals(fixture_.classes.size());
  }
  void ReadShares(Line& line) { CurrentNode().shares = line.Reals(fixture_.classes.size()); }

  void ReadPrimary(Line& line) {
    Demand(CurrentSplitNode().splits.empty(), "a second primary split");
    ReadSplit(line);
  }
  void ReadCompetitor(Line& line) {
    Demand(!CurrentSplitNode().splits.empty(), "a competitor before the primary split");
    ReadSplit(line);
  }
  void ReadSplit(Line& line) {
    Split split;
    split.predictor = line.Text();
    split.numCases = line.Count();
    split.improve = line.Real();
    split.ways = ReadWays(line, split.predictor);
    CurrentNode().splits.push_back(std::move(split));
  }
  void ReadSurrogate(Line& line) {
    Surrogate surrogate;
    surrogate.predictor = line.Text();
    surrogate.numSent = line.Count();
    ReadAgreement(line, &surrogate);
    CurrentSplitNode().surrogates.push_back(std::move(surrogate));
  }
  void ReadAgreement(Line& line, Surrogate* surrogate) {
    surrogate->agree = line.Real();
    surrogate->adj = line.Real();
    surrogate->ways = ReadWays(line, surrogate->predictor);
  }
  void ReadTie(Line& line) {
    Node& node = CurrentSplitNode();
    if (lastKeyword_ != "tie") tiesAreOf_ = lastKeyword_;
    if (tiesAreOf_ == "surrogate") {
      Surrogate& surrogate = node.surrogates.back();
      surrogate.ties.push_back(ReadWays(line, surrogate.predictor));
    } else {
      Demand(tiesAreOf_ == "primary" || tiesAreOf_ == "competitor", "a tie with nothing");
      node.splits.back().ties.push_back(ReadWays(line, node.splits.back().predictor));
    }
  }
  void ReadByDefinition(Line& line) {
    Node& node = CurrentSplitNode();
    numDefined_[node.number] = line.Count();
    node.byDefinition.emplace();
    node.byDefinition->numMoved = line.Count();
  }
  void ReadDefined(Line& line) {
    Node& node = CurrentSplitNode();
    Demand(node.byDefinition.has_value(), "a defined surrogate without by_definition");
    Surrogate surrogate;
    surrogate.predictor = line.Text();
    ReadAgreement(line, &surrogate);
    node.byDefinition->list.push_back(std::move(surrogate));
  }
  void ReadDefault(Line& line) {
    CurrentSplitNode().way = line.Word<Default>(
        {{"left", Default::kLeft}, {"right", Default::kRight}, {"none", Default::kNone}});
  }

  Ways ReadWays(Line& line, std::string const& name) {
    auto const predictor = std::find_if(fixture_.predictors.begin(), fixture_.predictors.end(),
                                        [&](Predictor const& each) { return each.name == name; });
    Demand(predictor != fixture_.predictors.end(), "unknown predictor '" + name + "'");
    bool const isCut = line.Word<bool>({{"cut", true}, {"sets", false}});
    Demand(isCut == (predictor->level != Level::kNominal), "not a split of its predictor's level");
    if (isCut) {
      double const value = line.Real();
      return Cut{value, line.Word<bool>({{"left", true}, {"right", false}})};
    }
    Sets sets;
    for (std::vector<std::string>* side : {&sets.left, &sets.right}) {
      *side = line.Texts(line.Count());
      for (std::string const& label : *side) {
        Demand(
            std::binary_search(predictor->categories.begin(), predictor->categories.end(), label),
            "unknown category '" + label + "'");
      }
    }
    return sets;
  }

  static Subtree ReadSubtreeFields(Line& line) {
    Subtree subtree;
    subtree.cp = line.Real();
    subtree.numSplits = line.Count();
    subtree.relativeError = line.Real();
    return subtree;
  }
  void ReadSubtree(Line& line) { fixture_.subtrees.push_back(ReadSubtreeFields(line)); }
  void ReadWeakest(Line& line) { fixture_.weakestLinks.push_back(ReadSubtreeFields(line)); }
  void ReadTerminals(Line& line) {
    while (line.NumLeft() > 0) {
      fixture_.terminalNodes.push_back(line.Value<unsigned long long>());
    }
  }

  std::map<std::string, Handler, std::less<>> const handlers_ = {
      {"rpart-tree", &Reader::Begin},
      {"name", &Reader::ReadName},
      {"data", &Reader::ReadData},
      {"target", &Reader::ReadTarget},
      {"predictor", &Reader::ReadPredictor},
      {"weights", &Reader::ReadWeights},
      {"class", &Reader::ReadClass},
      {"cost", &Reader::ReadCost},
      {"setting", &Reader::ReadSetting},
      {"node", &Reader::ReadNode},
      {"predicts", &Reader::ReadPrediction},
      {"weights_by_class", &Reader::ReadWeightsByClass},
      {"shares", &Reader::ReadShares},
      {"primary", &Reader::ReadPrimary},
      {"competitor", &Reader::ReadCompetitor},
      {"surrogate", &Reader::ReadSurrogate},
      {"tie", &Reader::ReadTie},
      {"by_definition", &Reader::ReadByDefinition},
      {"defined", &Reader::ReadDefined},
      {"default", &Reader::ReadDefault},
      {"subtree", &Reader::ReadSubtree},
      {"weakest", &Reader::ReadWeakest},
      {"terminal", &Reader::ReadTerminals},
      {"end", &Reader::End}};
  Fixture fixture_;
  bool begun_ = false;
  bool ended_ = false;
  bool targetIsNominal_ = false;
  bool isSplit_ = false;
  std::string lastKeyword_;
  std::string tiesAreOf_;
  std::map<unsigned long long, std::size_t> numDefined_;
};

}  // namespace

Fixture ReadFixture(std::filesystem::path const& file) {
  std::ifstream input(file, std::ios::binary);
  std::size_t number = 0;
  try {
    Demand(input.is_open(), "cannot be opened");
    Reader reader;
    for (std::string text; std::getline(input, text);) {
      ++number;
      reader.Read(Line(text));
    }
    return reader.Finish();
  } catch (std::runtime_error const& error) {
    throw std::runtime_error(file.string() + ":" + std::to_string(number) + ": " + error.what());
  }
}

}  // namespace tree::grow::rpart
