#include "progress/progress_bar.h"

#include <algorithm>
#include <exception>
#include <ostream>
#include <utility>

namespace tree::cli {
namespace {

constexpr auto kDelay = std::chrono::seconds(1);
constexpr auto kInterval = std::chrono::milliseconds(100);
constexpr int kMaxBarWidth = 40;
constexpr char kEraseLine[] = "\r\x1b[K";

}  // namespace

ProgressBar::ProgressBar(std::ostream& terminal, int width, std::function<bool()> isInterrupted,
                         std::function<Time()> now)
    : terminal_(terminal),
      width_(width),
      isInterrupted_(std::move(isInterrupted)),
      now_(std::move(now)) {
  Begin();
}

ProgressBar::~ProgressBar() { End(); }

void ProgressBar::Begin() {
  End();
  nextDrawing_ = now_() + kDelay;
}

void ProgressBar::End() {
  if (std::exchange(isDrawn_, false)) terminal_ << kEraseLine << std::flush;
}

bool ProgressBar::Report(double fraction, char const* activity) noexcept {
  try {
    if (width_ > 0 && now_() >= nextDrawing_) {
      nextDrawing_ = now_() + kInterval;
      terminal_ << kEraseLine << LineFor(fraction, activity) << std::flush;
      isDrawn_ = true;
    }
    return !isInterrupted_();
  } catch (std::exception const&) {
    return true;  // without a bar the work goes on all the same
  }
}

/// As `growing the tree [#####.....]  50 %`. Of an operation that does not know how far it has come
/// only the name is shown.
std::string ProgressBar::LineFor(double fraction, char const* activity) const {
  std::string line = activity;
  int const room = width_ - 1 - static_cast<int>(line.size());
  constexpr int kAround = 9;  // blank, brackets and percentage
  int const barWidth = std::min(kMaxBarWidth, room - kAround);
  if (fraction > 0.0 && barWidth > 0) {
    double const done = std::clamp(fraction, 0.0, 1.0);
    auto const numMarks = static_cast<std::size_t>(done * barWidth);
    std::string const percent = std::to_string(static_cast<int>(done * 100.0));
    line += " [" + std::string(numMarks, '#') +
            std::string(static_cast<std::size_t>(barWidth) - numMarks, '.') + ']' +
            std::string(4 - percent.size(), ' ') + percent + " %";
  }
  return line.substr(0, static_cast<std::size_t>(width_ - 1));
}

}  // namespace tree::cli
