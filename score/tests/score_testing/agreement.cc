#include "score_testing/agreement.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>

#include "block_scoring.h"
#include "flat_tree.h"
#include "flattening.h"
#include "score_testing/guarded_memory.h"
#include "tree/score/scorer.h"

namespace tree::score::testing {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

/// Cases as a table of rows, some without a value.
struct Table {
  std::size_t numCases;
  std::size_t numPredictors;
  std::vector<double> values;
  std::vector<bool> isNull;

  double const* GetRow(std::size_t row) const { return values.data() + row * numPredictors; }
  std::vector<bool> GetNulls(std::size_t row) const {
    auto const begin = isNull.begin() + static_cast<std::ptrdiff_t>(row * numPredictors);
    return {begin, begin + static_cast<std::ptrdiff_t>(numPredictors)};
  }
};

bool HaveSameBits(double a, double b) {
  return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

void Fail(std::string const& what, std::size_t row) {
  throw std::logic_error(what + ": case " + std::to_string(row) + " ends elsewhere");
}

class Agreement {
 public:
  Agreement(NodeImp const& root, std::size_t numPredictors, std::size_t numCases, Draw const& draw)
      : root_(root),
        nodes_(ListNodes(root)),
        scorer_(Scorer::FromTree(root)),
        tree_(Flatten(root)),
        table_{numCases, numPredictors, {}, {}},
        selection_(numCases / 2 + 1) {
    for (std::size_t index = 0; index < numCases * numPredictors; ++index) {
      table_.values.push_back(DrawValue(draw));
      table_.isNull.push_back(false);
    }
    for (std::size_t& number : selection_) number = draw(static_cast<std::uint32_t>(numCases));
  }

  void Run(Draw const& draw) {
    FindNodes();
    CheckRows<double>("rows of doubles");
    CheckColumns<double>("columns of doubles");
    CheckOneByOne<double>();
    CheckAnswers();
    CheckNan<double>("rows of doubles with NaN for none");
    CheckBitmaps<double>("columns of doubles with bitmaps", draw);
    MakeFloats();
    CheckRows<float>("rows of floats");
    CheckColumns<float>("columns of floats");
    CheckOneByOne<float>();
    CheckNan<float>("rows of floats with NaN for none");
    CheckBitmaps<float>("columns of floats with bitmaps", draw);
    MakeCodes(draw);
    CheckBitmaps<std::int32_t>("columns of codes", draw);
    CheckMixedColumns(draw);
  }

 private:
  // By the library's own walk where all have values, which the other one then has to agree with.
  void FindNodes() {
    expected_.clear();
    for (std::size_t row = 0; row < table_.numCases; ++row) {
      std::vector<bool> const isNull = table_.GetNulls(row);
      NodeImp const* const node = WalkTree(root_, table_.GetRow(row), isNull);
      bool anyNull = false;
      for (bool const null : isNull) anyNull = anyNull || null;
      if (!anyNull && root_.DropObservationThroughTree(table_.GetRow(row), nullptr) != node) {
        throw std::logic_error("the walks disagree");
      }
      expected_.push_back(node->GetId());
    }
  }

  void CheckPositions(char const* what, std::vector<std::uint32_t> const& positions,
                      std::size_t const* selection) const {
    for (std::size_t index = 0; index < positions.size(); ++index) {
      std::size_t const row = selection == nullptr ? index : selection[index];
      if (scorer_.GetId(positions[index]) != expected_[row]) Fail(what, row);
    }
  }

  void Check(char const* what, Cases const& cases) const {
    for (bool const isSelected : {false, true}) {
      std::size_t const* const selection = isSelected ? selection_.data() : nullptr;
      std::size_t const count = isSelected ? selection_.size() : table_.numCases;
      std::vector<std::uint32_t> positions(count);
      ScoreOptions options;
      if (isSelected) options.selection = Selection{selection, count};
      options.numThreads = 1;
      Answers answers;
      answers.positions = positions.data();
      scorer_.Score(cases, answers, options);
      CheckPositions(what, positions, selection);

      ScoreBlock const implementations[] = {
          ChoosePortableScoreBlock(tree_, cases, isSelected),
          ChooseAvx512ScoreBlock(tree_, cases, isSelected),
      };
      for (ScoreBlock const implementation : implementations) {
        if (implementation == nullptr) continue;
        std::fill(positions.begin(), positions.end(), 0);
        for (std::size_t begin = 0; begin < count; begin += kBlockSize) {
          auto const size = static_cast<std::uint32_t>(std::min(kBlockSize, count - begin));
          implementation(tree_, cases, selection, begin, size, positions.data() + begin);
        }
        CheckPositions(what, positions, selection);
      }
    }
  }

  template <class Value>
  static Value Convert(double value) {
    return static_cast<Value>(value);
  }

  template <class Value>
  GuardedVector<Value> MakeRows(std::size_t stride) const {
    // Nothing follows the last value of the last row.
    GuardedVector<Value> rows((table_.numCases - 1) * stride + table_.numPredictors);
    for (std::size_t row = 0; row < table_.numCases; ++row) {
      for (std::size_t predictor = 0; predictor < table_.numPredictors; ++predictor) {
        rows[row * stride + predictor] = Convert<Value>(table_.GetRow(row)[predictor]);
      }
    }
    return rows;
  }

  template <class Value>
  std::vector<GuardedVector<Value>> MakeColumns(std::size_t stride) const {
    std::vector<GuardedVector<Value>> columns(table_.numPredictors);
    for (std::size_t predictor = 0; predictor < table_.numPredictors; ++predictor) {
      columns[predictor].resize(table_.numCases * stride);
      for (std::size_t row = 0; row < table_.numCases; ++row) {
        columns[predictor][row * stride] = Convert<Value>(table_.GetRow(row)[predictor]);
      }
    }
    return columns;
  }

  template <class Value>
  void CheckRows(char const* what) const {
    for (std::size_t const padding : {0U, 3U}) {
      std::size_t const stride = table_.numPredictors + padding;
      GuardedVector<Value> const rows = MakeRows<Value>(stride);
      Check(what, Cases::OfRows(rows.data(), table_.numCases, table_.numPredictors, stride));
    }
  }

  template <class Value>
  void CheckColumns(char const* what) const {
    for (std::size_t const stride : {1U, 2U}) {
      std::vector<GuardedVector<Value>> const data = MakeColumns<Value>(stride);
      std::vector<Column> columns;
      columns.reserve(data.size());
      for (auto const& values : data) {
        columns.emplace_back(values.data(), static_cast<std::ptrdiff_t>(stride));
      }
      Check(what, Cases::OfColumns(columns.data(), columns.size(), table_.numCases));
    }
  }

  template <class Value>
  void CheckOneByOne() const {
    GuardedVector<Value> const rows = MakeRows<Value>(table_.numPredictors);
    for (std::size_t row = 0; row < table_.numCases; ++row) {
      std::uint32_t const position = scorer_.FindPosition(rows.data() + row * table_.numPredictors);
      if (scorer_.GetId(position) != expected_[row]) Fail("one by one", row);
    }
  }

  void CheckAnswers() const {
    GuardedVector<double> const rows = MakeRows<double>(table_.numPredictors);
    std::size_t const numClasses = scorer_.GetNumClasses();
    std::vector<std::uint32_t> ids(table_.numCases);
    std::vector<double> predictions(table_.numCases);
    std::vector<double> probabilities(table_.numCases * numClasses);
    Answers answers;
    answers.ids = ids.data();
    answers.predictions = predictions.data();
    answers.probabilities = numClasses > 0 ? probabilities.data() : nullptr;
    Scorer const again = Scorer::FromBlock(scorer_.GetBlock(), scorer_.GetSize());
    again.Score(Cases::OfRows(rows.data(), table_.numCases, table_.numPredictors), answers);
    for (std::size_t row = 0; row < table_.numCases; ++row) {
      NodeImp const& node = *nodes_[expected_[row] - 1];
      if (ids[row] != expected_[row]) Fail("identifiers", row);
      if (!HaveSameBits(predictions[row], node.GetAssignment())) Fail("predictions", row);
      for (std::size_t index = 0; index < numClasses; ++index) {
        double const probability =
            node.GetClsInfo(TrainingSample)->GetClassProbability(static_cast<int>(index));
        if (!HaveSameBits(probabilities[row * numClasses + index], probability)) {
          Fail("probabilities", row);
        }
      }
    }
  }

  // NaN stands for no value in these rows.
  template <class Value>
  void CheckNan(char const* what) {
    std::vector<std::uint32_t> const asValues = expected_;
    for (std::size_t index = 0; index < table_.values.size(); ++index) {
      table_.isNull[index] = std::isnan(table_.values[index]);
    }
    FindNodes();
    GuardedVector<Value> const rows = MakeRows<Value>(table_.numPredictors);
    Check(what, Cases::OfRows(rows.data(), table_.numCases, table_.numPredictors)
                    .WithNan(NanMeaning::kMissing));
    std::vector<GuardedVector<Value>> const data = MakeColumns<Value>(1);
    std::vector<Column> columns;
    columns.reserve(data.size());
    for (auto const& values : data) columns.emplace_back(values.data());
    Check(what, Cases::OfColumns(columns.data(), columns.size(), table_.numCases)
                    .WithNan(NanMeaning::kMissing));
    table_.isNull.assign(table_.values.size(), false);
    expected_ = asValues;
  }

  // With bitmaps that say what is null, and NaN null or not.
  template <class Value>
  void CheckBitmaps(char const* what, Draw const& draw) {
    for (bool const nanIsNull : {false, true}) {
      DrawNulls(draw);
      std::size_t const offset = draw(20);
      auto const bitmaps = MakeBitmaps(offset);
      std::vector<GuardedVector<Value>> const data = MakeColumns<Value>(1);
      std::vector<Column> columns;
      for (std::size_t predictor = 0; predictor < table_.numPredictors; ++predictor) {
        columns.push_back(
            Column(data[predictor].data()).WithValidity(bitmaps[predictor].data(), offset));
      }
      CheckAsColumns(what, columns, nanIsNull);
    }
  }

  // Columns of every type beside each other, of values that all types have.
  void CheckMixedColumns(Draw const& draw) {
    for (bool const nanIsNull : {false, true}) {
      DrawNulls(draw);
      auto const bitmaps = MakeBitmaps(0);
      auto const doubles = MakeColumns<double>(2);
      auto const floats = MakeColumns<float>(1);
      auto const codes = MakeColumns<std::int32_t>(1);
      std::vector<Column> columns;
      for (std::size_t predictor = 0; predictor < table_.numPredictors; ++predictor) {
        switch (predictor % 3) {
          case 0:
            columns.emplace_back(doubles[predictor].data(), 2);
            break;
          case 1:
            columns.emplace_back(floats[predictor].data());
            break;
          default:
            columns.emplace_back(codes[predictor].data());
        }
        columns.back() = columns.back().WithValidity(bitmaps[predictor].data());
      }
      CheckAsColumns("columns of many types", columns, nanIsNull);
    }
  }

  void DrawNulls(Draw const& draw) {
    for (std::size_t index = 0; index < table_.values.size(); ++index) {
      table_.isNull[index] = draw(8) == 0;
    }
  }

  // Of just as many bytes as are needed.
  std::vector<GuardedVector<std::uint8_t>> MakeBitmaps(std::size_t offset) const {
    std::size_t const numBytes = (offset + table_.numCases + 7) / 8;
    std::vector<GuardedVector<std::uint8_t>> bitmaps(table_.numPredictors,
                                                     GuardedVector<std::uint8_t>(numBytes));
    for (std::size_t index = 0; index < table_.values.size(); ++index) {
      if (table_.isNull[index]) continue;
      std::size_t const bit = offset + index / table_.numPredictors;
      bitmaps[index % table_.numPredictors][bit / 8] |= static_cast<std::uint8_t>(1U << (bit % 8));
    }
    return bitmaps;
  }

  void CheckAsColumns(char const* what, std::vector<Column> const& columns, bool nanIsNull) {
    std::vector<std::uint32_t> const asValues = expected_;
    for (std::size_t index = 0; nanIsNull && index < table_.values.size(); ++index) {
      if (std::isnan(table_.values[index])) table_.isNull[index] = true;
    }
    FindNodes();
    Check(what, Cases::OfColumns(columns.data(), columns.size(), table_.numCases)
                    .WithNan(nanIsNull ? NanMeaning::kMissing : NanMeaning::kValue));
    table_.isNull.assign(table_.values.size(), false);
    expected_ = asValues;
  }

  void MakeFloats() {
    for (double& value : table_.values) {
      if (std::isnan(value)) {
        value = kNan;
      } else if (std::isfinite(value) && std::fabs(value) > std::numeric_limits<float>::max()) {
        value = 0.0;
      }
      value = static_cast<double>(static_cast<float>(value));
    }
    FindNodes();
  }

  void MakeCodes(Draw const& draw) {
    for (double& value : table_.values) value = static_cast<double>(draw(100)) - 9.0;
    FindNodes();
  }

  NodeImp const& root_;
  std::vector<NodeImp const*> nodes_;
  Scorer scorer_;
  FlatTree tree_;
  Table table_;
  GuardedVector<std::size_t> selection_;
  std::vector<std::uint32_t> expected_;  // identifiers, by case
};

}  // namespace

void CheckAgreement(NodeImp const& root, std::size_t numPredictors, std::size_t numCases,
                    Draw const& draw) {
  Agreement(root, numPredictors, numCases, draw).Run(draw);
}

}  // namespace tree::score::testing
