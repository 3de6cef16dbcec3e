#include "cli/inspectcommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <ostream>

#include "cli/session.h"
#include "cli/texttable.h"
#include "lang/keys/source.h"
#include "platform/pricefile.h"
#include "platform/printable.h"
#include "source/detection/detection.h"
#include "source/sourcejson.h"

namespace kolmera::cli {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kShownRows = 20;
constexpr std::size_t kJsonRows = 100;
constexpr std::size_t kShownColumns = 12;
constexpr std::size_t kShownCharacters = 24;
constexpr std::size_t kNameCharacters = 100;

/// One row each: what was found, and how sure that is.
struct Certainty {
    const char* name;
    double SourceConfidence::*value;
};
constexpr Certainty kCertainties[] = {
    {"kind", &SourceConfidence::kind},
    {"member", &SourceConfidence::member},
    {"characters", &SourceConfidence::characters},
    {"delimiter", &SourceConfidence::delimiter},
    {"quote", &SourceConfidence::quote},
    {"sheet", &SourceConfidence::sheet},
    {"headings", &SourceConfidence::headings},
    {"decimal-sign", &SourceConfidence::decimalSign},
    {"thousands-sign", &SourceConfidence::thousandsSign},
    {"date-order", &SourceConfidence::dateOrder},
};

ModuleKey nameKey(SourceKind kind) {
    switch (kind) {
        case SourceKind::Fixed:
            return text::source::kFixed;
        case SourceKind::Xlsx:
            return text::source::kXlsx;
        case SourceKind::Xls:
            return text::source::kXls;
        case SourceKind::Ods:
            return text::source::kOds;
        case SourceKind::Xml:
            return text::source::kXml;
        case SourceKind::Delimited:
            break;
    }
    return text::source::kDelimited;
}

std::string listed(const std::vector<std::string>& names) {
    std::string list;
    for (const std::string& name : names)
        list.append(list.empty() ? "" : ", ").append(printable(name, kNameCharacters));
    return list;
}

/// Prints what was found, a line a property.
class Findings {
  public:
    Findings(Session& session, const Detection& found, std::ostream& out)
        : session_(session), found_(found), format_(found.format), out_(out) {}

    void print(std::uint64_t headingRow) {
        say(text::source::kKind, session_.text(nameKey(format_.kind)), found_.confidence.kind);
        printPlace();
        if (format_.kind == SourceKind::Delimited || format_.kind == SourceKind::Fixed) printText();
        if (format_.kind == SourceKind::Xml) say(text::source::kRecord, printable(format_.record, kNameCharacters));
        if (format_.skip > 0) say(text::source::kSkip, fmt::format("{}", format_.skip), found_.confidence.headings);
        const std::string headings = format_.headings
                                         ? session_.text(text::source::kInRow, fmt::format("{}", headingRow))
                                         : session_.text(text::source::kNoHeadings);
        if (format_.kind != SourceKind::Xml) say(text::source::kHeadings, headings, found_.confidence.headings);
        say(text::source::kDecimalSign, std::string(1, format_.decimalSign), found_.confidence.decimalSign);
        say(text::source::kThousandsSign, signName(format_.thousandsSign), found_.confidence.thousandsSign);
        if (format_.dateOrder != DateOrder::Unknown)
            say(text::source::kDateOrder, orderName(), found_.confidence.dateOrder);
    }

  private:
    void say(ModuleKey what, const std::string& value, double confidence = 1) {
        const std::string doubt = confidence < kSureEnough ? session_.text(text::source::kNotSure) : std::string();
        say(what, value, doubt);
    }
    void say(ModuleKey what, const std::string& value, const std::string& doubt) {
        out_ << session_.text(what) << ": " << value << (doubt.empty() ? "" : " ") << doubt << '\n';
    }

    void printPlace() {
        if (!format_.member.empty() || found_.members.size() == 1) {
            const std::string& name = format_.member.empty() ? found_.members.front() : format_.member;
            say(text::source::kMember, printable(name, kNameCharacters), found_.confidence.member);
        }
        sayOthers(text::source::kOtherMembers, found_.members, format_.member);
        if (found_.sheets.empty()) return;
        const std::string sheet = format_.sheet.empty() ? found_.sheets.front() : format_.sheet;
        say(text::source::kSheet, printable(sheet, kNameCharacters), found_.confidence.sheet);
        sayOthers(text::source::kOtherSheets, found_.sheets, sheet);
    }
    void sayOthers(ModuleKey what, std::vector<std::string> names, const std::string& chosen) {
        std::erase(names, chosen);
        if (!names.empty() && !chosen.empty()) say(what, listed(names));
    }

    void printText() {
        std::string others;
        for (const CharacterSet set : found_.characterSets) {
            if (set != format_.characters) others.append(others.empty() ? "" : ", ").append(nameOf(set));
        }
        if (found_.confidence.characters < kSureEnough && !others.empty()) {
            say(text::source::kCharacters, std::string(nameOf(format_.characters)),
                session_.text(text::source::kNotSureOr, others));
        } else {
            say(text::source::kCharacters, std::string(nameOf(format_.characters)), found_.confidence.characters);
        }
        if (format_.kind == SourceKind::Fixed) {
            if (format_.length > 0)
                say(text::source::kLength, fmt::format("{}", format_.length), found_.confidence.kind);
            // The user counts from 1.
            std::string starts;
            for (const std::size_t start : format_.starts)
                starts.append(fmt::format("{}{}", starts.empty() ? "" : ", ", start + 1));
            return say(text::source::kStarts, starts, found_.confidence.kind);
        }
        say(text::source::kDelimiter, signName(std::string(1, format_.delimiter)), found_.confidence.delimiter);
        say(text::source::kQuote,
            format_.quote == '\0' ? session_.text(text::source::kNone) : std::string(1, format_.quote),
            found_.confidence.quote);
    }

    std::string signName(const std::string& sign) {
        if (sign.empty()) return session_.text(text::source::kNone);
        if (sign == "\t") return session_.text(text::source::kTab);
        if (sign == " ") return session_.text(text::source::kBlank);
        if (sign == "\u00A0" || sign == "\u202F") return session_.text(text::source::kHardBlank);
        return sign;
    }

    std::string orderName() {
        return session_.text(format_.dateOrder == DateOrder::YearMonthDay   ? text::source::kYearFirst
                             : format_.dateOrder == DateOrder::DayMonthYear ? text::source::kDayFirst
                                                                            : text::source::kMonthFirst);
    }

    Session& session_;
    const Detection& found_;
    const SourceFormat& format_;
    std::ostream& out_;
};

void printRows(Session& session, const std::vector<SampleRow>& rows, std::ostream& out) {
    std::size_t columns = 0;
    for (const SampleRow& row : rows) columns = std::max(columns, row.cells.size());
    const std::size_t shown = std::min(columns, kShownColumns);
    std::vector<std::string> heads = {session.text(text::source::kRow)};
    for (std::size_t i = 1; i <= shown; ++i) heads.push_back(fmt::format("{}", i));
    TextTable table(std::move(heads));
    for (const SampleRow& row : rows) {
        std::vector<std::string> cells = {row.number == 0 ? std::string() : fmt::format("{}", row.number)};
        for (std::size_t i = 0; i < shown; ++i)
            cells.push_back(i < row.cells.size() ? printable(row.cells[i], kShownCharacters) : std::string());
        table.add(std::move(cells));
    }
    out << '\n';
    table.print(out);
    if (columns > shown) out << session.text(text::source::kMoreColumns, fmt::format("{}", columns - shown)) << '\n';
}

Json jsonOf(const Detection& found, const std::vector<SampleRow>& rows) {
    Json json = {{"format", toJson(found.format)}};
    for (const Certainty& certainty : kCertainties)
        json["confidence"][certainty.name] = found.confidence.*certainty.value;
    json["character-sets"] = Json::array();
    for (const CharacterSet set : found.characterSets) json["character-sets"].push_back(nameOf(set));
    json["members"] = found.members;
    json["sheets"] = found.sheets;
    json["rows"] = Json::array();
    for (const SampleRow& row : rows) json["rows"].push_back({{"row", row.number}, {"cells", row.cells}});
    return json;
}

}  // namespace

int inspectCommand(const InspectArguments& arguments, const Surroundings& surroundings) {
    Session session(surroundings);
    KnownOfSource known;
    if (!arguments.member.empty()) known.member = arguments.member;
    if (!arguments.sheet.empty()) known.sheet = arguments.sheet;
    SourceLimits limits;
    limits.cancelled = [&surroundings] { return surroundings.cancel.load(std::memory_order_relaxed); };
    try {
        const Detection found = detectSource(arguments.file, known, limits);
        const std::vector<SampleRow> rows =
            sampleRows(arguments.file, found.format, arguments.json ? kJsonRows : kShownRows, limits);
        if (arguments.json) {
            // Names in an archive may be no UTF-8.
            surroundings.out << jsonOf(found, rows).dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
        } else {
            Findings(session, found, surroundings.out).print(rows.empty() ? 0 : rows.front().number);
            printRows(session, rows, surroundings.out);
        }
    } catch (const ReadingCancelled&) {
        return exitcode::kCancelled;
    }
    return exitcode::kDone;
}

}  // namespace kolmera::cli
