#include <algorithm>
#include <limits>
#include <numeric>

#include "tree/assertions.h"
#include "tree/misclassification.h"
#include "tree/support.h"

namespace tree {

Scores::Scores() = default;

Scores::Scores(Scores const& /*other*/) {}

Scores::~Scores() = default;

ScoresImp::ScoresImp() = default;

ScoresImp::ScoresImp(ScoresImp const& other) = default;

ScoresImp& ScoresImp::operator=(ScoresImp const& other) = default;

ScoresImp::~ScoresImp() = default;

Scores* ScoresImp::Clone() const { return new ScoresImp(*this); }

int ScoresImp::GetNumClasses() const { return static_cast<int>(scores_.size()); }

ScoreType ScoresImp::GetType() const { return type_; }

double ScoresImp::Get(int index) const {
  bool const known = index >= 0 && index < GetNumClasses();
  return known ? scores_[static_cast<std::size_t>(index)] : systemMissingValue();
}

bool ScoresImp::Set(ScoreType type) {
  if (type != ScoreTypeDefault) return false;
  SetDefault();
  return true;
}

bool ScoresImp::Set(int index, double score) {
  if (index < 0 || index == std::numeric_limits<int>::max()) return false;
  auto const position = static_cast<std::size_t>(index);
  if (position >= scores_.size()) scores_.resize(position + 1);
  scores_[position] = score;
  type_ = ScoreTypeCustom;
  return true;
}

void ScoresImp::SetDefault() {
  std::iota(scores_.begin(), scores_.end(), 0.0);
  type_ = ScoreTypeDefault;
}

void ScoresImp::Resize(int count) {
  internal::RequireIndex(count, std::numeric_limits<int>::max(), "ScoresImp::Resize");
  scores_.resize(static_cast<std::size_t>(std::max(count, 0)));
}

}  // namespace tree
