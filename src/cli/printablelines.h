#pragma once

#include <ostream>
#include <streambuf>
#include <string>

namespace kolmera::cli {

/// Passes lines on to another stream. What would command the terminal (escape sequences, the direction of writing) is
/// shown as in `printable`: messages quote texts of price files, of companies and of files that others have made.
class PrintableLines final : public std::streambuf {
  public:
    explicit PrintableLines(std::ostream& target) : target_(target) {}
    ~PrintableLines() override;

  protected:
    int_type overflow(int_type character) override;
    int sync() override;

  private:
    void pass();

    std::ostream& target_;
    std::string line_;
};

/// The same as a stream.
class PrintableStream final : public std::ostream {
  public:
    explicit PrintableStream(std::ostream& target) : std::ostream(nullptr), lines_(target) { rdbuf(&lines_); }

  private:
    PrintableLines lines_;
};

}  // namespace kolmera::cli
