#include "import/masks/documentwriter.h"

#include "db/conversions.h"
#include "platform/encodings.h"

namespace kolmera {
namespace {

constexpr std::int64_t kFirstDocument = 1;
constexpr std::size_t kLongestPath = 200;

}  // namespace

DocumentWriter::DocumentWriter(const LoadedMask& mask, SqlLayer& sql, Date Idag, RunSummary& summary)
    : source_(mask.document), locale_(sql.locale()), Idag_(Idag), row_(sql, summary.report, "Proddokument", "Nummer") {
    row_.countIn(summary.documents);
}

void DocumentWriter::write(std::string_view productNumber, const EntryList& entries) {
    const std::string_view path = firstCharacters(entries.text(source_), kLongestPath);
    row_.change([&] { store(productNumber, path); });
}

void DocumentWriter::store(std::string_view productNumber, std::string_view path) {
    const bool always = source_.TypKod == 'U';
    const bool whenEmpty = source_.TypKod == 'S';
    if (!always && !whenEmpty) return;
    const bool exists = row_.find(productNumber, kFirstDocument);
    if (path.empty()) {
        if (exists && always) row_.rows().remove();
        return;
    }
    if (exists && whenEmpty && !TillText(row_.rows().value(Dokument_.ordinal), locale_).empty()) return;
    row_.begin(exists);
    if (!exists) {
        row_.write(Produktnr_, productNumber);
        row_.write(Nummer_, kFirstDocument);
    }
    row_.write(Dokument_, path);
    row_.write(Förändringsdatum_, Idag_);
    row_.update();
}

}  // namespace kolmera
