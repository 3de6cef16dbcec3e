#include "source/detection/detection.h"

#include <fcntl.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/error.h"
#include "platform/filesample.h"
#include "platform/lettercase.h"
#include "platform/spreadsheet/archive.h"
#include "platform/spreadsheet/sheetrows.h"
#include "source/characters.h"
#include "source/detection/charactersets.h"
#include "source/detection/tablelook.h"
#include "source/detection/textlayout.h"
#include "source/detection/xmllook.h"
#include "source/readers/opensource.h"
#include "source/readers/readers.h"
#include "source/sourcefile.h"

namespace kolmera {
namespace {

constexpr std::size_t kSample = std::size_t{20} << 20;
constexpr std::size_t kSheetRows = 20'000;

[[noreturn]] void refuse(const std::string& what) {
    throw PlatformError(errors::kUnknownSource, "no table").about(what);
}

Descriptor opened(const std::filesystem::path& file) {
    std::error_code unknown;
    // A look at a pipe would empty it.
    if (std::filesystem::exists(file, unknown) && !std::filesystem::is_regular_file(file, unknown))
        refuse(file.filename().string());
    return Descriptor(file, O_RDONLY);
}

class Detector {
  public:
    Detector(const std::filesystem::path& file, const KnownOfSource& known, const SourceLimits& limits)
        : path_(file), known_(known), limits_(limits) {}

    Detection detect() {
        chooseMember();
        const SourceFile file = SourceFile::of(opened(path_), format().member, limits_);
        if (file.beginning().empty()) refuse(path_.filename().string());
        switch (signatureOf(file.beginning())) {
            case Signature::Zip:
                return detectWorkbook(kindOfZip());
            case Signature::Compound:
                return detectWorkbook(SourceKind::Xls);
            case Signature::Pdf:
                refuse("PDF");
            case Signature::Packed:
                refuse("7z, rar");
            case Signature::WebPage:
                refuse("HTML");
            case Signature::Utf16:
            case Signature::None:
                break;
        }
        return detectText();
    }

  private:
    SourceFormat& format() { return found_.format; }
    SourceConfidence& confidence() { return found_.confidence; }

    void chooseMember() {
        found_.members = SourceFile::membersOf(opened(path_));
        confidence().member = 1;
        if (known_.member) format().member = *known_.member;
        if (known_.member || found_.members.size() < 2) return;
        // A price list beside what else is sent with it.
        std::vector<std::string> tables;
        std::ranges::copy_if(found_.members, std::back_inserter(tables), [](const std::string& name) {
            constexpr std::string_view kEndings[] = {".xlsx", ".xlsm", ".xls", ".ods", ".csv", ".txt",
                                                     ".tsv",  ".skv",  ".xml", ".prn", ".asc", ".dat"};
            const std::string lower = lowerCase(name);
            if (lower.find("readme") != std::string::npos || lower.find("läs") != std::string::npos) return false;
            return std::ranges::any_of(kEndings, [&](std::string_view ending) { return lower.ends_with(ending); });
        });
        const auto isPrices = [](const std::string& name) {
            const std::string lower = lowerCase(name);
            return lower.find("pris") != std::string::npos || lower.find("price") != std::string::npos;
        };
        const auto prices = std::ranges::find_if(tables, isPrices);
        confidence().member = tables.size() == 1 ? 0.9 : prices != tables.end() ? 0.6 : 0.3;
        format().member = tables.size() != 1 && prices != tables.end() ? *prices
                          : !tables.empty()                            ? tables.front()
                                                                       : found_.members.front();
    }

    Descriptor file() { return SourceFile::of(opened(path_), format().member, limits_).file(); }

    SourceKind kindOfZip() {
        const Archive archive(file());
        if (archive.find("content.xml")) return SourceKind::Ods;
        if (!archive.find("[Content_Types].xml")) refuse("zip");
        return SourceKind::Xlsx;
    }

    Detection detectWorkbook(SourceKind kind) {
        format().kind = known_.kind.value_or(kind);
        confidence().kind = 1;
        confidence().characters = 1;
        confidence().delimiter = 1;
        confidence().quote = 1;
        const std::vector<SheetName> sheets = kind == SourceKind::Ods    ? odsSheets(file())
                                              : kind == SourceKind::Xlsx ? xlsxSheets(file())
                                                                         : xlsSheets(file());
        for (const SheetName& sheet : sheets) found_.sheets.push_back(sheet.name);
        chooseSheet(sheets);
        lookAtTable(*openRows(path_, format(), limits_), kSheetRows);
        return std::move(found_);
    }

    /// The sheet that people see and that has a table in it.
    void chooseSheet(const std::vector<SheetName>& sheets) {
        constexpr std::size_t kMostSheets = 10;
        confidence().sheet = 1;
        if (known_.sheet) format().sheet = *known_.sheet;
        if (known_.sheet || sheets.size() < 2) return;
        std::size_t most = 0;
        std::size_t chosen = 0;
        std::size_t tables = 0;
        for (std::size_t i = 0; i < std::min(sheets.size(), kMostSheets); ++i) {
            if (sheets[i].isHidden) continue;
            format().sheet = sheets[i].name;
            const std::size_t cells = cellsOfBeginning();
            constexpr std::size_t kFewCells = 12;
            if (cells >= kFewCells) ++tables;
            // A later sheet has to be much larger.
            if (cells > 2 * most) {
                most = cells;
                chosen = i;
            }
        }
        format().sheet = chosen == 0 ? std::string() : sheets[chosen].name;
        confidence().sheet = tables <= 1 ? 0.9 : 0.5;
    }

    std::size_t cellsOfBeginning() {
        constexpr std::size_t kRows = 200;
        const auto rows = openRows(path_, format(), limits_);
        std::size_t cells = 0;
        Row row;
        for (std::size_t i = 0; i < kRows && rows->next(row); ++i) {
            if (row.cells.size() > 1) cells += row.cells.size();
        }
        return cells;
    }

    std::string sample() {
        constexpr std::size_t kPiece = std::size_t{1} << 20;
        const auto stream = SourceFile::of(opened(path_), format().member, limits_).stream();
        std::string bytes;
        for (std::size_t got = kPiece; got == kPiece && bytes.size() < kSample;) {
            bytes.resize(bytes.size() + kPiece);
            got = readFully(*stream, bytes.data() + bytes.size() - kPiece, kPiece);
            bytes.resize(bytes.size() - kPiece + got);
        }
        return bytes;
    }

    Detection detectText() {
        std::string bytes = sample();
        const bool isCut = bytes.size() == kSample;
        const CharacterGuess guess = known_.characters ? CharacterGuess{*known_.characters, 1, {*known_.characters}}
                                                       : guessCharacters(bytes, isCut);
        std::string text;
        Decoder(guess.characters).decode(bytes, true, text);
        if (known_.kind ? *known_.kind == SourceKind::Xml : looksLikeXml(text)) return detectXml(std::move(bytes));
        if (std::ranges::count(text, '\0') * 10 > static_cast<std::ptrdiff_t>(text.size()))
            refuse(path_.filename().string());
        format().characters = guess.characters;
        confidence().characters = guess.confidence;
        found_.characterSets = guess.candidates;
        confidence().sheet = 1;
        if (isCut) text.resize(std::min(text.find_last_of("\r\n"), text.size() - 1) + 1);
        detectLayout(text, !isCut, known_, found_);
        SourceFormat asUtf8 = format();
        asUtf8.characters = CharacterSet::Utf8;
        const auto read = asUtf8.kind == SourceKind::Fixed ? readFixed : readDelimited;
        lookAtTable(*read(SourceFile::ofBytes(std::move(text)), asUtf8, limits_), SIZE_MAX);
        return std::move(found_);
    }

    static bool looksLikeXml(std::string_view text) {
        const std::size_t first = text.find_first_not_of(" \t\r\n");
        if (first == std::string_view::npos || text[first] != '<') return false;
        const char next = first + 1 < text.size() ? text[first + 1] : ' ';
        return next == '?' || next == '!' || (next >= 'A' && next <= 'Z') || (next >= 'a' && next <= 'z');
    }

    Detection detectXml(std::string bytes) {
        format().kind = SourceKind::Xml;
        confidence().kind = 0.95;
        confidence().characters = 1;  // it says them itself
        confidence().delimiter = 1;
        confidence().quote = 1;
        confidence().sheet = 1;
        if (!findRecords(SourceFile::ofBytes(bytes).stream(), known_.record, format())) refuse("XML");
        lookAtTable(*readXml(SourceFile::ofBytes(std::move(bytes)), format(), limits_), SIZE_MAX);
        return std::move(found_);
    }

    void lookAtTable(RowReader& rows, std::size_t most) {
        TableLook look;
        Row row;
        try {
            for (std::size_t i = 0; i < most && rows.next(row); ++i) look.add(row);
        } catch (const PlatformError& error) {
            // A sample may end within a quoted cell, and what is wrong further down is told when it is read.
            constexpr int kOfRows[] = {errors::kQuoteNotClosed, errors::kRowTooLong, errors::kTooManyColumns,
                                       errors::kUnreadableXml};
            if (std::ranges::find(kOfRows, error.number()) == std::end(kOfRows) || row.number == 0) throw;
        }
        if (format().kind == SourceKind::Xml) {
            confidence().headings = 1;
        } else {
            look.detectHeadings(found_);
        }
        look.detectSigns(found_);
    }

    std::filesystem::path path_;
    KnownOfSource known_;
    SourceLimits limits_;
    Detection found_;
};

}  // namespace

Detection detectSource(const std::filesystem::path& file, const KnownOfSource& known, const SourceLimits& limits) {
    return Detector(file, known, limits).detect();
}

std::vector<SampleRow> sampleRows(const std::filesystem::path& file, const SourceFormat& format, std::size_t count,
                                  const SourceLimits& limits) {
    SourceTable table(openRows(file, format, limits), format);
    std::vector<SampleRow> rows;
    if (!table.headings().empty()) rows.push_back({table.headingRow(), table.headings()});
    Row row;
    while (rows.size() < count && table.next(row)) {
        SampleRow& sample = rows.emplace_back(SampleRow{row.number, {}});
        for (const Cell& cell : row.cells) sample.cells.emplace_back(cell.text);
    }
    return rows;
}

}  // namespace kolmera
