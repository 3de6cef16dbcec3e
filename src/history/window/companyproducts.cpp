#include "history/window/companyproducts.h"

#include <fmt/format.h>

#include <string>

#include "db/conversions.h"
#include "history/productnames.h"
#include "import/run/recordeddefinition.h"

namespace kolmera {
namespace {

bool openCompany(Program& program, const std::string& company) {
    std::error_code unknown;
    const bool here =
        std::filesystem::exists(program.state.drives.resolve(company, program.state.dataFolder()), unknown);
    return here && !company.empty() && !SqlLayer::ÄrSQLDatabas(company) && program.companies.ÖppnaDatabas(company);
}

void eachRow(SqlLayer& sql, const std::string& query, const std::function<void(Recordset& row)>& take) {
    for (const auto rows = sql.SQLÖppnaRs(query, RecordsetType::Snapshot); !rows->eof(); rows->moveNext()) take(*rows);
}

std::string articlesQuery(const RecordedDefinition& definition) {
    using Key = RecordedDefinition::Key;
    switch (definition.key) {
        case Key::SearchName:
            return "SELECT Söknamn, Nummer, Benämning FROM Produkt";
        case Key::SupplierArticle:
            return "SELECT Levartikelnr, Nummer, Benämning, Leverantör FROM Produkt";
        case Key::Alternative:
            return "SELECT a.Alternativnr, p.Nummer, p.Benämning FROM Prodaltprodnr a, Produkt p "
                   "WHERE p.Nummer = a.Produktnr";
        default:
            return "SELECT Nummer, Nummer, Benämning FROM Produkt";
    }
}

}  // namespace

void nameProducts(Program& program, ChangeReport& report) {
    const ClosesCompany closing(program);
    if (!openCompany(program, report.header().companyFile)) return;
    nameProducts(program.state.sql, report.net());
}

void nameArticles(Program& program, const RunHeader& run, ComparisonList& list) {
    const ClosesCompany closing(program);
    if (!openCompany(program, run.companyFile)) return;
    SqlLayer& sql = program.state.sql;
    const RecordedDefinition definition = recordedDefinition(run);
    const bool ofSupplier = definition.key == RecordedDefinition::Key::SupplierArticle && !definition.supplier.empty();
    list.nameArticles([&](const auto& take) {
        eachRow(sql, articlesQuery(definition), [&](Recordset& row) {
            const auto text = [&](int column) { return TillText(row.value(column), sql.locale()); };
            if (ofSupplier && text(3) != definition.supplier) return;
            const std::string article = text(0);
            const std::string product = text(1);
            const std::string name = text(2);
            take({.article = article, .product = product, .name = name});
        });
    });
}

}  // namespace kolmera
