#include "chaid/group_pairs.h"

#include <cmath>
#include <numeric>

namespace tree::grow {

void GroupPairs::Reset(CategoryKind kind, std::size_t numCategories, bool floating) {
  kind_ = kind;
  numCategories_ = numCategories;
  floating_ = floating ? numCategories - 1 : kNone;
  groups_.resize(numCategories);
  std::iota(groups_.begin(), groups_.end(), std::size_t{0});
  isGroup_.assign(numCategories, 1);
  bestPartner_.assign(numCategories, kNone);
  std::size_t const numPairs =
      kind == CategoryKind::kNominal ? numCategories * (numCategories - 1) / 2 : 2 * numCategories;
  if (pairs_.size() < numPairs) pairs_.resize(numPairs);
}

void GroupPairs::Remove(std::size_t group) {
  groups_.erase(std::lower_bound(groups_.begin(), groups_.end(), group));
  isGroup_[group] = 0;
}

void GroupPairs::Insert(std::size_t group) {
  groups_.insert(std::lower_bound(groups_.begin(), groups_.end(), group), group);
  isGroup_[group] = 1;
}

bool GroupPairs::MayMerge(std::size_t position, std::size_t higher) const {
  if (higher <= groups_[position]) return false;
  return kind_ == CategoryKind::kNominal || higher == floating_ || groups_[position + 1] == higher;
}

double GroupPairs::LogPOf(Tested& tested) {
  if (std::isnan(tested.logP)) tested.logP = LogP(tested.statistic);
  return tested.logP;
}

bool GroupPairs::HasGreaterP(Tested& left, Tested& right) {
  if (IsSurelyLessSignificant(left.statistic, right.statistic)) return true;
  if (IsSurelyLessSignificant(right.statistic, left.statistic)) return false;
  return LogPOf(left) > LogPOf(right);
}

void GroupPairs::Offer(std::size_t group, std::size_t partner) {
  Tested& offered = At(group, partner);
  if (offered.logP == kExcluded) return;
  std::size_t& best = bestPartner_[group];
  if (best == kNone || IsLessSignificant(offered, At(group, best)) ||
      (partner < best && !IsLessSignificant(At(group, best), offered))) {
    best = partner;
  }
}

void GroupPairs::FindBestPartner(std::size_t position) {
  std::size_t const group = groups_[position];
  bestPartner_[group] = kNone;
  VisitPartners(position, [&](std::size_t partner) { Offer(group, partner); });
}

bool GroupPairs::FindLeastSignificant(GroupPair& pair) {
  bool any = false;
  for (std::size_t const group : groups_) {
    std::size_t const partner = bestPartner_[group];
    if (partner == kNone) continue;
    if (!any || IsLessSignificant(At(group, partner), At(pair.first, pair.second))) {
      pair = {group, partner};
      any = true;
    }
  }
  return any;
}

std::size_t GroupPairs::FindMostSimilar(std::size_t group) {
  std::size_t best = kNone;
  auto const at = [&](std::size_t other) -> Tested& {
    return At(std::min(group, other), std::max(group, other));
  };
  auto const offer = [&](std::size_t other) {
    if (best == kNone || IsLessSignificant(at(other), at(best))) best = other;
  };
  for (std::size_t position = 0; position < groups_.size(); ++position) {
    if (groups_[position] == group) {
      VisitPartners(position, offer);
    } else if (MayMerge(position, group)) {
      offer(groups_[position]);
    }
  }
  return best;
}

}  // namespace tree::grow
