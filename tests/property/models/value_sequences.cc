#include <vector>

#include "property/models/agree.h"
#include "property/models/pair_sequence.h"
#include "property/models/sequences.h"
#include "property/models/value_models.h"
#include "tree/values.h"

namespace tree::testing {

void RunVariableSettings(Choices choices) { RunPair<VariableSettingsImp, VariableModel>(choices); }

void RunIntervals(Choices choices) {
  std::vector<OValueSet> intervals(2);
  std::vector<IntervalModel> models(2);

  while (choices.Any()) {
    auto const which = static_cast<std::size_t>(choices.Below(2));
    OValueSet& interval = intervals[which];
    IntervalModel& model = models[which];
    int const operation = choices.Below(10);
    double const value = choices.Value();
    bool const flag = choices.Flag();
    switch (operation) {
      case 0:
        interval.SetLeftEnd(value);
        model.left = value;
        model.boundedLeft = true;
        break;
      case 1:
        interval.SetRightEnd(value);
        model.right = value;
        model.boundedRight = true;
        break;
      case 2:
        interval.SetOpenLeft(flag);
        model.openLeft = flag;
        break;
      case 3:
        interval.SetOpenRight(flag);
        model.openRight = flag;
        break;
      case 4:
        interval.SetBoundedLeft(flag);
        model.SetBoundedLeft(flag);
        break;
      case 5:
        interval.SetBoundedRight(flag);
        model.SetBoundedRight(flag);
        break;
      case 6:
        interval.Empty();
        model = {0.0, 0.0, true, model.openRight, true, true};
        break;
      case 7:
        interval = intervals[flag ? 1 : 0];
        model = models[flag ? 1 : 0];
        break;
      case 8: {
        double const other = choices.Value();
        interval = OValueSet(value, other);
        model = {value, other, true, true, true, true};
        break;
      }
      default:
        interval = OValueSet(intervals[1 - which]);
        model = models[1 - which];
        break;
    }
    for (std::size_t each : {0U, 1U}) {
      Check(intervals[each], models[each], choices);
      for (std::size_t other : {0U, 1U}) {
        Agree("operator==", intervals[each] == intervals[other],
              models[each].Equals(models[other]));
        Agree("operator<", intervals[each] < intervals[other],
              models[each].IsBefore(models[other]));
      }
    }
  }
}

void RunCodeSets(Choices choices) {
  std::vector<NValueSet> sets(2);
  std::vector<CodeSetModel> models(2);

  while (choices.Any()) {
    auto const which = static_cast<std::size_t>(choices.Below(2));
    int const operation = choices.Below(16);
    int const code =
        choices.Flag() ? choices.Below(8) : static_cast<int>(Truncated(choices.Value()));
    if (operation == 0) {
      sets[which] = sets[1 - which];
      models[which] = models[1 - which];
    } else if (operation == 1) {
      NValueSet const& same = sets[which];
      sets[which] = same;
    } else if (operation == 2) {
      NValueSet copy(sets[which]);
      copy.Add(code);
    } else {
      Agree("Add", sets[which].Add(code), models[which].Add(code));
    }
    Check(sets[0], models[0], choices);
    Check(sets[1], models[1], choices);
  }
}

}  // namespace tree::testing
