#include "import/rejects/sourcerejects.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "definitions/masktarget.h"
#include "import/rejects/pricerecords.h"
#include "import/run/sourcestage.h"
#include "platform/error.h"
#include "source/conversion/headings.h"
#include "source/readers/opensource.h"
#include "source/sourcefile.h"

namespace kolmera {

namespace fs = std::filesystem;

namespace {

using Numbers = std::vector<std::int64_t>;
using Rows = std::vector<std::uint64_t>;

struct Found {
    Rows rows;  ///< of the source, in their order, with those of the headers and articles that they go by
    std::int64_t records = 0;
};

/// The rows of which rejected records were made, found as a run finds its records: in what the file is converted to.
class RejectedRows {
  public:
    RejectedRows(TakenSource& source, const RunDefinition& definition)
        : source_(source), file_(Descriptor(source.read(), O_RDONLY)), records_(file_, definition) {}

    Found find(const Numbers& rejected) {
        auto next = rejected.begin();
        while (next != rejected.end() && records_.next()) {
            const Said record = {records_.place().record, rowOf(records_.place().record, 0)};
            said_[static_cast<std::size_t>(records_.says())] = record;
            while (next != rejected.end() && *next < static_cast<std::int64_t>(record.row)) ++next;
            if (next == rejected.end() || *next != static_cast<std::int64_t>(record.row)) continue;
            ++next;
            take(record);
        }
        return std::move(found_);
    }

  private:
    struct Said {
        std::int64_t record = 0;
        std::uint64_t row = 0;
    };

    [[nodiscard]] std::uint64_t rowOf(std::int64_t record, std::int64_t line) {
        return source_.rows->of(static_cast<std::uint64_t>((record - 1) * source_.rowsPerRecord + 1 + line));
    }

    void take(const Said& record) {
        Said header = said_[static_cast<std::size_t>(PriceRecords::Says::Header)];
        Said article = said_[static_cast<std::size_t>(PriceRecords::Says::Article)];
        if (article.record < header.record) std::swap(header, article);
        for (const Said& said : {header, article}) add(said.row);
        for (std::int64_t line = 0; line < source_.rowsPerRecord; ++line) add(rowOf(record.record, line));
        ++found_.records;
    }

    void add(std::uint64_t row) {
        if (row > (found_.rows.empty() ? 0 : found_.rows.back())) found_.rows.push_back(row);
    }

    TakenSource& source_;
    PriceFile file_;
    PriceRecords records_;
    std::array<Said, PriceRecords::kSayings> said_;
    Found found_;
};

/// The lines of a text as bytes, with what ends them, and counted as its reader counts them; or its records of one
/// length.
class LineBytes {
  public:
    LineBytes(std::unique_ptr<ByteStream> stream, const SourceFormat& format)
        : stream_(std::move(stream)), characters_(format.characters), length_(format.length) {}

    bool next(std::string& line) {
        line.clear();
        if (length_ > 0) return nextRecord(line);
        for (;;) {
            const char sign = take(line);
            if (sign == '\r' && peek() == '\n') (void)take(line);
            if (sign == '\r' || sign == '\n') return true;
            if (ended_) return !line.empty();
        }
    }

  private:
    [[nodiscard]] std::size_t width() const {
        return characters_ == CharacterSet::Utf16Le || characters_ == CharacterSet::Utf16Be ? 2 : 1;
    }

    bool nextRecord(std::string& record) {
        const auto goesOn = [&] {  // the bytes of a character behind its first
            return characters_ == CharacterSet::Utf8 && (static_cast<unsigned char>(peek()) & 0xC0) == 0x80;
        };
        if (at_ == 0 && bytes_.empty()) {
            peek();
            if (characters_ == CharacterSet::Utf8 && bytes_.starts_with(kTextMark)) at_ = kTextMark.size();
        }
        for (std::uint64_t character = 0; character < length_ && !atEnd(); ++character) {
            do take(record);
            while (goesOn());
        }
        return !record.empty();
    }

    bool atEnd() {
        (void)peek();
        return bytes_.size() == at_;
    }

    /// The next character if it is one of a byte, else NUL.
    char peek() {
        constexpr std::size_t kPiece = 65536;
        if (bytes_.size() - at_ < width() && !ended_) {
            bytes_.erase(0, std::exchange(at_, 0));
            const std::size_t held = bytes_.size();
            bytes_.resize(held + kPiece);
            const std::size_t got = readFully(*stream_, bytes_.data() + held, kPiece);
            bytes_.resize(held + got);
            ended_ = bytes_.size() < width();
        }
        if (bytes_.size() - at_ < width()) {
            ended_ = true;
            return '\0';
        }
        if (width() == 1) return bytes_[at_];
        const bool littleEnd = characters_ == CharacterSet::Utf16Le;
        return bytes_[at_ + (littleEnd ? 1 : 0)] == '\0' ? bytes_[at_ + (littleEnd ? 0 : 1)] : '\0';
    }

    char take(std::string& line) {
        const char sign = peek();
        const std::size_t count = std::min(width(), bytes_.size() - at_);
        line.append(bytes_, at_, count);
        at_ += count;
        return sign;
    }

    std::unique_ptr<ByteStream> stream_;
    CharacterSet characters_;
    std::uint64_t length_;
    std::string bytes_;
    std::size_t at_ = 0;
    bool ended_ = false;
};

struct Lines {
    std::uint64_t first = 0, last = 0;
};

/// What has to be copied of a text: all that stands above its first row, and the rows.
std::vector<Lines> linesOf(const fs::path& file, const SourceFormat& format, const Rows& rows) {
    SourceTable table(openRows(file, format), format);
    std::vector<Lines> lines = {{1, 0}};
    auto wanted = rows.begin();
    bool isFirst = true;
    bool isOpen = false;
    for (Row row; table.next(row);) {
        if (std::exchange(isFirst, false) || std::exchange(isOpen, false)) lines.back().last = row.number - 1;
        wanted = std::find_if(wanted, rows.end(), [&](std::uint64_t number) { return number >= row.number; });
        if (wanted == rows.end()) return lines;
        if (*wanted != row.number) continue;
        lines.push_back({row.number, std::numeric_limits<std::uint64_t>::max()});
        isOpen = true;
    }
    return lines;
}

void copyLines(const fs::path& file, const SourceFormat& format, const Rows& rows, OutputFile& output) {
    const std::vector<Lines> lines = linesOf(file, format, rows);
    LineBytes bytes(SourceFile::of(Descriptor(file, O_RDONLY), format.member, {}).stream(), format);
    std::string line;
    auto range = lines.begin();
    for (std::uint64_t number = 1; range != lines.end() && bytes.next(line); ++number) {
        while (range != lines.end() && range->last < number) ++range;
        if (range != lines.end() && range->first <= number) output.write(line);
    }
}

/// A row as a line of semicolon text. Numbers get the decimal sign that is read from a text of their column.
class SemicolonLines {
  public:
    SemicolonLines(const SourceSettings& settings, const std::vector<std::string>& headings)
        : sign_(settings.format.decimalSign) {
        ColumnFinder finder(headings);
        for (const SourceColumn& column : settings.columns) {
            const auto place = finder.find(column.from);
            if (!place || !column.rule.decimalSign) continue;
            if (signs_.size() <= *place) signs_.resize(*place + 1, sign_);
            signs_[*place] = *column.rule.decimalSign;
        }
    }

    /// `oneLine`: without line breaks, so that what stands below keeps its number.
    [[nodiscard]] std::string of(const Row& row, bool oneLine) const {
        std::string line;
        for (std::size_t place = 0; place < row.cells.size(); ++place) {
            if (place > 0) line += ';';
            line += quoted(cell(row.cells[place], place, oneLine));
        }
        return line += "\r\n";
    }

  private:
    [[nodiscard]] std::string cell(const Cell& cell, std::size_t place, bool oneLine) const {
        std::string text(cell.text);
        if (cell.kind == Cell::Kind::Number)
            std::ranges::replace(text, '.', place < signs_.size() ? signs_[place] : sign_);
        if (oneLine) {
            std::ranges::replace_if(
                text, [](char c) { return c == '\r' || c == '\n'; }, ' ');
        }
        return text;
    }

    static std::string quoted(const std::string& text) {
        const bool plain = text.find_first_of(";\"\r\n") == std::string::npos && !text.starts_with(' ');
        if (plain) return text;
        std::string result = "\"";
        for (const char c : text) result.append(c == '"' ? 2 : 1, c);
        return result += '"';
    }

    char sign_;
    std::vector<char> signs_;
};

/// Above the first row every row keeps its number, by which the settings say where the table begins.
void writeAsText(const fs::path& file, const SourceSettings& settings, const Rows& wanted, OutputFile& output) {
    const SourceFormat& format = settings.format;
    const SourceTable table(openRows(file, format), format);
    const SemicolonLines lines(settings, table.headings());
    const bool unnumbered = format.kind == SourceKind::Xml && table.headingRow() == 0;  // its names
    const std::uint64_t above = unnumbered ? 0 : std::max(format.skip, table.headingRow());
    output.write(kTextMark);
    std::uint64_t line = 1;
    const auto fill = [&](std::uint64_t upTo) {
        for (; line < upTo; ++line) output.write("\r\n");
    };
    if (unnumbered) fill(format.skip + 1);
    const auto rows = openRows(file, format);
    for (Row row; rows->next(row);) {
        if (row.number <= above) {
            fill(row.number);
            output.write(lines.of(row, true));
            ++line;
            continue;
        }
        fill(above + 1);
        if (std::ranges::binary_search(wanted, row.number)) output.write(lines.of(row, false));
    }
}

}  // namespace

std::optional<std::int64_t> writeSourceRejects(const Descriptor& file, const RunDefinition& definition,
                                               const Numbers& rejected, const std::vector<WorkPlace>& places,
                                               OutputFile& output, const std::function<bool()>& goesOn) {
    const auto stops = [&] { return goesOn && !goesOn(); };
    const SourceSettings& settings = *definition.source;
    TakenSource source;
    source.original = pathOf(file);
    const TargetLayout layout = definition.mask ? targetLayout(*definition.mask) : TargetLayout{};
    try {
        if (convert(source, settings, layout, places, stops, [](double) {}))
            throw PlatformError(errors::kDamaged, "the price file has not the headings of the run");
    } catch (const ReadingCancelled&) {
        return std::nullopt;
    }
    const Found found = RejectedRows(source, definition).find(rejected);
    if (found.records == 0) return 0;
    if (isText(settings.format.kind)) {
        copyLines(source.original, settings.format, found.rows, output);
    } else {
        writeAsText(source.original, settings, found.rows, output);
    }
    return found.records;
}

}  // namespace kolmera
