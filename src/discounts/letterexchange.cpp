#include "discounts/letterexchange.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <optional>
#include <system_error>
#include <utility>

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

/// Whether a line names a group. One without would be the group of all price lines that have no code.
bool hasCode(Pieces line) {
    const Value& code = line.front();
    return std::holds_alternative<std::string>(code) ? !trimmed(textOf(code)).empty() : !isNull(code);
}

/// Whether a line can become a group: a code that fits its column, and no control characters.
bool isUsable(Pieces line, int codeSize) {
    const auto hasControls = [](const Value& piece) { return std::ranges::any_of(textOf(piece), isControl); };
    if (!hasCode(line) || std::ranges::any_of(line, hasControls)) return false;
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
void eachLine(const std::filesystem::path& file, std::size_t columns, const EachLine& use) {
    const EachLine filled = [&](Pieces line) {
        if (!std::ranges::all_of(line, isBlank)) use(line);
    };
    if (isSpreadsheet(file)) {
        readFirstSheet(file, columns, filled);
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
            return;
        }
        letter_.cancelUpdate();
        if (hasCode(line)) {
            report_.passedOver.note(TillText(line.front(), locale_));
        } else {
            report_.withoutCode.note(fmt::format("{}", fmt::join(texts(line.subspan(1)), " ")));
        }
    }

    /// Adds a group as it was stored before.
    void put(Pieces group) {
        if (!attempt(passedOver_, lettertable::kName, [&] { write(group); })) letter_.cancelUpdate();
    }

  private:
    void save(Pieces line) {
        if (!isUsable(line, letter_.fields().at(lettertable::kCode).size)) {
            throw PlatformError(errors::kTextTooLong, "the line holds no discount group");
        }
        write(line);
    }

    void write(Pieces line) {
        const int columns = static_cast<int>(letter_.fields().size());
        letter_.addNew();
        letter_.set(lettertable::kSupplier, supplier_);
        letter_.set(lettertable::kCode, line.front());
        bool beyond = false;
        int column = lettertable::kFirstDiscount;
        for (auto piece = line.begin() + 1; piece != line.end() && column < columns; ++piece, ++column) {
            if (isBlank(*piece)) continue;
            if (!attempt(passedOver_, lettertable::kName, [&] { letter_.set(column, *piece); })) {
                report_.notNumbers.note(TillText(line.front(), locale_));
            }
            if (isBeyondPrice(TillDbl(letter_.value(column), locale_))) beyond = true;
        }
        letter_.update();
        if (beyond) report_.beyond.note(TillText(line.front(), locale_));
    }

    [[nodiscard]] std::vector<std::string> texts(Pieces pieces) const {
        std::vector<std::string> texts;
        for (const Value& piece : pieces) {
            if (!isBlank(piece)) texts.push_back(TillText(piece, locale_));
        }
        return texts;
    }

    Recordset& letter_;
    std::string supplier_;
    const Locale& locale_;
    PassedOver& passedOver_;
    LetterRead& report_;
};

/// Thrown to leave the rest of a file.
struct Cancelled {};

/// How many columns of a letter files hold.
std::size_t exported(const Recordset& letter) { return letter.fields().size() - lettertable::kCode; }

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
    const auto letter = open();
    const int codeSize = letter->fields().at(lettertable::kCode).size;
    std::int64_t usable = 0;
    bool isText = true;
    eachLine(file, exported(*letter), [&](Pieces line) {
        if (isUsable(line, codeSize)) ++usable;
        if (hasNul(line)) isText = false;
    });
    return isText ? usable : 0;
}

LetterRead LetterExchange::replaceFrom(const std::filesystem::path& file) {
    LetterRows old(sql_.locale());
    LetterRead report;
    bool wasDeleted = false, mustRestore = false;
    try {
        BatchTransaction batch(*sql_.FtgDB, BatchTransaction::Kind::Whole);
        mustRestore = !batch.isWhole();
        report.deleted = deleteLetter(batch, mustRestore ? &old : nullptr);
        wasDeleted = true;
        readLetter(file, batch, report);
        batch.end();
    } catch (const Cancelled&) {
        report.cancelled = true;
    } catch (const PlatformError& error) {
        // Giving up a lock that another program holds is how Cancel is obeyed there.
        report.cancelled = error.number() == errors::kLocked && cancelled && cancelled();
        if (!report.cancelled) report.stopped = error;
    }
    if (report.cancelled || report.stopped) report.restored = !mustRestore || restore(old, wasDeleted);
    return report;
}

/// Returns how many groups were deleted; `deleted`, if any, gets what the letter was.
std::int64_t LetterExchange::deleteLetter(BatchTransaction& batch, LetterRows* deleted) {
    const auto letter = open();
    std::int64_t count = 0;
    for (; !letter->eof(); letter->moveNext()) {
        if (!attempt(passedOver_, lettertable::kName, [&] {
                if (deleted != nullptr) deleted->append(*letter);
                letter->remove();
            })) {
            continue;
        }
        if (++count % kRowsOfTransaction == 0) batch.next();
    }
    batch.next();
    return count;
}

void LetterExchange::readLetter(const std::filesystem::path& file, BatchTransaction& batch, LetterRead& report) {
    const auto letter = open();
    LetterReader reader(*letter, supplier_, sql_.locale(), passedOver_, report);
    eachLine(file, exported(*letter), [&](Pieces line) {
        reader.add(line);
        if (report.lines % kRowsOfTransaction != 0) return;
        batch.next();
        if (cancelled && cancelled()) throw Cancelled();
    });
}

/// Puts back what batches of a server have taken. Groups that are there still, because their deletion was undone, are
/// passed over. Whatever ends this is told by the answer.
bool LetterExchange::restore(const LetterRows& old, bool wasDeleted) {
    PassedOverSilently there;
    try {
        BatchTransaction batch(*sql_.FtgDB);
        if (wasDeleted) deleteLetter(batch, nullptr);
        const auto letter = open();
        LetterRead report;
        LetterReader reader(*letter, supplier_, sql_.locale(), there, report);
        for (int row = 0; row < old.count(); ++row) {
            reader.put(old.values(row));
            if ((row + 1) % kRowsOfTransaction == 0) batch.next();
        }
        batch.end();
        return true;
    } catch (const PlatformError& error) {
        passedOver_.note(lettertable::kName, error);
        return false;
    }
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
