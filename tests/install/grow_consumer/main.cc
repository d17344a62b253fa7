// An outside program, built against the installed growers: grows a tree of one split.

#include <tree/grow/grower.h>

#include <cstdio>

int main() {
  tree::grow::DataSet data(4);
  tree::grow::ColumnDescription target;
  target.name = "class";
  target.level = global::MeasurementNominal;
  tree::grow::ColumnDescription predictor;
  predictor.name = "x";
  tree::grow::CaseRoles roles;
  roles.target = data.AddColumn(target, {0.0, 0.0, 1.0, 1.0});
  roles.predictors = {data.AddColumn(predictor, {1.0, 2.0, 3.0, 4.0})};

  tree::CCartSettingsImp settings(tree::grow::MakeCoreSettings(data, roles));
  settings.GetStopRule()->SetMinNodeSize(2);
  settings.GetStopRule()->SetMinChildSize(1);
  auto const grower = tree::grow::MakeGrower(data, roles, settings);
  if (!grower->Grow()) {
    std::puts(grower->GetFailureMessage());
    return 1;
  }
  double const value = 2.6;
  return grower->GetTree()->DropObservationThroughTree(&value, nullptr)->GetAssignment() == 1.0 ? 0
                                                                                                : 1;
}
