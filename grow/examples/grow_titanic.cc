// Grows a tree of who survived the Titanic, and says how good it is: grow_titanic FILE

#include <iostream>
#include <memory>
#include <optional>

#include "tree/grow/csv.h"
#include "tree/grow/grower.h"

int main(int argc, char* argv[]) {
  char const* const file = argc == 2 ? argv[1] : "data/titanic.csv";
  try {
    // [grow]
    std::optional<tree::grow::CsvData> const csv = tree::grow::ReadCsv(file);
    tree::grow::DataSet const& data = csv->data;
    tree::grow::CaseRoles roles;
    roles.target = data.RequireColumn("Survived");
    roles.frequencyWeight = data.RequireColumn("Freq");  // each line stands for so many people
    for (char const* const name : {"Class", "Sex", "Age"}) {
      roles.predictors.push_back(data.RequireColumn(name));
    }

    tree::CCartSettingsImp settings(tree::grow::MakeCoreSettings(data, roles));
    settings.GetPriors()->Set(tree::PriorTypeAlternate);  // the shares of the sample
    std::unique_ptr<tree::grow::Grower> const grower =
        tree::grow::MakeGrower(data, roles, settings);
    if (!grower->Grow() || !grower->Validate()) {
      std::cerr << grower->GetFailureMessage() << '\n';
      return 1;
    }
    std::cout << grower->GetNumNodes(tree::TerminalNodes) << " terminal nodes\n"
              << *grower->GetStatistics();
    // [grow]
  } catch (tree::grow::InputError const& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
