#include "grow_testing/sample_data.h"

#include <cmath>
#include <ios>
#include <memory>
#include <sstream>

namespace tree::grow {
namespace {

void DescribeRule(SplitRuleImp const& rule, std::ostream& out) {
  out << " [" << rule.GetPredictorIndex();
  if (auto const* const ordered = dynamic_cast<OSplitRule const*>(&rule)) {
    if (ordered->IsValidBinary()) {
      out << (ordered->IsStandard() ? " <= " : " > ") << ordered->GetCutPoint();
    } else {
      for (int child = 0; child < ordered->GetNumChildren(); ++child) {
        std::unique_ptr<ValueSet> const values(ordered->GetMappedValues(child));
        if (values == nullptr) continue;
        auto const& interval = dynamic_cast<OValueSet const&>(*values);
        out << " .." << (interval.IsBoundedRight() ? interval.GetRightEnd() : HUGE_VAL) << "->"
            << child;
      }
    }
  } else {
    auto const& nominal = dynamic_cast<NSplitRule const&>(rule);
    for (int category = 0; category < 100; ++category) {
      int const child = nominal.GetCatMapping(category);
      if (child >= 0) out << ' ' << category << "->" << child;
    }
  }
  out << " missing " << rule.GetMissingValueMapping();
  for (StatisticFlag const flag :
       {StatisticFlag1, StatisticFlag2, StatisticFlag3, StatisticFlag4}) {
    if (rule.HasStatistic(flag)) out << " s" << flag << '=' << rule.GetStatistic(flag);
  }
  out << " dumb " << rule.GetDumbChildPos() << ' ' << rule.GetDumbChildProb() << ']';
}

void DescribeNode(NodeImp const& node, int depth, std::ostream& out) {
  out << std::string(static_cast<std::size_t>(depth), ' ') << node.GetId() << ": "
      << node.GetNodeSize(TrainingSample) << ' ' << node.GetUnweightedNodeSize(TrainingSample)
      << " / " << node.GetNodeSize(TestSample) << " -> " << node.GetAssignment();
  if (RegInfo const* const info = node.GetRegInfo(TrainingSample))
    out << " sd " << info->GetStdDev();
  for (unsigned int i = 0; i < static_cast<unsigned int>(node.GetNumCompetitors()); ++i) {
    DescribeRule(*node.GetCompetitorImp(i), out);
  }
  for (unsigned int i = 0; i < static_cast<unsigned int>(node.GetNumSurrogates()); ++i) {
    out << " else";
    DescribeRule(*node.GetSurrogateImp(i), out);
  }
  for (int i = 0; i < node.GetNumPredictors(); ++i) {
    double minimum = 0.0;
    double maximum = 0.0;
    bool missing = false;
    node.GetPredictorRange(i, &minimum, &maximum);
    node.GetPredictorMissingValueFlag(i, &missing);
    out << " {" << minimum << ' ' << maximum << (missing ? " ?}" : "}");
  }
  out << '\n';
  for (unsigned int i = 0; i < static_cast<unsigned int>(node.GetNumChildren()); ++i) {
    DescribeNode(*node.GetChildImp(i), depth + 1, out);
  }
}

}  // namespace

std::string Describe(Node const& root) {
  std::ostringstream out;
  out << std::hexfloat;
  DescribeNode(dynamic_cast<NodeImp const&>(root), 0, out);
  return out.str();
}

}  // namespace tree::grow
