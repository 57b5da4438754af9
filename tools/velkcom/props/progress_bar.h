/// A bar that shows how far a long listing is.
#pragma once

#include <chrono>
#include <ostream>

namespace velk::velkcom {

/// Draws on one line of a terminal, and takes itself away.
class ProgressBar {
  public:
    /// Shows nothing for few steps, and when `isTerminal` is false.
    /// \param width  of the terminal, in characters
    ProgressBar(std::ostream& terminal, std::size_t steps, bool isTerminal, int width);
    ProgressBar(ProgressBar const&) = delete;
    ProgressBar& operator=(ProgressBar const&) = delete;
    ~ProgressBar() { erase(); }

    /// One step more is done.
    void advance();
    /// Makes room for other lines; the next step draws it again.
    void erase();

  private:
    void draw();

    std::ostream& terminal_;
    std::size_t const steps_;
    bool const isShown_;
    int const width_;
    std::size_t done_ = 0;
    bool isDrawn_ = false;
    std::chrono::steady_clock::time_point drawn_{};
};

}  // namespace velk::velkcom
