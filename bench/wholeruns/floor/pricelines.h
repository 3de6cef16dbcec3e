#pragma once

#include <cstdio>
#include <deque>
#include <filesystem>
#include <string>
#include <string_view>

#include "platform/encodings.h"

namespace kolmera::bench {

/// A price file, front to back, as the bytes that stand in it.
class PriceLines {
  public:
    explicit PriceLines(const std::filesystem::path& file);
    PriceLines(const PriceLines&) = delete;
    PriceLines& operator=(const PriceLines&) = delete;
    ~PriceLines();

    /// The next line (they end in CR LF); false at the end.
    bool next(std::string& line);
    /// The next `length` bytes, and over the one behind them.
    bool next(std::size_t length, std::string& record);

  private:
    std::FILE* file_;
    char* line_ = nullptr;
    std::size_t room_ = 0;
};

/// Texts of one record as UTF-8; they live until `clear`.
class Decoder {
  public:
    explicit Decoder(CodePage page) : page_(page) {}
    void clear() { used_ = 0; }
    std::string_view operator()(std::string_view bytes);

  private:
    CodePage page_;
    std::deque<std::string> texts_;
    std::size_t used_ = 0;
};

/// Bytes `first` to `last` (from 1, both included) without the blanks around them.
std::string_view piece(std::string_view bytes, std::size_t first, std::size_t last);
std::string_view withoutBlanks(std::string_view text);

/// A number with a decimal comma; 0 for anything else.
double number(std::string_view text);
/// "YYYYMMDD" as "YYYY-MM-DD".
std::string dateText(std::string_view text);
/// Today as "YYYY-MM-DD".
std::string todayText();

}  // namespace kolmera::bench
