#include "platform/encodings.h"
#include "source/readers/readers.h"
#include "source/readers/textwindow.h"

namespace kolmera {
namespace {

/// Lines of cells of fixed widths, counted in characters.
class FixedReader final : public RowReader {
  public:
    FixedReader(std::unique_ptr<ByteStream> stream, const SourceFormat& format, const SourceLimits& limits)
        : window_(std::move(stream), format.characters, limits), starts_(format.starts) {
        if (starts_.empty()) starts_.push_back(0);
    }

    bool next(Row& row) override {
        window_.drop(dropped_);
        dropped_ = 0;
        while (window_.rest().empty()) {
            if (!window_.grow(line_)) return false;
        }
        const LineEnd end = lineEnd(window_, 0, line_);
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
    static std::string_view trimmed(std::string_view text) {
        const std::size_t first = std::min(text.find_first_not_of(" \t"), text.size());
        text.remove_prefix(first);
        return text.substr(0, text.find_last_not_of(" \t") + 1);
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
    std::uint64_t line_ = 1;
    std::uint64_t malformedRow_ = 0;
    std::size_t dropped_ = 0;
};

}  // namespace

std::unique_ptr<RowReader> readFixed(SourceFile file, const SourceFormat& format, const SourceLimits& limits) {
    return std::make_unique<FixedReader>(std::move(file).stream(), format, limits);
}

}  // namespace kolmera
