#include "import/rows/alternativerows.h"

#include <utility>

namespace kolmera {
namespace {

constexpr std::string_view kTable = "Prodaltprodnr";

}  // namespace

AlternativeRows::AlternativeRows(SqlLayer& sql, PassedOver& passedOver) : row(sql, passedOver, kTable, "Produktnr") {}

AlternativeRows::AlternativeRows(SqlLayer& sql, PassedOver& passedOver, std::unique_ptr<Recordset> rows)
    : row(sql, passedOver, kTable, std::move(rows)) {}

void AlternativeRows::name(std::string_view product, int heading) {
    row.write(Nummer, std::int64_t{heading});
    row.write(Produktnr, product);
}

void AlternativeRows::put(std::string_view product, int heading, std::string_view alternative) {
    const RowWriter::Row found = row.editOrAdd(product, std::int64_t{heading});
    if (found == RowWriter::Row::Unreachable) return;
    if (found == RowWriter::Row::New) name(product, heading);
    row.write(Alternativnr, alternative);
    row.save();
}

}  // namespace kolmera
