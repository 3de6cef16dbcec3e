#include <algorithm>
#include <array>
#include <system_error>

#include "lang/languagetexts.h"
#include "platform/error.h"
#include "platform/privatefolder.h"
#include "platform/tsv.h"

namespace kolmera {

namespace {

constexpr std::array<const char*, 3> kColumns = {"key", "SE", "EN"};

TableDef langTable() {
    constexpr int kKeyLength = 100;
    TableDef lang;
    lang.name = "Lang";
    lang.fields = {{.name = "Nyckel", .type = FieldType::Text, .size = kKeyLength},
                   {.name = "SE", .type = FieldType::Memo},
                   {.name = "EN", .type = FieldType::Memo}};
    lang.indexes = {{.name = "LangKey", .fields = "+Nyckel", .unique = true}};
    return lang;
}

void addTexts(const std::filesystem::path& file, const Tsv& table) {
    const std::unique_ptr<Database> database = openFileDatabase(file, OpenOptions());
    const std::unique_ptr<Recordset> lang = database->open("Lang", RecordsetType::Table);
    database->begin();
    for (const std::vector<std::string>& row : table.rows) {
        if (row.size() != table.columns.size())
            throw PlatformError(errors::kInternal, "Too many columns: " + row.front());
        lang->addNew();
        for (int column = 0; column < static_cast<int>(kColumns.size()); ++column) {
            lang->set(column, row[static_cast<std::size_t>(column)]);
        }
        lang->update();
    }
    database->commit();
}

}  // namespace

void buildLanguageDatabase(const std::filesystem::path& tsv, const std::filesystem::path& target) {
    const Tsv table = Tsv::read(tsv);
    if (table.columns.size() < kColumns.size() ||
        !std::equal(kColumns.begin(), kColumns.end(), table.columns.begin())) {
        throw PlatformError(errors::kInternal, tsv.string() + ": the first columns are not key, SE and EN.");
    }
    const PrivateFolder folder(std::filesystem::absolute(target).parent_path(), ".kolmera");
    const std::filesystem::path unfinished = folder.path() / "texts";
    createFileDatabase(unfinished, std::array{langTable()});
    addTexts(unfinished, table);
    std::error_code error;
    std::filesystem::rename(unfinished, target, error);
    if (error) throw PlatformError(errors::kFileNotFound, target.string() + ": " + error.message());
}

}  // namespace kolmera
