#include <array>
#include <cstring>

#include "platform/error.h"
#include "source/readers/readers.h"
#include "source/readers/textwindow.h"

namespace kolmera {
namespace {

/// Rows of cells with a character between them. A cell may stand in quotes, blanks around them are left out, and then
/// hold the delimiter, line ends, and quotes that are doubled. A quote in such a cell that is neither doubled nor
/// followed by a delimiter or a line end is taken as it stands. Without a delimiter a line is one cell, quotes and all.
class DelimitedReader final : public RowReader {
  public:
    DelimitedReader(std::unique_ptr<ByteStream> stream, const SourceFormat& format, const SourceLimits& limits)
        : window_(std::move(stream), format.characters, limits),
          limits_(limits),
          delimiter_(format.delimiter),
          quote_(format.delimiter == '\0' ? '\0' : format.quote) {
        const auto mark = [this](char c, Sign sign) { signs_[static_cast<std::uint8_t>(c)] = sign; };
        mark('\r', Sign::LineEnd);
        mark('\n', Sign::LineEnd);
        if (delimiter_ != '\0') mark(delimiter_, Sign::Delimiter);
        if (quote_ != '\0') mark(quote_, Sign::Quote);
    }

    bool next(Row& row) override {
        while (!scan()) window_.grow(line_);
        if (pieces_.empty()) return false;
        row.number = line_;
        row.cells.clear();
        char* const text = window_.restData();
        if (pieces_.size() > 1 || pieces_[0].quoted || pieces_[0].end > 0) {
            for (const Piece& piece : pieces_) row.cells.push_back({cell(text, piece), Cell::Kind::Text});
        }
        noteMalformed();
        window_.drop(rowEnd_);
        line_ += 1 + lineBreaks_;
        return true;
    }

    [[nodiscard]] double progress() const override { return window_.progress(); }
    [[nodiscard]] SourceRemarks remarks() const override {
        SourceRemarks remarks = remarks_;
        remarks.malformed.count = window_.malformed();
        return remarks;
    }

  private:
    enum class Sign : std::uint8_t { None, Delimiter, LineEnd, Quote };

    /// A cell in the window, without its quotes.
    struct Piece {
        std::size_t begin, end;
        bool quoted, doubled;
    };

    [[nodiscard]] Sign signOf(char c) const { return signs_[static_cast<std::uint8_t>(c)]; }
    [[nodiscard]] bool isBlank(char c) const { return (c == ' ' || c == '\t') && c != delimiter_; }

    /// Finds the cells of the next row; none at the end of the text. False when the window has to grow first.
    bool scan() {
        const std::string_view text = window_.rest();
        pieces_.clear();
        lineBreaks_ = 0;
        strayQuotes_ = 0;
        brokenCells_ = 0;
        if (text.empty()) return window_.ended();
        for (std::size_t at = 0;; ++at) {
            if (!scanCell(text, at)) return false;
            if (pieces_.size() > limits_.columns) refuse(errors::kTooManyColumns);
            if (at == text.size() || signOf(text[at]) == Sign::LineEnd) return scanEnd(text, at);
        }
    }

    bool scanEnd(std::string_view text, std::size_t at) {
        if (at == text.size()) {
            rowEnd_ = at;
            return true;
        }
        if (text[at] == '\r' && at + 1 == text.size() && !window_.ended()) return false;
        rowEnd_ = at + (text.substr(at).starts_with("\r\n") ? 2 : 1);
        return true;
    }

    /// Leaves `at` at what ends the cell.
    bool scanCell(std::string_view text, std::size_t& at) {
        std::size_t first = at;
        while (first < text.size() && isBlank(text[first])) ++first;
        if (first < text.size() && signOf(text[first]) == Sign::Quote) return scanQuoted(text, first + 1, at);
        const std::size_t begin = at;
        for (at = first; at < text.size(); ++at) {
            const Sign sign = signOf(text[at]);
            if (sign == Sign::Delimiter || sign == Sign::LineEnd) break;
        }
        if (at == text.size() && !window_.ended()) return false;
        pieces_.push_back({begin, at, false, false});
        return true;
    }

    bool scanQuoted(std::string_view text, std::size_t begin, std::size_t& at) {
        Piece piece{begin, begin, true, false};
        std::uint64_t breaks = 0;
        for (at = begin; at < text.size(); ++at) {
            const Sign sign = signOf(text[at]);
            if (sign == Sign::LineEnd) {
                if (text[at] == '\n' || !text.substr(at).starts_with("\r\n")) ++breaks;
                if (breaks > limits_.quotedLines) refuse(errors::kQuoteNotClosed);
            }
            if (sign != Sign::Quote) continue;
            if (at + 1 < text.size() && text[at + 1] == quote_) {
                piece.doubled = true;
                ++at;
                continue;
            }
            std::size_t behind = at + 1;
            while (behind < text.size() && isBlank(text[behind])) ++behind;
            if (behind == text.size() && !window_.ended()) return false;
            if (behind == text.size() || signOf(text[behind]) == Sign::Delimiter ||
                signOf(text[behind]) == Sign::LineEnd) {
                piece.end = at;
                at = behind;
                pieces_.push_back(piece);
                lineBreaks_ += breaks;
                if (breaks > 0) ++brokenCells_;
                return true;
            }
            ++strayQuotes_;
        }
        if (window_.ended() || text.size() > limits_.rowBytes) refuse(errors::kQuoteNotClosed);
        return false;
    }

    std::string_view cell(char* text, const Piece& piece) const {
        char* const begin = text + piece.begin;
        const std::size_t length = piece.end - piece.begin;
        if (!piece.doubled) return {begin, length};
        char* to = begin;
        for (std::size_t i = 0; i < length; ++i) {
            *to++ = begin[i];
            if (begin[i] == quote_ && i + 1 < length && begin[i + 1] == quote_) ++i;
        }
        return {begin, static_cast<std::size_t>(to - begin)};
    }

    /// Before the row is dropped.
    void noteMalformed() {
        note(remarks_.strayQuotes, strayQuotes_);
        note(remarks_.lineBreaks, brokenCells_);
        if (window_.malformed() == 0 || remarks_.malformed.firstRow != 0) return;
        if (window_.rest().substr(0, rowEnd_).find(kReplacement) != std::string_view::npos)
            remarks_.malformed.firstRow = line_;
    }
    void note(SourceRemarks::Remark& remark, std::uint64_t count) const {
        if (count == 0) return;
        remark.note(line_);
        remark.count += count - 1;
    }

    [[noreturn]] void refuse(int error) const {
        throw PlatformError(error, "a row of a price file").about(std::to_string(line_));
    }

    TextWindow window_;
    SourceLimits limits_;
    char delimiter_;
    char quote_;
    std::array<Sign, 256> signs_{};
    std::vector<Piece> pieces_;  ///< of the row
    std::size_t rowEnd_ = 0;     ///< behind its line end
    std::uint64_t line_ = 1;
    std::uint64_t lineBreaks_ = 0;  ///< in the row's cells
    std::uint64_t strayQuotes_ = 0;
    std::uint64_t brokenCells_ = 0;
    SourceRemarks remarks_;
};

}  // namespace

std::unique_ptr<RowReader> readDelimited(SourceFile file, const SourceFormat& format, const SourceLimits& limits) {
    return std::make_unique<DelimitedReader>(std::move(file).stream(), format, limits);
}

}  // namespace kolmera
