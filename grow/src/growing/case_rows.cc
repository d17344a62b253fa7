#include "growing/case_rows.h"

#include <atomic>
#include <cmath>
#include <limits>
#include <new>
#include <utility>

namespace tree::grow {
namespace {

constexpr std::align_val_t kAlignment{64};  // a row touches no more cache lines than it must

/// So many cases are turned at a time: their rows stay in the cache until all columns are read.
constexpr std::size_t kCasesAtATime = 128;
constexpr std::size_t kCasesPerTask = std::size_t{1} << 15;

}  // namespace

void CaseRows::Free::operator()(double* values) const { ::operator delete[](values, kAlignment); }

CaseRows::CaseRows(std::vector<Column const*> const& columns, std::vector<std::size_t> predictors,
                   std::vector<std::size_t> const& rows, Workers& workers)
    : predictors_(std::move(predictors)) {
  std::size_t const width = predictors_.size();
  if (width == 0) return;
  values_.reset(new (kAlignment) double[rows.size() * width]);
  std::atomic<bool> hasGaps{false};
  auto const turn = [&](std::size_t begin, std::size_t end) {
    for (std::size_t position = 0; position < width; ++position) {
      Column const& column = *columns[predictors_[position]];
      double const missing = column.description.missingValue;
      double* value = values_.get() + begin * width + position;
      bool isGap = false;
      for (std::size_t index = begin; index < end; ++index, value += width) {
        double const read = column.values[rows[index]];
        bool const isMissing = read == missing;
        *value = isMissing ? std::numeric_limits<double>::quiet_NaN() : read;
        isGap = isGap || isMissing || std::isinf(read);
      }
      if (isGap) hasGaps = true;
    }
  };
  workers.Run((rows.size() + kCasesPerTask - 1) / kCasesPerTask, [&](std::size_t task) {
    std::size_t const last = std::min(rows.size(), (task + 1) * kCasesPerTask);
    for (std::size_t begin = task * kCasesPerTask; begin < last; begin += kCasesAtATime) {
      turn(begin, std::min(last, begin + kCasesAtATime));
    }
  });
  hasGaps_ = hasGaps;
}

}  // namespace tree::grow
