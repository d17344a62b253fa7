#include "growing/value_codes.h"

#include <algorithm>
#include <array>
#include <bit>
#include <numeric>

#include "growing/fixed_point.h"

namespace tree::grow {
namespace {

/// Numbers values in the order in which they first come.
class ValueNumbers {
 public:
  explicit ValueNumbers(std::size_t maxNumValues)
      : numbers_(std::bit_ceil(4 * std::max<std::size_t>(1, maxNumValues))),
        shift_(64 - static_cast<unsigned int>(std::countr_zero(numbers_.size()))) {
    values_.reserve(maxNumValues);
  }

  /// The number of the value, which may be a new one.
  std::size_t NumberOf(double value) {
    // Both zeros are one value: adding 0 makes them the same.
    auto const bits = std::bit_cast<std::uint64_t>(value + 0.0);
    constexpr std::uint64_t kGoldenRatio = 0x9E37'79B9'7F4A'7C15;
    for (std::size_t slot = (bits * kGoldenRatio) >> shift_;; slot = (slot + 1) % numbers_.size()) {
      std::uint32_t const number = numbers_[slot];
      if (number == 0) {
        values_.push_back(value + 0.0);
        numbers_[slot] = static_cast<std::uint32_t>(values_.size());
        return values_.size() - 1;
      }
      if (values_[number - 1] == value) return number - 1;
    }
  }
  std::vector<double> const& GetValues() const { return values_; }

 private:
  std::vector<std::uint32_t> numbers_;  // 1 more than the number; 0 where there is none yet
  unsigned int shift_;
  std::vector<double> values_;  // by number
};

/// Replaces numbers in any order by codes in order of the values.
ValueCodes Ordered(std::vector<std::uint16_t> numbers, std::vector<double> const& values) {
  std::vector<std::uint16_t> order(values.size());
  std::iota(order.begin(), order.end(), std::uint16_t{0});
  std::sort(order.begin(), order.end(),
            [&](std::uint16_t a, std::uint16_t b) { return values[a] < values[b]; });
  std::vector<std::uint16_t> codeOf(values.size());
  ValueCodes coded;
  for (std::size_t code = 0; code < order.size(); ++code) {
    codeOf[order[code]] = static_cast<std::uint16_t>(code);
    coded.values.push_back(values[order[code]]);
  }
  if (!std::is_sorted(order.begin(), order.end())) {
    for (std::uint16_t& number : numbers) {
      if (number != ValueCodes::kMissing) number = codeOf[number];
    }
  }
  coded.codes = std::move(numbers);
  return coded;
}

/// Visits the cases that have a value, with the value, until `visit` gives false. Gives whether it
/// never did.
template <class Visit>
bool VisitValues(Column const& column, std::span<std::size_t const> rows, std::size_t numCases,
                 Workers& workers, Visit const& visit) {
  auto const visitSlice = [&](std::size_t begin, std::size_t end, auto const& rowOf) {
    // Copies of its own stay in registers, whatever `visit` writes.
    double const* const values = column.values;
    double const missing = column.description.missingValue;
    Visit const visitOne = visit;
    for (std::size_t index = begin; index < end; ++index) {
      double const value = values[rowOf(index)];
      if (value != missing && !visitOne(index, value)) return false;
    }
    return true;
  };
  bool goesOn = true;
  ForSlices(numCases, workers, [&](std::size_t begin, std::size_t end) {
    if (!goesOn) return;
    goesOn = rows.empty() ? visitSlice(begin, end, [](std::size_t index) { return index; })
                          : visitSlice(begin, end, [&](std::size_t index) { return rows[index]; });
  });
  return goesOn;
}

/// Small numbers are those below this.
constexpr int kNumSmall = 1024;

/// Codes small whole numbers as themselves; gives whether there are no others. Without branches:
/// what comes next cannot be guessed. `valueOf`: by index.
template <class ValueOf>
bool CodeSlice(std::size_t begin, std::size_t end, double missing, ValueOf valueOf,
               std::uint16_t* codes) {
  bool areSmall = true;
  for (std::size_t index = begin; index < end; ++index) {
    double const value = valueOf(index);
    int const whole =
        static_cast<int>(std::min(std::max(value, -1.0), static_cast<double>(kNumSmall)));
    bool const isMissing = value == missing;
    bool const isSmall = (static_cast<double>(whole) == value) & (whole >= 0) & (whole < kNumSmall);
    codes[index] = isMissing ? ValueCodes::kMissing : static_cast<std::uint16_t>(whole);
    areSmall &= isMissing | isSmall;
  }
  return areSmall;
}

/// Small whole numbers, as categories and counts mostly are, stand for themselves until it is known
/// which of them there are. Nothing where there are other values.
std::optional<ValueCodes> CodeSmallNumbers(Column const& column, std::span<std::size_t const> rows,
                                           std::size_t numCases, Workers& workers) {
  constexpr std::size_t kAtATime = 4096;  // other values mostly show soon
  std::array<std::uint32_t, kNumSmall> isThere{};
  ValueCodes coded;
  coded.codes.resize(numCases);
  std::uint16_t* const codes = coded.codes.data();
  double const* const values = column.values;
  double const missing = column.description.missingValue;
  bool areSmall = true;
  ForSlices(numCases, workers, [&](std::size_t first, std::size_t last) {
    for (std::size_t begin = first; begin < last && areSmall; begin += kAtATime) {
      std::size_t const end = std::min(last, begin + kAtATime);
      areSmall =
          rows.empty()
              ? CodeSlice(
                    begin, end, missing, [values](std::size_t index) { return values[index]; },
                    codes)
              : CodeSlice(
                    begin, end, missing,
                    [values, rows](std::size_t index) { return values[rows[index]]; }, codes);
      if (!areSmall) return;
      for (std::size_t index = begin; index < end; ++index) {
        if (codes[index] != ValueCodes::kMissing) isThere[codes[index]] = 1;
      }
    }
  });
  if (!areSmall) return std::nullopt;
  std::array<std::uint16_t, kNumSmall> codeOf{};
  bool stay = true;
  for (std::size_t whole = 0; whole < kNumSmall; ++whole) {
    if (isThere[whole] == 0) continue;
    stay = stay && coded.values.size() == whole;
    codeOf[whole] = static_cast<std::uint16_t>(coded.values.size());
    coded.values.push_back(static_cast<double>(whole));
  }
  if (stay) return coded;
  for (std::uint16_t& code : coded.codes) {
    if (code != ValueCodes::kMissing) code = codeOf[code];
  }
  return coded;
}

}  // namespace

std::optional<ValueCodes> CodeFewValues(Column const& column, std::span<std::size_t const> rows,
                                        std::size_t numCases, std::size_t maxNumValues,
                                        Workers& workers) {
  if (auto small = CodeSmallNumbers(column, rows, numCases, workers)) {
    return small->values.size() <= maxNumValues ? std::move(small) : std::nullopt;
  }
  ValueNumbers numbers(maxNumValues);
  std::vector<std::uint16_t> codes(numCases, ValueCodes::kMissing);
  bool const areFew =
      VisitValues(column, rows, numCases, workers, [&](std::size_t index, double value) {
        std::size_t const number = numbers.NumberOf(value);
        codes[index] = static_cast<std::uint16_t>(number);
        return number < maxNumValues;
      });
  if (!areFew) return std::nullopt;
  return Ordered(std::move(codes), numbers.GetValues());
}

ValueCodes CodeSortedValues(std::vector<SortedCase> const& sorted, double const* values,
                            std::size_t numCases, Workers& workers) {
  ValueCodes coded;
  coded.codes.assign(numCases, ValueCodes::kMissing);
  ForSlices(sorted.size(), workers, [&](std::size_t first, std::size_t last) {
    for (SortedCase const item : std::span(sorted).subspan(first, last - first)) {
      if (item.StartsValue()) coded.values.push_back(values[item.Place()]);
      coded.codes[item.Place()] = static_cast<std::uint16_t>(
          std::min<std::size_t>(coded.values.size() - 1, ValueCodes::kMissing));
    }
  });
  return coded;
}

ValueCodes CodeIntervals(std::vector<SortedCase> const& sorted, double const* values,
                         std::vector<std::int64_t> const& frequencies, std::size_t numCases,
                         std::size_t numIntervals, Workers& workers) {
  auto const frequencyOf = [&](SortedCase item) {
    return frequencies.empty() ? 1 : frequencies[item.Place()];
  };
  WideInteger total = 0;
  for (SortedCase const item : sorted) total += frequencyOf(item);
  auto const parts = static_cast<WideInteger>(numIntervals);
  ValueCodes coded;
  coded.codes.assign(numCases, ValueCodes::kMissing);
  // The present interval ends where the cases up to it, times `parts`, reach this: the next
  // multiple of all cases that those before it have not reached.
  WideInteger limit = total;
  WideInteger sum = 0;
  std::size_t begin = 0;  // of the present interval, in the list
  auto const endInterval = [&](std::size_t last) {
    auto const code = static_cast<std::uint16_t>(coded.values.size());
    ForSlices(last + 1 - begin, workers, [&](std::size_t first, std::size_t end) {
      for (std::size_t offset = first; offset < end; ++offset) {
        coded.codes[sorted[begin + offset].Place()] = code;
      }
    });
    coded.values.push_back(values[sorted[last].Place()]);
    begin = last + 1;
    limit = (sum * parts / total + 1) * total;
  };
  for (std::size_t position = 0; position < sorted.size(); ++position) {
    sum += frequencyOf(sorted[position]);
    bool const isLast = position + 1 == sorted.size();
    if (!isLast && !sorted[position + 1].StartsValue()) continue;
    if (isLast || sum * parts >= limit) endInterval(position);
  }
  return coded;
}

}  // namespace tree::grow
