#include <algorithm>

#include "platform/encodings.h"
#include "source/characters.h"
#include "source/readers/readers.h"
#include "source/readers/textwindow.h"

namespace kolmera {
namespace {

/// Lines of cells of fixed widths, counted in characters, without what a table is drawn with; or records of one length,
/// which nothing parts.
class FixedReader final : public RowReader {
  public:
    FixedReader(std::unique_ptr<ByteStream> stream, const SourceFormat& format, const SourceLimits& limits)
        : window_(std::move(stream), format.characters, limits), starts_(format.starts), length_(format.length) {
        if (starts_.empty()) starts_.push_back(0);
    }

    bool next(Row& row) override {
        window_.drop(dropped_);
        dropped_ = 0;
        while (window_.rest().empty()) {
            if (!window_.grow(line_)) return false;
        }
        const LineEnd end = length_ > 0 ? recordEnd() : lineEnd(window_, 0, line_);
        const std::string_view line = window_.rest().substr(0, end.end);
        row.number = line_++;
        row.cells.clear();
        if (!line.empty()) cut(line, row);
        if (window_.malformed() > 0 && malformedRow_ == 0 && line.find(kReplacement) != std::string_view::npos)
            malformedRow_ = row.number;
        dropped_ = end.next;
        return true;
    }

    [[nodiscard]] double progress() const override { return window_.progress(); }
    [[nodiscard]] SourceRemarks remarks() const override {
        SourceRemarks remarks;
        remarks.malformed = {window_.malformed(), malformedRow_};
        return remarks;
    }

  private:
    static constexpr std::string_view kBlanks = " \t\r\n";

    static std::string_view trimmed(std::string_view text) {
        for (;;) {
            text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
            text = text.substr(0, text.find_last_not_of(kBlanks) + 1);
            const std::string_view last = text.substr(text.size() - std::min(kTableLineBytes, text.size()));
            if (beginsWithTableLine(text)) {
                text.remove_prefix(kTableLineBytes);
            } else if (beginsWithTableLine(last)) {
                text.remove_suffix(kTableLineBytes);
            } else {
                return text;
            }
        }
    }

    LineEnd recordEnd() {
        for (;;) {
            const std::string_view record = firstCharacters(window_.rest(), length_);
            if (record.size() < window_.rest().size() || !window_.grow(line_)) return {record.size(), record.size()};
        }
    }

    void cut(std::string_view line, Row& row) const {
        std::size_t character = 0;
        for (std::size_t i = 0; i < starts_.size(); ++i) {
            // What stands before the first column, or where another one begins, is left out.
            line.remove_prefix(firstCharacters(line, starts_[i] - character).size());
            character = starts_[i];
            const bool isLast = i + 1 == starts_.size();
            const std::string_view piece = isLast ? line : firstCharacters(line, starts_[i + 1] - character);
            row.cells.push_back({trimmed(piece), Cell::Kind::Text});
        }
    }

    TextWindow window_;
    std::vector<std::size_t> starts_;
    std::uint64_t length_;
    std::uint64_t line_ = 1;
    std::uint64_t malformedRow_ = 0;
    std::size_t dropped_ = 0;
};

}  // namespace

std::unique_ptr<RowReader> readFixed(SourceFile file, const SourceFormat& format, const SourceLimits& limits) {
    return std::make_unique<FixedReader>(std::move(file).stream(), format, limits);
}

}  // namespace kolmera
