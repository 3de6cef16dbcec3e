#include "history/productnames.h"

#include <fmt/format.h>

#include <functional>
#include <string>

#include "db/conversions.h"

namespace kolmera {
namespace {

void eachRow(SqlLayer& sql, const std::string& query, const std::function<void(Recordset& row)>& take) {
    for (const auto rows = sql.SQLÖppnaRs(query, RecordsetType::Snapshot); !rows->eof(); rows->moveNext()) take(*rows);
}

}  // namespace

void nameProducts(SqlLayer& sql, NetChanges& changes) {
    const auto text = [&](Recordset& row, int column) { return TillText(row.value(column), sql.locale()); };
    const auto id = [&](Recordset& row) { return TillLng(row.value(0), sql.locale()); };
    for (const std::string& table : changes.tablesWithoutProduct()) {
        changes.nameRows(table, [&](const auto& take) {
            eachRow(sql, fmt::format("SELECT ID, Produktnr FROM {}", table),
                    [&](Recordset& row) { take(id(row), text(row, 1)); });
        });
    }
    changes.nameProducts([&](const auto& take) {
        eachRow(sql, "SELECT ID, Nummer, Benämning FROM Produkt", [&](Recordset& row) {
            const std::string number = text(row, 1);
            const std::string name = text(row, 2);
            take({.id = id(row), .number = number, .name = name});
        });
    });
}

}  // namespace kolmera
