#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kolmera::cli {

/// A progress bar on one line of a terminal: "[#####.....]  50 %  text". It is drawn only when the stream is a
/// terminal, at most ten times a second, in the terminal's width, without colours (so NO_COLOR needs no rule).
class ProgressBar {
  public:
    explicit ProgressBar(int descriptor);

    [[nodiscard]] bool shown() const { return terminal_; }
    void draw(std::uint64_t position, std::uint64_t size, std::string_view text);
    /// Clears the line; call before anything else is written.
    void clear();

    /// The line for a terminal of `width` columns; cut to fit, at least the percentage stays.
    static std::string line(std::uint64_t position, std::uint64_t size, std::string_view text, int width);

  private:
    int descriptor_;
    bool terminal_;
    bool drawn_ = false;
    std::int64_t lastDrawn_ = 0;  ///< milliseconds
};

}  // namespace kolmera::cli
