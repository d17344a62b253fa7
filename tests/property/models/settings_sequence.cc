#include <array>
#include <memory>
#include <vector>

#include "property/models/sequences.h"
#include "property/models/settings_changes.h"

namespace tree::testing {

namespace {

constexpr int kNumAlgorithms = 5;

AlgorithmType ChooseType(Choices& choices) {
  return static_cast<AlgorithmType>(choices.Below(kNumAlgorithms));
}

/// Assigns within a class, if both are of it.
template <class Settings>
bool Assign(AlgSettings& to, AlgSettings const& from) {
  auto* const target = dynamic_cast<Settings*>(&to);
  auto const* const source = dynamic_cast<Settings const*>(&from);
  if (target == nullptr || source == nullptr) return false;
  *target = *source;
  return true;
}

constexpr std::array kAssignments = {
    Assign<AlgSettings>,      Assign<CartSettings>,      Assign<CCartSettings>,
    Assign<RCartSettingsImp>, Assign<CCartSettingsImp>,  Assign<ChaidSettings>,
    Assign<CChaidSettings>,   Assign<RChaidSettingsImp>, Assign<CChaidSettingsImp>,
    Assign<QuestSettings>,    Assign<QuestSettingsImp>};

}  // namespace

void RunSettings(Choices choices) {
  CallersParts parts;
  for (int left = choices.Below(8); left > 0; --left) parts.Change(choices);
  std::vector<SettingsPair> pairs;
  for (int left = 3; left > 0; --left) pairs.emplace_back(ChooseType(choices), parts.core);

  while (choices.Any()) {
    SettingsPair& pair = pairs[static_cast<std::size_t>(choices.Below(3))];
    SettingsPair const& from = pairs[static_cast<std::size_t>(choices.Below(3))];
    switch (choices.Below(12)) {
      case 0:
        pair = SettingsPair(ChooseType(choices), parts.core);
        break;
      case 1:
        pair.settings->CopyFrom(*from.settings);
        pair.model.CopyFrom(from.model);
        break;
      case 2: {
        auto const assignment = static_cast<std::size_t>(choices.Below(kAssignments.size()));
        bool const done = kAssignments[assignment](*pair.settings, *from.settings);
        if (done) pair.model.CopyFrom(from.model);
        break;
      }
      case 3:
        pair.settings.reset(from.settings->Clone());
        pair.model = from.model.Copy();
        break;
      case 4:
        if (!choices.Flag()) break;
        pair.settings->Clear();
        pair.model.Clear();
        break;
      case 5:
      case 6:
        ChangeShared(pair, parts, choices);
        break;
      case 7:
      case 8:
        parts.Change(choices);
        break;
      default:
        ChangeOwn(pair, parts, choices);
        break;
    }
    parts.Check();
    for (SettingsPair const& each : pairs) Check(*each.settings, each.model);
  }
}

}  // namespace tree::testing
