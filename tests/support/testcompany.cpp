#include "support/testcompany.h"

#include "db/companyschema.h"
#include "db/conversions.h"

namespace kolmera::test {

void PassedOverNotes::note(std::string_view what, const PlatformError& error) {
    notes.push_back(std::string(what) + ": " + std::to_string(error.number()));
}

TestCompany::TestCompany(Locale::Kind locale) : sql(Locale(locale)) {
    static const std::vector<TableDef> schema = companySchema();
    const std::filesystem::path file = folder_ / "FTG1.mdb";
    createFileDatabase(file, schema);
    sql.FtgDB = openFileDatabase(file, {.locale = Locale(locale), .password = {}, .wait = {}});
}

void TestCompany::add(std::string_view table, const Row& row) {
    const auto records = sql.FtgDB->open(table, RecordsetType::Table);
    records->addNew();
    for (const auto& [column, value] : row) records->set(column, value);
    records->update();
}

void TestCompany::change(std::string_view table, const Row& row) {
    const auto records = sql.FtgDB->open(table, RecordsetType::Dynaset);
    records->edit();
    for (const auto& [column, value] : row) records->set(column, value);
    records->update();
}

std::string TestCompany::select(std::string_view statement) {
    const Locale withPoint(Locale::Kind::English);
    const auto records = sql.FtgDB->open(statement, RecordsetType::Snapshot);
    std::string text;
    for (; !records->eof(); records->moveNext()) {
        for (int column = 0; column < static_cast<int>(records->fields().size()); ++column) {
            const Value& value = records->value(column);
            const auto* date = std::get_if<Date>(&value);
            if (column > 0) text += ' ';
            text += date ? date->iso() : TillText(value, withPoint);
        }
        text += '\n';
    }
    return text;
}

std::unique_ptr<Recordset> TestCompany::find(std::string_view table, std::string_view index, std::string key) {
    auto records = sql.FtgDB->open(table, RecordsetType::Table);
    records->setIndex(index);
    const Value keys[] = {std::move(key)};
    records->seek("=", keys);
    return records;
}

}  // namespace kolmera::test
