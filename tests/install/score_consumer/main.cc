// An outside program, built against the installed scorers: scores cases by a tree of one split.

#include <tree/score/scorer.h>

#include <cstdint>

int main() {
  tree::NodeImp root;
  root.SetNumCompetitors(1);
  auto* const rule = new tree::OSplitRule(-999.0, 0);
  rule->SetCutPoint(2.5);
  root.SetCompetitor(0, rule);
  root.SetNumChildren(2);
  for (unsigned int position = 0; position < 2; ++position) {
    auto* const child = new tree::NodeImp;
    child->SetId(position + 1);
    root.SetChild(position, child);
  }
  double const values[] = {3.0, 2.0};
  std::uint32_t ids[2] = {};
  tree::score::Answers answers;
  answers.ids = ids;
  tree::score::Scorer::FromTree(root).Score(tree::score::Cases::OfRows(values, 2, 1), answers);
  return ids[0] == 2 && ids[1] == 1 ? 0 : 1;
}
