#include "output/write_cases.h"

#include <cmath>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli_testing/credit_data.h"
#include "cli_testing/trees.h"

namespace tree::cli {
namespace {

using namespace testing;  // NOLINT(google-build-using-namespace): what the trees are made of
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::SizeIs;

/// Species is Adelie or Gentoo, size is ordered.
grow::DataSet Penguins(std::string const& rows) {
  grow::CsvOptions options;
  options.categories = {{"species", {"Adelie", "Gentoo"}},
                        {"island", {"Biscoe", "Dream", "Torgersen"}},
                        {"size", {"small", "medium", "large"}}};
  options.levels = {{"species", global::MeasurementNominal},
                    {"island", global::MeasurementNominal}};
  return Read("species,mass,flipper,island,size\n" + rows, options);
}

grow::CaseRoles Roles(int target) {
  grow::CaseRoles roles;
  roles.target = target;
  roles.predictors = {2, 3, 4};
  return roles;
}

/// Keeps what it hears, and ends the work at a given report.
class Listener : public ProgressListener {
 public:
  /// `last`: number of the report that ends the work, from 1; 0 for none.
  explicit Listener(std::size_t last = 0) : last_(last) {}

  bool Report(double fraction, char const* activity) noexcept override {
    fractions_.push_back(fraction);
    activity_ = activity;
    return fractions_.size() != last_;
  }
  std::vector<double> const& GetFractions() const { return fractions_; }
  std::string const& GetActivity() const { return activity_; }

 private:
  std::size_t last_;
  std::vector<double> fractions_;
  std::string activity_;
};

/// Twice as many rows as are written between two reports.
grow::DataSet TwoSlices() {
  std::string rows;
  for (int row = 0; row < 8192; ++row) rows += "Gentoo,5000,220,Biscoe,large\n";
  return Penguins(rows);
}

constexpr int kSpecies = 0;
constexpr int kMass = 1;

std::string Written(NodeImp const& root, grow::DataSet const& data, int target,
                    char delimiter = ',') {
  std::ostringstream out;
  Listener listener;
  EXPECT_TRUE(WriteCases(out, root, data, Roles(target), delimiter, listener));
  return out.str();
}

TEST(WriteCases, WritesALinePerRowOfAClassificationTree) {
  grow::DataSet const data = Penguins(
      "Adelie,3500,190,Biscoe,small\n"
      "Gentoo,5000,220,Biscoe,large\n"
      "NA,NA,200,Dream,NA\n");

  EXPECT_EQ(Written(*ClassTree(), data, kSpecies),
            "row,node,prediction,probability of Adelie,probability of Gentoo\n"
            "1,3,Adelie,1,0\n"
            "2,2,Gentoo,0.15,0.85\n"
            "3,4,Gentoo,0.4,0.6\n");
}

TEST(WriteCases, PlacesMissingValuesAsTheTreeDoes) {
  grow::DataSet const data = Penguins(
      "Adelie,3500,NA,Torgersen,small\n"  // the surrogate sends it to node 2
      "Adelie,3500,NA,NA,small\n"         // the dumb rules send it to node 1, then 3
      "Adelie,3500,190,NA,small\n");      // the dumb rule of node 1

  EXPECT_EQ(Written(*ClassTree(), data, kSpecies),
            "row,node,prediction,probability of Adelie,probability of Gentoo\n"
            "1,2,Gentoo,0.15,0.85\n"
            "2,3,Adelie,1,0\n"
            "3,3,Adelie,1,0\n");
}

TEST(WriteCases, WritesALinePerRowOfARegressionTree) {
  grow::DataSet const data = Penguins(
      "Adelie,3500,190,Biscoe,small\n"
      "Gentoo,5000,220,Biscoe,large\n");
  std::unique_ptr<NodeImp> const root = NumberTree();
  root->GetChildImp(0)->GetRegInfoImp(TrainingSample)->SetMean(10000.0 / 3.0);

  EXPECT_EQ(Written(*root, data, kMass),
            "row,node,prediction\n"
            "1,1,3333.3333333333335\n"
            "2,2,4500\n");
}

TEST(WriteCases, SeparatesFieldsAsItIsTold) {
  grow::DataSet const data = Penguins("Gentoo,5000,220,Biscoe,large\n");

  EXPECT_EQ(Written(*ClassTree(), data, kSpecies, ';'),
            "row;node;prediction;probability of Adelie;probability of Gentoo\n"
            "1;2;Gentoo;0.15;0.85\n");
}

TEST(WriteCases, CanBeReadBackWhateverTheLabels) {
  grow::CsvOptions options;
  options.categories = {{"species", {"Ade\n\"lie\"", "Gen,too"}}};
  options.levels = {{"species", global::MeasurementNominal}};
  grow::DataSet const data =
      Read("species,mass,flipper,island,size\n\"Gen,too\",1,220,0,0\n", options);

  grow::DataSet const written = Read(Written(*ClassTree(), data, kSpecies));

  EXPECT_EQ(written.GetColumn(2).description.labels.front(), "Gen,too");
  EXPECT_GE(written.FindColumn("probability of Ade\n\"lie\""), 0);
  EXPECT_EQ(written.GetColumn(4).values[0], 34.0 / 40.0);
}

TEST(WriteCases, ReportsBeforeEverySliceOfRows) {
  std::ostringstream out;
  Listener listener;

  EXPECT_TRUE(WriteCases(out, *ClassTree(), TwoSlices(), Roles(kSpecies), ',', listener));

  EXPECT_THAT(listener.GetFractions(), ElementsAre(0.0, 0.5));
  EXPECT_EQ(listener.GetActivity(), "writing the predictions");
  EXPECT_THAT(out.str(), EndsWith("\n8192,2,Gentoo,0.15,0.85\n"));
}

TEST(WriteCases, EndsWhereItsListenerWantsItTo) {
  struct {
    std::size_t last;
    char const* end;
  } const rows[] = {
      {1, "probability of Gentoo\n"},
      {2, "\n4096,2,Gentoo,0.15,0.85\n"},
  };
  grow::DataSet const data = TwoSlices();
  for (auto const& [last, end] : rows) {
    SCOPED_TRACE(last);
    std::ostringstream out;
    Listener listener(last);

    EXPECT_FALSE(WriteCases(out, *ClassTree(), data, Roles(kSpecies), ',', listener));

    EXPECT_THAT(listener.GetFractions(), SizeIs(last));
    EXPECT_THAT(out.str(), EndsWith(end));
  }
}

TEST(CsvField, IsQuotedWhereItHasToBe) {
  struct {
    char const* text;
    char const* comma;
    char const* semicolon;
  } const rows[] = {
      {"a", "a", "a"},
      {"a b", "a b", "a b"},
      {"a,b", "\"a,b\"", "a,b"},
      {"a;b", "a;b", "\"a;b\""},
      {"say \"no\"", "\"say \"\"no\"\"\"", "\"say \"\"no\"\"\""},
      {"a\nb", "\"a\nb\"", "\"a\nb\""},
      {"a\rb", "\"a\rb\"", "\"a\rb\""},
      {" a", "\" a\"", "\" a\""},
      {"a\t", "\"a\t\"", "\"a\t\""},
      {"", "\"\"", "\"\""},
  };
  for (auto const& [text, comma, semicolon] : rows) {
    EXPECT_EQ(CsvField(text, ','), comma);
    EXPECT_EQ(CsvField(text, ';'), semicolon);
  }
}

}  // namespace
}  // namespace tree::cli
