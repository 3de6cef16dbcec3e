#include "discounts/letterexchange.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <system_error>
#include <utility>

#include "db/batchtransaction.h"
#include "db/conversions.h"
#include "discounts/lettertable.h"
#include "platform/encodings.h"
#include "platform/lettercase.h"
#include "platform/outputfile.h"
#include "platform/pricefile.h"
#include "platform/spreadsheet/workbook.h"

namespace kolmera {
namespace {

constexpr int kRowsOfTransaction = 50;
constexpr const char* kSheetPrefix = "Rabattbrev";
using Pieces = std::span<const Value>;
using EachLine = std::function<void(Pieces)>;

bool isBlank(const Value& piece) { return isNull(piece) || piece == Value(std::string()); }

/// Which no code and no number has. (Lines end at CR: a lone LF is one of them.)
bool isControl(char c) { return static_cast<unsigned char>(c) < ' '; }

/// Whether a line can become a group: a code that fits its column, and no control characters.
bool isUsable(Pieces line, int codeSize) {
    const auto hasControls = [](const Value& piece) { return std::ranges::any_of(textOf(piece), isControl); };
    if (std::ranges::any_of(line, hasControls)) return false;
    return codeSize == 0 || characterCount(textOf(line.front())) <= static_cast<std::size_t>(codeSize);
}

/// The lines of a text file as pieces between tabs, cut into texts that are used again for the next line.
class TextLines {
  public:
    explicit TextLines(const std::filesystem::path& file) : file_(file) {}

    void each(const EachLine& use) {
        while (!file_.atEnd()) {
            const std::string_view line = file_.line();
            if (!line.empty()) use(cut(line));
        }
    }

  private:
    Pieces cut(std::string_view line) {
        std::size_t count = 0;
        for (std::size_t tab = 0; tab != std::string_view::npos; ++count) {
            tab = line.find('\t');
            if (count == pieces_.size()) pieces_.emplace_back(std::string());
            toUtf8(line.substr(0, tab), CodePage::Windows1252, std::get<std::string>(pieces_[count]));
            line.remove_prefix(tab == std::string_view::npos ? line.size() : tab + 1);
        }
        return {pieces_.data(), count};
    }

    PriceFile file_;
    std::vector<Value> pieces_;
};

/// Gives every line that is not empty.
void eachLine(const std::filesystem::path& file, const EachLine& use) {
    const EachLine filled = [&](Pieces line) {
        if (!std::ranges::all_of(line, isBlank)) use(line);
    };
    if (isSpreadsheet(file)) {
        readFirstSheet(file, filled);
    } else {
        TextLines(file).each(filled);
    }
}

bool hasNul(Pieces line) {
    return std::ranges::any_of(line, [](const Value& piece) { return textOf(piece).find('\0') != std::string::npos; });
}

/// Adds a group for each line it is given.
class LetterReader {
  public:
    LetterReader(Recordset& letter, std::string supplier, const Locale& locale, PassedOver& passedOver,
                 LetterRead& report)
        : letter_(letter), supplier_(std::move(supplier)), locale_(locale), passedOver_(passedOver), report_(report) {}

    void add(Pieces line) {
        ++report_.lines;
        if (attempt(passedOver_, lettertable::kName, [&] { save(line); })) {
            ++report_.added;
        } else {
            letter_.cancelUpdate();
            report_.passedOver.note(TillText(line.front(), locale_));
        }
    }

  private:
    void save(Pieces line) {
        const int columns = static_cast<int>(letter_.fields().size());
        if (!isUsable(line, letter_.fields().at(lettertable::kCode).size)) {
            throw PlatformError(errors::kTextTooLong, "the line holds no discount group");
        }
        letter_.addNew();
        letter_.set(lettertable::kSupplier, supplier_);
        letter_.set(lettertable::kCode, isNull(line.front()) ? Value(std::string()) : line.front());
        int column = lettertable::kFirstDiscount;
        for (auto piece = line.begin() + 1; piece != line.end() && column < columns; ++piece, ++column) {
            if (isBlank(*piece)) continue;
            if (!attempt(passedOver_, lettertable::kName, [&] { letter_.set(column, *piece); })) {
                report_.notNumbers.note(TillText(line.front(), locale_));
            }
        }
        letter_.update();
    }

    Recordset& letter_;
    std::string supplier_;
    const Locale& locale_;
    PassedOver& passedOver_;
    LetterRead& report_;
};

/// Thrown to leave the rest of a file.
struct Cancelled {};

/// The pieces of the current record that files hold.
std::vector<Value> exportedValues(Recordset& letter) {
    std::vector<Value> values;
    for (int column = lettertable::kCode; column < static_cast<int>(letter.fields().size()); ++column) {
        values.push_back(letter.value(column));
    }
    return values;
}

}  // namespace

bool isSpreadsheet(const std::filesystem::path& file) {
    return upperCase(file.extension().string()).find("XL") != std::string::npos;
}

void NotedGroups::note(std::string_view code) {
    constexpr std::size_t kKept = 10, kLongestCode = 20;
    if (++count > static_cast<std::int64_t>(kKept)) return;
    std::string kept(firstCharacters(code, kLongestCode));
    std::ranges::replace_if(kept, isControl, '?');
    codes.push_back(std::move(kept));
}

std::string NotedGroups::text() const {
    std::string text = fmt::format("{} ({}", count, fmt::join(codes, ", "));
    if (count > static_cast<std::int64_t>(codes.size())) text += ", ...";
    return text += ')';
}

LetterExchange::LetterExchange(SqlLayer& sql, std::string supplier, PassedOver& passedOver)
    : sql_(sql), supplier_(std::move(supplier)), passedOver_(passedOver) {}

std::unique_ptr<Recordset> LetterExchange::open(RecordsetType type) {
    return sql_.SQLÖppnaRs(lettertable::letterOf(supplier_), type);
}

bool LetterExchange::hasLetter() { return !open()->eof(); }

std::int64_t LetterExchange::usableLines(const std::filesystem::path& file) {
    // A pipe can be read only once; a folder is refused where it is opened.
    std::error_code missing;
    const std::filesystem::file_status status = std::filesystem::status(file, missing);
    if (std::filesystem::exists(status) && !is_regular_file(status) && !is_directory(status)) {
        throw PlatformError(errors::kInternal, "It is no ordinary file.");
    }
    const int codeSize = open()->fields().at(lettertable::kCode).size;
    std::int64_t usable = 0;
    bool isText = true;
    eachLine(file, [&](Pieces line) {
        if (isUsable(line, codeSize)) ++usable;
        if (hasNul(line)) isText = false;
    });
    return isText ? usable : 0;
}

LetterRead LetterExchange::replaceFrom(const std::filesystem::path& file) {
    LetterRows old(sql_.locale());
    LetterRead report;
    bool wasDeleted = false;
    try {
        report.deleted = deleteLetter(old);
        wasDeleted = true;
        readLetter(file, report);
    } catch (const PlatformError& error) {
        report.stopped = error;
    }
    if (report.cancelled || report.stopped) report.restored = restore(old, wasDeleted);
    return report;
}

/// Returns how many groups were deleted; `deleted` gets what the letter was.
std::int64_t LetterExchange::deleteLetter(LetterRows& deleted) {
    const auto letter = open();
    BatchTransaction batch(*sql_.FtgDB);
    std::int64_t count = 0;
    for (; !letter->eof(); letter->moveNext()) {
        if (!attempt(passedOver_, lettertable::kName, [&] {
                deleted.append(*letter);
                letter->remove();
            })) {
            continue;
        }
        if (++count % kRowsOfTransaction == 0) batch.next();
    }
    batch.end();
    return count;
}

void LetterExchange::readLetter(const std::filesystem::path& file, LetterRead& report) {
    const auto letter = open();
    LetterReader reader(*letter, supplier_, sql_.locale(), passedOver_, report);
    BatchTransaction batch(*sql_.FtgDB);
    try {
        eachLine(file, [&](Pieces line) {
            reader.add(line);
            if (report.lines % kRowsOfTransaction != 0) return;
            batch.next();
            if (cancelled && cancelled()) throw Cancelled();
        });
    } catch (const Cancelled&) {
        report.cancelled = true;
    }
    batch.end();
}

/// Groups that are there still, because their deletion was undone, are passed over.
bool LetterExchange::restore(const LetterRows& old, bool wasDeleted) {
    PassedOverSilently there;
    return attempt(passedOver_, lettertable::kName, [&] {
        LetterRows unfinished(sql_.locale());
        if (wasDeleted) deleteLetter(unfinished);
        const auto letter = open();
        LetterRead report;
        LetterReader reader(*letter, supplier_, sql_.locale(), there, report);
        BatchTransaction batch(*sql_.FtgDB);
        for (int row = 0; row < old.count(); ++row) {
            reader.add(old.values(row));
            if ((row + 1) % kRowsOfTransaction == 0) batch.next();
        }
        batch.end();
    });
}

LetterWritten LetterExchange::writeTo(const std::filesystem::path& file) {
    const auto letter = open(RecordsetType::Snapshot);  // a dynaset would ask for every value anew
    return isSpreadsheet(file) ? writeSheet(*letter, file) : writeText(*letter, file);
}

LetterWritten LetterExchange::writeText(Recordset& letter, const std::filesystem::path& file) {
    OutputFile output(file);
    LetterWritten report;
    for (; !letter.eof(); letter.moveNext(), ++report.groups) {
        std::string line;
        const int columns = static_cast<int>(letter.fields().size());
        for (int column = lettertable::kCode; column < columns; ++column) {
            const FieldType type = letter.fields()[static_cast<std::size_t>(column)].type;
            const std::string text = TillText(letter.value(column), type, sql_.locale());
            std::string bytes = fromUtf8(text, CodePage::Windows1252);
            std::ranges::replace_if(bytes, isControl, '?');
            if (toUtf8(bytes, CodePage::Windows1252) != text) report.questionMarks.note(text);
            if (column > lettertable::kCode) line += '\t';
            line += bytes;
        }
        output.write(line + "\r\n");
    }
    output.finish();
    return report;
}

LetterWritten LetterExchange::writeSheet(Recordset& letter, const std::filesystem::path& file) {
    std::vector<SheetColumn> columns;
    for (const FieldDef& field : std::span(letter.fields()).subspan(lettertable::kCode)) {
        columns.push_back({field.name, field.type, field.size});
    }
    LetterWritten report;
    addSheet(file, kSheetPrefix, columns, [&]() -> std::optional<std::vector<Value>> {
        if (letter.eof()) return std::nullopt;
        std::vector<Value> values = exportedValues(letter);
        letter.moveNext();
        ++report.groups;
        return values;
    });
    return report;
}

}  // namespace kolmera
