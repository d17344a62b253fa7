#include "output/draw_tree.h"

#include <utf8.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <memory>
#include <ostream>
#include <utility>
#include <vector>

#include "output/number_text.h"
#include "output/rule_text.h"

namespace tree::cli {
namespace {

constexpr std::size_t kMaxTextLength = 40;  // of a name or label, in characters
constexpr std::size_t kLineLength = 26;     // of the values at an edge
constexpr std::size_t kMaxValueLines = 5;   // at an edge
constexpr std::size_t kMaxLegendRows = 20;
constexpr int kBarWidth = 120;  // in points
constexpr int kBarHeight = 9;

// Told apart by people who do not see all colours. Source: Okabe and Ito 2008.
constexpr std::array kClassColours = {"#0072b2", "#e69f00", "#009e73", "#cc79a7",
                                      "#56b4e9", "#d55e00", "#f0e442", "#999999"};

char const* ColourOf(std::size_t index) { return kClassColours[index % kClassColours.size()]; }

std::string Entity(char32_t character) {
  switch (character) {
    case U'&':
      return "&amp;";
    case U'<':
      return "&lt;";
    case U'>':
      return "&gt;";
    case U'"':
      return "&quot;";
    default:
      break;
  }
  std::string bytes;
  utf8::append(character, std::back_inserter(bytes));
  return bytes;
}

/// XML has no way to write these.
bool CanBeDrawn(char32_t character) {
  bool const isControl = character < 0x20 || (character >= 0x7F && character < 0xA0);
  return !isControl && character != 0xFFFE && character != 0xFFFF;
}

/// As many lines as it takes, values with commas between them; the last one says how many are left
/// out.
std::vector<std::string> WrappedValues(Comparison const& comparison) {
  std::vector<std::string> lines;
  std::string line = DrawnText(comparison.sign);
  std::size_t length = comparison.sign.size();
  std::size_t numLeft = comparison.values.size();
  for (std::string const& value : comparison.values) {
    std::string const shown = Shown(value);
    std::string const text = DrawnText(shown) + (numLeft > 1 ? "," : "");
    std::size_t const textLength = std::min(shown.size(), kMaxTextLength) + 1;
    if (length > comparison.sign.size() && length + textLength > kLineLength) {
      lines.push_back(line);
      line.clear();
      length = 0;
      if (lines.size() + 1 == kMaxValueLines && numLeft > 1) {
        lines.push_back(std::to_string(numLeft) + " more");
        return lines;
      }
    }
    line += (line.empty() ? "" : " ") + text;
    length += textLength + 1;
    --numLeft;
  }
  lines.push_back(line);
  return lines;
}

std::string EdgeLabel(SplitRuleImp const& rule, int child, TreeNames const& names) {
  std::string label;
  for (Comparison const& comparison : ComparisonsOf(rule, child, names)) {
    for (std::string const& line : WrappedValues(comparison)) {
      if (!label.empty()) label += "<br/>";
      label += "&#160;" + line + "&#160;";  // or it would touch the edge
    }
  }
  return label;
}

std::string BarCell(int width, std::string const& colour) {
  if (width == 0) return "";
  return "<td fixedsize=\"true\" width=\"" + std::to_string(width) + "\" height=\"" +
         std::to_string(kBarHeight) + '"' + colour + "></td>";
}

/// A row of cells, one per class, as wide as the class is probable.
std::string Bar(std::vector<double> const& probabilities) {
  std::string cells;
  double sum = 0.0;
  int end = 0;  // of the cells so far, rounded one by one they would not add up
  for (std::size_t index = 0; index < probabilities.size(); ++index) {
    if (probabilities[index] > 0.0) sum = std::min(1.0, sum + probabilities[index]);
    int const begin = std::exchange(end, static_cast<int>(std::lround(kBarWidth * sum)));
    cells += BarCell(end - begin, std::string(" bgcolor=\"") + ColourOf(index) + '"');
  }
  cells += BarCell(kBarWidth - end, "");
  return "<tr><td><table border=\"0\" cellborder=\"0\" cellspacing=\"0\" cellpadding=\"0\""
         " fixedsize=\"true\" width=\"" +
         std::to_string(kBarWidth) + "\" height=\"" + std::to_string(kBarHeight) + "\"><tr>" +
         cells + "</tr></table></td></tr>";
}

/// What the node asks for; nothing for a terminal node.
std::string Question(Node const& node, TreeNames const& names) {
  if (node.GetNumChildren() == 0) return "";
  std::unique_ptr<SplitRule const> const rule(node.GetCompetitor(0));
  return "<hr/><tr><td><i>" + DrawnText(PredictorName(**rule, names)) + "</i></td></tr>";
}

void DrawNode(std::ostream& out, ShownTree const& tree, Node const& node) {
  bool const isTerminal = node.GetNumChildren() == 0;
  out << "  n" << node.GetId() << " [label=<<table border=\"1\" cellborder=\"0\" cellspacing=\"0\""
      << " cellpadding=\"3\" style=\"rounded\" color=\"" << (isTerminal ? "#3c7a3c" : "#33557f")
      << "\" bgcolor=\"" << (isTerminal ? "#eaf5ea" : "#f4f7fb") << "\">"
      << "<tr><td><font color=\"#777777\">" << node.GetId() << "</font>  <b>"
      << DrawnText(tree.Prediction(node)) << "</b></td></tr><tr><td>"
      << ShortNumber(node.GetNodeSize(TrainingSample)) << " cases, "
      << FixedNumber(tree.PercentSize(node, TrainingSample), 1) << " %</td></tr>";
  if (tree.HasClasses()) {
    out << Bar(ShownTree::Probabilities(node));
  } else {
    out << "<tr><td>sd " << ShortNumber(node.GetRegInfo(TrainingSample)->GetStdDev())
        << "</td></tr>";
  }
  out << Question(node, tree.GetNames()) << "</table>>];\n";
}

void DrawEdges(std::ostream& out, ShownTree const& tree, Node const& node) {
  std::unique_ptr<SplitRule const> const rule(node.GetCompetitor(0));
  for (int position = 0; position < node.GetNumChildren(); ++position) {
    out << "  n" << node.GetId() << " -> n"
        << node.GetChild(static_cast<unsigned int>(position))->GetId() << " [label=<"
        << EdgeLabel(**rule, position, tree.GetNames()) << ">];\n";
  }
}

/// Which colour is which class.
void DrawLegend(std::ostream& out, VariableNames const& target) {
  out << "  legend [label=<<table border=\"0\" cellborder=\"0\" cellspacing=\"2\"><tr>"
      << "<td colspan=\"2\" align=\"left\"><b>" << DrawnText(target.name) << "</b></td></tr>";
  std::size_t const numRows = std::min(target.labels.size(), kMaxLegendRows);
  for (std::size_t index = 0; index < numRows; ++index) {
    out << "<tr><td fixedsize=\"true\" width=\"14\" height=\"14\" bgcolor=\"" << ColourOf(index)
        << "\"></td><td align=\"left\">" << DrawnText(target.labels[index]) << "</td></tr>";
  }
  if (numRows < target.labels.size()) {
    out << "<tr><td></td><td align=\"left\">" << target.labels.size() - numRows
        << " more</td></tr>";
  }
  out << "</table>>];\n";
}

}  // namespace

std::string DrawnText(std::string_view text) {
  std::string valid;
  utf8::replace_invalid(text.begin(), text.end(), std::back_inserter(valid));
  std::string drawn;
  std::size_t length = 0;
  for (auto position = valid.cbegin(); position != valid.cend();) {
    if (++length > kMaxTextLength) return drawn + "...";
    auto const character = static_cast<char32_t>(utf8::unchecked::next(position));
    drawn += Entity(CanBeDrawn(character) ? character : U'\uFFFD');
  }
  // A label without anything in it is an error to Graphviz.
  return drawn.empty() ? "&quot;&quot;" : drawn;
}

void DrawTree(std::ostream& out, ShownTree const& tree) {
  out << "digraph tree {\n"
         "  graph [bgcolor=\"white\", nodesep=0.25, ranksep=0.45, pad=0.15];\n"
         "  node [shape=plain, fontname=\"Helvetica,Arial,sans-serif\", fontsize=11];\n"
         "  edge [color=\"#777777\", arrowsize=0.6, fontname=\"Helvetica,Arial,sans-serif\","
         " fontsize=10];\n";
  if (tree.HasClasses()) DrawLegend(out, tree.GetNames().target);
  PrefixNodeIterator nodes(&tree.GetRoot());
  while (Node const* const node = nodes.Next()) {
    DrawNode(out, tree, *node);
    if (node->GetNumChildren() > 0) DrawEdges(out, tree, *node);
  }
  out << "}\n";
}

}  // namespace tree::cli
