#include "score_testing/random_trees.h"

#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>

#include "tree/support.h"

namespace tree::score::testing {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

double DrawMissingValue(Draw const& draw) {
  double const values[] = {systemMissingValue(),
                           systemMissingValue(),
                           systemMissingValue(),
                           -9.0,
                           0.0,
                           kNan,
                           kInfinity,
                           -kInfinity,
                           1.0};
  return values[draw(static_cast<std::uint32_t>(std::size(values)))];
}

double DrawCut(Draw const& draw) {
  if (draw(16) == 0) return draw(2) == 0 ? kInfinity : -kInfinity;
  return (static_cast<double>(draw(17)) - 8.0) / 2.0;
}

int DrawChild(Draw const& draw, int numChildren, bool orNone) {
  auto const count = static_cast<std::uint32_t>(numChildren);
  if (!orNone) return static_cast<int>(draw(count));
  return static_cast<int>(draw(count + 1)) - 1;
}

// Renumbering is how missing values get to any child, and children to below none.
void Renumber(SplitRuleImp& rule, int numChildren, Draw const& draw) {
  int const highest = rule.GetNumChildren();
  std::vector<int> positions;
  for (int child = 0; child <= highest; ++child) {
    positions.push_back(draw(16) == 0 ? -1 - static_cast<int>(draw(2))
                                      : DrawChild(draw, numChildren, false));
  }
  rule.ReorderMappings(positions);
}

std::unique_ptr<SplitRuleImp> MakeOrdinal(int numChildren, int predictor, double missingValue,
                                          Draw const& draw) {
  auto rule = std::make_unique<OSplitRule>(missingValue, predictor);
  std::uint32_t const numCuts = draw(8) < 4 ? 1 : draw(6);
  for (std::uint32_t cut = 0; cut < numCuts; ++cut) {
    OValueSet interval;
    interval.SetRightEnd(DrawCut(draw));
    interval.SetOpenRight(draw(2) == 0);
    rule->InsertCutPoint(interval, false);
  }
  // Everything above goes to one more child.
  if (draw(8) != 0) rule->AddMappedValues(OValueSet());
  if (draw(3) == 0) rule->AddMissingValueMapping(draw(2) == 0);
  if (rule->IsValid()) {
    Renumber(*rule, numChildren, draw);
    if (draw(6) == 0) {
      auto* const item = rule->IsPresent(rule->GetCutPoint());
      if (item != nullptr) item->child = DrawChild(draw, numChildren, true);
    }
  } else {
    // Not to be renumbered: begun anew.
    rule = std::make_unique<OSplitRule>(missingValue, predictor);
    if (draw(2) == 0) {
      OValueSet interval;
      interval.SetRightEnd(DrawCut(draw));
      rule->InsertCutPoint(interval, false);  // child 0, and none above
    }
  }
  return rule;
}

std::unique_ptr<SplitRuleImp> MakeNominal(int numChildren, int predictor, Draw const& draw) {
  auto rule = std::make_unique<NSplitRule>(predictor, static_cast<int>(draw(4)));
  std::uint32_t const numCodes = draw(4) == 0 ? 63 + draw(4) : 1 + draw(8);
  for (std::uint32_t count = draw(numCodes + 1); count > 0; --count) {
    rule->SetCatMapping(static_cast<int>(draw(numCodes)), DrawChild(draw, numChildren, true));
  }
  if (draw(3) == 0) {
    rule->AddMissingValueMapping(false);
    if (draw(2) == 0) Renumber(*rule, numChildren, draw);
  }
  return rule;
}

std::unique_ptr<SplitRuleImp> MakeBinary(int predictor, double missingValue, double cut,
                                         Draw const& draw) {
  auto rule = std::make_unique<OSplitRule>(missingValue, predictor);
  rule->SetCutPoint(cut);
  if (draw(4) == 0) rule->AddMissingValueMapping(false);
  if (draw(2) == 0) rule->SetReverse();
  return rule;
}

// Of all predictors the same one, or each its own.
std::vector<double> DrawMissingValues(TreeShape const& shape, Draw const& draw) {
  bool const areOwn = draw(2) == 0;
  double const common = shape.binaryOnly ? systemMissingValue() : DrawMissingValue(draw);
  std::vector<double> values(shape.numPredictors, common);
  if (areOwn) {
    for (double& value : values) value = DrawMissingValue(draw);
  }
  return values;
}

std::unique_ptr<SplitRuleImp> MakeRule(TreeShape const& shape, int numChildren,
                                       std::vector<double> const& missingValues, Draw const& draw) {
  auto const predictor = static_cast<int>(draw(shape.numPredictors));
  double const missingValue = missingValues[static_cast<std::size_t>(predictor)];
  if (shape.binaryOnly) return MakeBinary(predictor, missingValue, DrawCut(draw), draw);
  if (draw(3) == 0) return MakeNominal(numChildren, predictor, draw);
  return MakeOrdinal(numChildren, predictor, draw(8) == 0 ? DrawMissingValue(draw) : missingValue,
                     draw);
}

double DrawMean(Draw const& draw) {
  double const odd[] = {-0.0, kNan, kInfinity};
  if (draw(16) == 0) return odd[draw(static_cast<std::uint32_t>(std::size(odd)))];
  return static_cast<double>(draw(1000)) / 8.0;
}

// Whether the primary rule or the dumb rule has a child for every case.
bool PlacesAll(NodeImp const& node) {
  SplitRuleImp const& rule = *node.GetCompetitorImp(0);
  bool const isNominal = dynamic_cast<NSplitRule const*>(&rule) != nullptr;
  return rule.GetDumbChildPos() >= 0 || (isNominal && rule.GetMissingValueMapping() >= 0);
}

void FillStatistics(NodeImp& node, bool classes, Draw const& draw) {
  if (classes) {
    auto info = std::make_unique<ClsInfoImp>();
    info->SetNumClasses(3);
    info->SetPrediction(static_cast<int>(draw(4)) - 1);
    for (int index = 0; index < 3; ++index) {
      info->SetClassProbability(index, static_cast<double>(draw(100)) / 100.0);
    }
    node.SetClsInfo(info.release(), TrainingSample);
  } else {
    auto info = std::make_unique<RegInfoImp>();
    info->SetMean(DrawMean(draw));
    node.SetRegInfo(info.release(), TrainingSample);
  }
}

}  // namespace

Draw DrawFrom(std::uint8_t const* bytes, std::size_t size) {
  return [bytes, size, next = std::size_t{0}](std::uint32_t below) mutable -> std::uint32_t {
    return next < size ? bytes[next++] % below : 0;
  };
}

std::unique_ptr<NodeImp> MakeTree(TreeShape const& shape, Draw const& draw) {
  auto root = std::make_unique<NodeImp>();
  std::vector<NodeImp*> nodes = {root.get()};
  std::vector<std::uint32_t> levels = {0};
  bool const classes = draw(2) == 0;
  std::vector<double> const missingValues = DrawMissingValues(shape, draw);
  for (std::size_t next = 0; next < nodes.size(); ++next) {
    NodeImp& node = *nodes[next];
    node.SetId(static_cast<unsigned int>(next) + 1);
    bool const isInFullLevel = levels[next] < shape.numFullLevels;
    if (!isInFullLevel && (nodes.size() >= shape.maxNumNodes || draw(4) == 0)) {
      FillStatistics(node, classes, draw);
      continue;
    }
    std::uint32_t const numChildren = shape.binaryOnly || draw(2) == 0 ? 2 : 1 + draw(4);
    node.SetNumChildren(static_cast<int>(numChildren));
    for (std::uint32_t child = 0; child < numChildren; ++child) {
      nodes.push_back(new NodeImp);
      levels.push_back(levels[next] + 1);
      node.SetChild(child, nodes.back());
    }
    auto const count = static_cast<int>(numChildren);
    node.SetNumCompetitors(1 + draw(2));  // a competitor that is not there changes nothing
    node.SetCompetitor(0, MakeRule(shape, count, missingValues, draw).release());
    if (shape.placesAll || draw(4) != 0) {
      node.GetCompetitorImp(0)->SetDumbRule(DrawChild(draw, count, false), 1.0);
    } else if (draw(4) == 0) {
      node.GetCompetitorImp(0)->SetDumbRule(-7, 0.0);
    }
    // Where no case ends, nothing has to be told.
    if (!PlacesAll(node) || draw(2) == 0) FillStatistics(node, classes, draw);
    std::uint32_t const numSurrogates = !shape.placesAll && draw(3) == 0 ? draw(4) : 0;
    node.SetNumSurrogates(numSurrogates);
    for (std::uint32_t position = 0; position < numSurrogates; ++position) {
      node.SetSurrogate(position, MakeRule(shape, count, missingValues, draw).release());
    }
  }
  return root;
}

double DrawValue(Draw const& draw) {
  switch (draw(16)) {
    case 0:
      return kNan;
    case 1:
      return draw(2) == 0 ? kInfinity : -kInfinity;
    case 2:
    case 3:
      return DrawMissingValue(draw);
    case 4:
      return std::nextafter(DrawCut(draw), draw(2) == 0 ? kInfinity : -kInfinity);
    case 5:
      return static_cast<double>(draw(2) == 0 ? 61 + draw(6) : draw(12));
    case 6:
      return draw(2) == 0 ? -0.0 : 1e10 * static_cast<double>(draw(250));
    case 7: {
      std::uint64_t bits = 0;
      for (int byte = 0; byte < 8; ++byte) bits = bits << 8 | draw(256);
      double value = 0.0;
      std::memcpy(&value, &bits, sizeof(value));
      return value;
    }
    default:
      return DrawCut(draw);
  }
}

NodeImp const* WalkTree(NodeImp const& root, double const* values,
                        std::vector<bool> const& isNull) {
  NodeImp const* node = &root;
  while (node->GetNumChildren() > 0) {
    auto const ask = [&](SplitRuleImp const& rule) {
      int const predictor = rule.GetPredictorIndex();
      return isNull[static_cast<std::size_t>(predictor)] ? rule.GetMissingValueMapping()
                                                         : rule.Classify(values[predictor]);
    };
    int child = ask(*node->GetCompetitorImp(0));
    for (int position = 0; child < 0 && position < node->GetNumSurrogates(); ++position) {
      child = ask(*node->GetSurrogateImp(static_cast<unsigned int>(position)));
    }
    if (child < 0) child = node->GetCompetitorImp(0)->GetDumbChildPos();
    if (child < 0) return node;
    node = node->GetChildImp(static_cast<unsigned int>(child));
  }
  return node;
}

std::vector<NodeImp const*> ListNodes(NodeImp const& root) {
  std::vector<NodeImp const*> nodes = {&root};
  for (std::size_t next = 0; next < nodes.size(); ++next) {
    for (int child = 0; child < nodes[next]->GetNumChildren(); ++child) {
      nodes.push_back(nodes[next]->GetChildImp(static_cast<unsigned int>(child)));
    }
  }
  return nodes;
}

}  // namespace tree::score::testing
