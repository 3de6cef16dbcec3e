#include "setup/democompany.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <nlohmann/json.hpp>

#include "definitions/couplingfile.h"
#include "definitions/jobfile.h"
#include "definitions/joboptions.h"
#include "definitions/maskfile.h"
#include "platform/engine/database.h"
#include "platform/error.h"
#include "platform/lettercase.h"
#include "platform/recordfolder.h"
#include "platform/tsv.h"
#include "source/settingsjson.h"

namespace kolmera {
namespace fs = std::filesystem;
namespace {

// One row of a table of texts, cells by column name.
class Cells {
  public:
    Cells(const Tsv& table, const std::vector<std::string>& row) : table_(table), row_(row) {}

    [[nodiscard]] const std::string& text(std::string_view column) const {
        static const std::string empty;
        const int place = table_.column(column);
        return place < 0 ? empty : row_[static_cast<std::size_t>(place)];
    }
    [[nodiscard]] int number(std::string_view column) const {
        const std::string& cell = text(column);
        int result = 0;
        std::from_chars(cell.data(), cell.data() + cell.size(), result);
        return result;
    }
    [[nodiscard]] char letter(std::string_view column, char otherwise) const {
        const std::string& cell = text(column);
        return cell.empty() ? otherwise : cell.front();
    }

  private:
    const Tsv& table_;
    const std::vector<std::string>& row_;
};

// "\r", "\n" and "\t" stand for line ends and tabs inside a cell.
std::string unescaped(std::string_view cell) {
    return replaceAll(replaceAll(replaceAll(cell, "\\r", "\r"), "\\n", "\n"), "\\t", "\t");
}

// Cells are written with a decimal point whatever the user's locale.
Value cellValue(const std::string& cell, FieldType type) {
    if (cell == "\\N") return Null{};
    switch (type) {
        case FieldType::Text:
        case FieldType::Memo:
        case FieldType::Date:
            return unescaped(cell);
        case FieldType::Boolean:
            return cell == "1";
        default:
            break;
    }
    double number = 0;
    const auto [end, error] = std::from_chars(cell.data(), cell.data() + cell.size(), number);
    if (error != std::errc() || end != cell.data() + cell.size()) {
        throw PlatformError(errors::kWrongType, "\"" + cell + "\" is not a number");
    }
    return number;
}

// The table's name stands in a comment line, since file names are ASCII: "# table: Leverantör".
std::string tableName(const fs::path& file, std::string_view text) {
    constexpr std::string_view kMark = "# table:";
    const std::size_t at = text.find(kMark);
    if (at == std::string_view::npos) throw PlatformError(errors::kUnknownTable, file.string() + ": no \"# table:\"");
    const std::string_view rest = text.substr(at + kMark.size());
    return std::string(trimmed(rest.substr(0, rest.find_first_of("\r\n"))));
}

// The settings tables have their one row already; it is filled instead of adding a second.
void fillTable(Database& database, const fs::path& file) {
    const std::string text = readWholeFile(file);
    const Tsv table = Tsv::parse(text);
    const auto recordset = database.open(tableName(file, text), RecordsetType::Table);
    for (const auto& row : table.rows) {
        const bool settings = startsWithNoCase(recordset->name(), "Syinställningar");
        if (settings) recordset->moveFirst();
        settings ? recordset->edit() : recordset->addNew();
        for (std::size_t i = 0; i < table.columns.size(); ++i) {
            if (row[i].empty()) continue;
            const int ordinal = recordset->ordinal(table.columns[i]);
            const FieldDef& field = recordset->fields()[static_cast<std::size_t>(ordinal)];
            if (!field.counter) recordset->set(ordinal, cellValue(row[i], field.type));
        }
        recordset->update();
    }
}

void fillTables(const fs::path& source, const fs::path& companyFile, const Locale& locale) {
    OpenOptions options;
    options.locale = locale;
    const auto database = openFileDatabase(companyFile, options);
    database->begin();
    for (const auto& entry : fs::directory_iterator(source / "company")) {
        if (entry.path().extension() == ".tsv") fillTable(*database, entry.path());
    }
    database->commit();
}

void addMasks(const fs::path& source, const fs::path& dataFolder) {
    std::map<std::string, std::vector<Relation>> relations;
    const Tsv relationTable = Tsv::read(source / "relations.tsv");
    for (const auto& row : relationTable.rows) {
        const Cells cells(relationTable, row);
        relations[cells.text("mask")].push_back({.Källa = cells.number("Källa"),
                                                 .Mål = cells.number("Mål"),
                                                 .FrånPos = cells.number("FrånPos"),
                                                 .Längd = cells.number("Längd"),
                                                 .TypKod = cells.letter("TypKod", 'I'),
                                                 .Division = cells.letter("Division", 'I')});
    }
    MaskFile masks(dataFolder);
    const Tsv maskTable = Tsv::read(source / "masks.tsv");
    for (const auto& row : maskTable.rows) {
        const Cells cells(maskTable, row);
        const Mask mask{.Namn = cells.text("name"),
                        .FilTyp = cells.letter("FilTyp", 'F'),
                        .Tecken = cells.letter("Tecken", 'N'),
                        .SkapaNya = cells.letter("SkapaNya", 'N'),
                        .UppdatLev = cells.letter("UppdatLev", 'N'),
                        .AntalRader = cells.text("AntalRader"),
                        .Postlängd = cells.text("Postlängd"),
                        .AntalKolumner = cells.number("AntalKolumner")};
        masks.save(mask, relations[mask.Namn]);
    }
}

// The trade-format jobs exist in every data folder; they are filled in, the others added.
void addJobs(const fs::path& source, const fs::path& dataFolder) {
    JobFile jobs(dataFolder);
    const Tsv table = Tsv::read(source / "jobs.tsv");
    for (const auto& row : table.rows) {
        const Cells cells(table, row);
        const auto existing = jobs.find(cells.text("name"));
        jobs.save({.number = existing ? existing->number : 0,
                   .name = cells.text("name"),
                   .priceFile = cells.text("file"),
                   .mask = cells.text("mask"),
                   .company = cells.text("company"),
                   .supplier = cells.text("supplier"),
                   .command = cells.text("command"),
                   .kind = cells.text("kind"),
                   .fromGroup = cells.text("fromgroup"),
                   .toGroup = cells.text("togroup"),
                   .heading1 = cells.number("heading1"),
                   .heading2 = cells.number("heading2")});
    }
}

void addLimits(const fs::path& source, const fs::path& dataFolder) {
    JobOptionsFile options(dataFolder);
    const Tsv table = Tsv::read(source / "limits.tsv");
    for (const auto& row : table.rows) {
        const Cells cells(table, row);
        Limits limits;
        for (const LimitKind& kind : kLimits) {
            if (!cells.text(kind.name).empty()) limits.*kind.value = cells.number(kind.name);
        }
        options.setLimits(cells.text("job"), limits);
    }
}

void addSources(const fs::path& source, const fs::path& dataFolder) {
    JobOptionsFile options(dataFolder);
    const auto jobs = nlohmann::ordered_json::parse(readWholeText(source, "sources.json"));
    for (const auto& [job, settings] : jobs.items()) options.setSource(job, sourceSettingsOf(settings).value());
}

void addCouplings(const fs::path& source, const fs::path& dataFolder) {
    CouplingFile couplings(dataFolder);
    const Tsv table = Tsv::read(source / "couplings.tsv");
    for (const auto& row : table.rows) {
        const Cells cells(table, row);
        couplings.save({.job = cells.text("job"),
                        .code = cells.text("code"),
                        .supplier = cells.text("supplier"),
                        .mainSupplier = cells.text("main") == "H"});
    }
}

}  // namespace

void fillDemoCompany(const fs::path& source, const fs::path& dataFolder, const fs::path& companyFile,
                     const Locale& locale) {
    if (!fs::exists(source / "company")) {
        throw PlatformError(errors::kFileNotFound, source.string() + ": the demo's files are missing");
    }
    fillTables(source, companyFile, locale);
    addMasks(source, dataFolder);
    addJobs(source, dataFolder);
    addLimits(source, dataFolder);
    addSources(source, dataFolder);
    addCouplings(source, dataFolder);
    fs::copy(source / "prisfiler", dataFolder / "Prisfiler", fs::copy_options::recursive);
}

}  // namespace kolmera
