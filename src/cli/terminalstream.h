#pragma once

#include <array>
#include <atomic>
#include <streambuf>

namespace kolmera::cli {

/// An output of the program that nobody may be reading: a write waits only as long as Ctrl-C has not been pressed, and
/// fails then. What can be written at once is written all the same.
class TerminalStream final : public std::streambuf {
  public:
    TerminalStream(int descriptor, const std::atomic<bool>& cancel);
    TerminalStream(const TerminalStream&) = delete;
    TerminalStream& operator=(const TerminalStream&) = delete;
    ~TerminalStream() override { sync(); }

  protected:
    int_type overflow(int_type c) override;
    int sync() override;

  private:
    [[nodiscard]] bool waitForRoom() const;

    int descriptor_;
    const std::atomic<bool>& cancel_;
    std::array<char, 4096> buffer_{};  ///< as much as a pipe that has room takes without waiting
};

}  // namespace kolmera::cli
