// Reads a file of penguins and says what a tree could be grown on: read_penguins FILE

#include <iostream>
#include <optional>

#include "tree/grow/csv.h"
#include "tree/grow/data_set.h"
#include "tree/settings.h"

int main(int argc, char* argv[]) {
  char const* const file = argc == 2 ? argv[1] : "data/penguins.csv";
  try {
    std::optional<tree::grow::CsvData> const csv = tree::grow::ReadCsv(file);
    tree::grow::DataSet const& data = csv->data;
    tree::grow::CaseRoles roles;
    roles.target = data.RequireColumn("sex");
    roles.predictors = {data.RequireColumn("species"), data.RequireColumn("body_mass_g")};
    tree::grow::CaseSelection const cases(data, roles);
    tree::CCartSettingsImp settings(tree::grow::MakeCoreSettings(data, roles));
    std::cout << data.GetNumCases() << " cases, of which "
              << cases.GetRows(tree::TrainingSample).size() << " count and "
              << cases.GetLeftOut().missingTarget << " have no target\n"
              << settings.GetCoreSettings()->GetPredictor(0)->GetNumValues() << " species\n";
  } catch (tree::grow::InputError const& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
