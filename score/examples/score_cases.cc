// Scores cases by a small tree in each way that there is.

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>
#include <utility>

#include "tree/score/scorer.h"
#include "tree/support.h"

namespace {

constexpr int kAge = 0;
constexpr int kRegion = 1;

std::unique_ptr<tree::NodeImp> MakeNode(unsigned int id, double mean) {
  auto node = std::make_unique<tree::NodeImp>();
  node->SetId(id);
  auto statistics = std::make_unique<tree::RegInfoImp>();
  statistics->SetMean(mean);
  node->SetRegInfo(statistics.release(), tree::TrainingSample);
  return node;
}

void Split(tree::NodeImp& node, std::unique_ptr<tree::SplitRuleImp> rule,
           std::unique_ptr<tree::NodeImp> first, std::unique_ptr<tree::NodeImp> second) {
  rule->SetDumbRule(1, 0.5);
  node.SetNumCompetitors(1);
  node.SetCompetitor(0, rule.release());
  node.SetNumChildren(2);
  node.SetChild(0, first.release());
  node.SetChild(1, second.release());
}

/// Node 1 sends ages up to 40 to node 2 and others to node 3, which sends region 2 to node 4 and
/// others to node 5.
std::unique_ptr<tree::NodeImp> MakeTree() {
  auto byAge = std::make_unique<tree::OSplitRule>(systemMissingValue(), kAge);
  byAge->SetCutPoint(40.0);
  auto byRegion = std::make_unique<tree::NSplitRule>(kRegion, 3);
  byRegion->SetCatMapping(2, 0);
  byRegion->SetCatMapping(0, 1);

  auto older = MakeNode(3, 17.0);
  Split(*older, std::move(byRegion), MakeNode(4, 14.5), MakeNode(5, 20.0));
  auto root = MakeNode(1, 15.0);
  Split(*root, std::move(byAge), MakeNode(2, 12.0), std::move(older));
  return root;
}

template <class Number>
void Print(char const* what, Number const* begin, Number const* end) {
  std::cout << what << ':';
  for (; begin != end; ++begin) std::cout << ' ' << *begin;
  std::cout << '\n';
}

void ScoreRows(tree::score::Scorer const& scorer) {
  // [rows]
  float const rows[] = {35.0F, 0.0F,  // age and region of a case
                        62.0F, 2.0F,  //
                        62.0F, 0.0F};
  double predictions[3];
  tree::score::Answers answers;
  answers.predictions = predictions;
  scorer.Score(tree::score::Cases::OfRows(rows, 3, 2), answers);
  // [rows]
  Print("predictions", std::begin(predictions), std::end(predictions));
}

void ScoreColumns(tree::score::Scorer const& scorer) {
  // [columns]
  double const ages[] = {35.0, 0.0, 62.0, 41.0};
  std::int32_t const regions[] = {0, 2, 2, 1};
  std::uint8_t const hasAge[] = {0b1101};  // not the second case; the lowest bit is the first
  tree::score::Column const columns[] = {
      tree::score::Column(ages).WithValidity(hasAge),
      tree::score::Column(regions),
  };
  std::uint32_t ids[4];
  tree::score::Answers answers;
  answers.ids = ids;
  scorer.Score(tree::score::Cases::OfColumns(columns, 2, 4), answers);
  // [columns]
  Print("nodes", std::begin(ids), std::end(ids));
}

void ScoreOne(tree::score::Scorer const& scorer) {
  // [one]
  double const person[] = {35.0, 0.0};
  std::uint32_t const position = scorer.FindPosition(person);
  std::cout << "node " << scorer.GetId(position) << " predicts " << scorer.GetPrediction(position)
            << '\n';
  // [one]
}

void ScoreAgain(tree::score::Scorer const& scorer, std::string const& path) {
  // [block]
  std::ofstream file(path, std::ios::binary);
  file.write(static_cast<char const*>(scorer.GetBlock()),
             static_cast<std::streamsize>(scorer.GetSize()));
  file.close();

  std::ifstream again(path, std::ios::binary);
  std::string const block(std::istreambuf_iterator<char>(again), {});
  auto const same = tree::score::Scorer::FromBlock(block.data(), block.size());
  // [block]
  std::cout << same.GetNumNodes() << " nodes in " << same.GetSize() << " bytes\n";

  double const person[] = {35.0, 0.0};
  // [mapped]
  int const opened = ::open(path.c_str(), O_RDONLY);
  void* const mapped = ::mmap(nullptr, block.size(), PROT_READ, MAP_SHARED, opened, 0);
  ::close(opened);
  if (mapped == MAP_FAILED) return;
  auto const inPlace = tree::score::Scorer::OverBlock(mapped, block.size());
  std::cout << "mapped: node " << inPlace.GetId(inPlace.FindPosition(person)) << '\n';
  // [mapped]
  ::munmap(mapped, block.size());
}

}  // namespace

int main(int argc, char** argv) {
  std::string const path = argc == 2 ? argv[1] : "score_cases.tree";
  try {
    std::unique_ptr<tree::NodeImp> const root = MakeTree();
    // [scorer]
    auto const scorer = tree::score::Scorer::FromTree(*root);
    // [scorer]
    ScoreRows(scorer);
    ScoreColumns(scorer);
    ScoreOne(scorer);
    ScoreAgain(scorer, path);
  } catch (tree::score::InputError const& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
