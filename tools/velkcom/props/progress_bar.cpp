#include "props/progress_bar.h"

#include <algorithm>
#include <string>

namespace velk::velkcom {
namespace {

constexpr std::size_t fewSteps = 20;
constexpr std::chrono::milliseconds betweenDrawings{100};
constexpr int narrowest = 30;
constexpr int widest = 80;

}  // namespace

ProgressBar::ProgressBar(std::ostream& terminal, std::size_t steps, bool isTerminal, int width)
    : terminal_(terminal),
      steps_(steps),
      isShown_(isTerminal && steps >= fewSteps && width >= narrowest),
      width_(std::min(width, widest)) {}

void ProgressBar::advance() {
    ++done_;
    auto const now = std::chrono::steady_clock::now();
    if (!isShown_ || (isDrawn_ && now - drawn_ < betweenDrawings)) return;
    drawn_ = now;
    draw();
}

void ProgressBar::draw() {
    std::string const numbers = " " + std::to_string(done_) + "/" + std::to_string(steps_);
    auto const room = static_cast<std::size_t>(width_) - numbers.size() - 3;
    std::size_t const full = std::min(room, room * done_ / steps_);
    terminal_ << "\r[" << std::string(full, '#') << std::string(room - full, '.') << "]" << numbers
              << std::flush;
    isDrawn_ = true;
}

void ProgressBar::erase() {
    if (!isDrawn_) return;
    terminal_ << "\r" << std::string(static_cast<std::size_t>(width_) - 1, ' ') << "\r"
              << std::flush;
    isDrawn_ = false;
}

}  // namespace velk::velkcom
