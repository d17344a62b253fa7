#include "growing/case_rows.h"

#include <sys/mman.h>

#include <atomic>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <new>
#include <utility>

namespace tree::grow {
namespace {

constexpr std::size_t kLine = 64;  // a row touches no more cache lines than it must
constexpr std::size_t kHugePage = std::size_t{1} << 21;

/// Rows lie scattered when they are read: in pages of the usual size the processor has to look up
/// nearly each row's, which takes as long as to read it.
double* Allocate(std::size_t count) {
  std::size_t const alignment = count * sizeof(double) >= kHugePage ? kHugePage : kLine;
  std::size_t const size =
      (std::max<std::size_t>(1, count) * sizeof(double) + alignment - 1) / alignment * alignment;
  void* const memory = std::aligned_alloc(alignment, size);
  if (memory == nullptr) throw std::bad_alloc();
#ifdef MADV_HUGEPAGE
  if (alignment == kHugePage) madvise(memory, size, MADV_HUGEPAGE);  // or as it was, if refused
#endif
  return static_cast<double*>(memory);
}

/// So many cases are turned at a time: their rows stay in the cache until all columns are read.
constexpr std::size_t kCasesAtATime = 128;
constexpr std::size_t kCasesPerTask = std::size_t{1} << 15;

}  // namespace

void CaseRows::Free::operator()(double* values) const { std::free(values); }

CaseRows::CaseRows(std::vector<Column const*> const& columns, std::vector<std::size_t> predictors,
                   std::vector<std::size_t> const& rows, Workers& workers)
    : predictors_(std::move(predictors)) {
  std::size_t const width = predictors_.size();
  if (width == 0) return;
  values_.reset(Allocate(rows.size() * width));
  std::size_t const numTasks = (rows.size() + kCasesPerTask - 1) / kCasesPerTask;
  std::vector<Ends> ends(numTasks * width);  // [task][position]
  std::atomic<bool> hasGaps{false};
  auto const turn = [&](std::size_t begin, std::size_t end, Ends* endsOfTask) {
    for (std::size_t position = 0; position < width; ++position) {
      Column const& column = *columns[predictors_[position]];
      double const missing = column.description.missingValue;
      double* value = values_.get() + begin * width + position;
      bool isGap = false;
      Ends range = endsOfTask[position];
      for (std::size_t index = begin; index < end; ++index, value += width) {
        double const read = column.values[rows[index]];
        bool const isMissing = read == missing;
        *value = isMissing ? std::numeric_limits<double>::quiet_NaN() : read;
        isGap = isGap || isMissing || std::isinf(read);
        // Seldom true, and so faster than the usual functions, which wait for each other.
        if (read < range.least && !isMissing && read != -HUGE_VAL) range.least = read;
        if (read > range.greatest && !isMissing && read != HUGE_VAL) range.greatest = read;
      }
      endsOfTask[position] = range;
      if (isGap) hasGaps = true;
    }
  };
  workers.Run(numTasks, [&](std::size_t task) {
    std::size_t const last = std::min(rows.size(), (task + 1) * kCasesPerTask);
    for (std::size_t begin = task * kCasesPerTask; begin < last; begin += kCasesAtATime) {
      turn(begin, std::min(last, begin + kCasesAtATime), ends.data() + task * width);
      workers.Poll(kCasesAtATime * width);
    }
  });
  hasGaps_ = hasGaps;
  for (std::size_t position = 0; position < width; ++position) {
    Ends whole;
    for (std::size_t task = 0; task < numTasks; ++task) {
      whole.least = std::min(whole.least, ends[task * width + position].least);
      whole.greatest = std::max(whole.greatest, ends[task * width + position].greatest);
    }
    scales_.push_back(FindScale(position, whole, rows.size()));
    workers.Poll();
  }
}

/// From cases at equal distances, and the ends, which few cases seldom reach.
ValueScale CaseRows::FindScale(std::size_t position, Ends ends, std::size_t numCases) const {
  constexpr std::size_t kNumSampled = 500;
  if (!(ends.least < ends.greatest)) return {};
  std::vector<double> sample{ends.least, ends.greatest};
  std::size_t const step = std::max<std::size_t>(1, numCases / kNumSampled);
  for (std::size_t index = 0; index < numCases; index += step) {
    double const value = Of(static_cast<std::uint32_t>(index))[position];
    if (std::isfinite(value)) sample.push_back(value);
  }
  return ValueScale::For(std::move(sample));
}

}  // namespace tree::grow
