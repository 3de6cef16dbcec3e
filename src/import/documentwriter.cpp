#include "import/documentwriter.h"

#include "db/conversions.h"
#include "platform/attempt.h"
#include "platform/encodings.h"
#include "pricing/changedate.h"

namespace kolmera {
namespace {

constexpr std::int64_t kFirstDocument = 1;
constexpr std::size_t kLongestPath = 200;

}  // namespace

DocumentWriter::DocumentWriter(const LoadedMask& mask, SqlLayer& sql, Date Idag, PassedOver& passedOver)
    : source_(mask.document),
      sql_(sql),
      Idag_(Idag),
      passedOver_(passedOver),
      documents_(sql.SQLÖppnaTabell("Proddokument", "Nummer", 0, false)),
      Dokument_(documents_->ordinal("Dokument")) {}

bool DocumentWriter::write(std::string_view productNumber, const EntryList& entries) {
    const std::string_view path = firstCharacters(entries.text(source_), kLongestPath);
    bool written = false;
    attempt(passedOver_, "Proddokument",
            [&] { searchAgainOnDuplicate([&] { written = store(productNumber, path); }); });
    return written;
}

bool DocumentWriter::store(std::string_view productNumber, std::string_view path) {
    const bool always = source_.TypKod == 'U';
    const bool whenEmpty = source_.TypKod == 'S';
    if (!always && !whenEmpty) return false;
    const bool none = sql_.SQLSökIngenTräff(documents_, "=", keys_.of(productNumber, kFirstDocument));
    if (path.empty()) {
        if (!none && always) documents_->remove();
        return false;
    }
    if (none) {
        documents_->addNew();
        documents_->set("Produktnr", std::string(productNumber));
        documents_->set("Nummer", kFirstDocument);
        return save(path);
    }
    if (whenEmpty && !TillText(documents_->value(Dokument_), sql_.locale()).empty()) return false;
    documents_->edit();
    return save(path);
}

bool DocumentWriter::save(std::string_view path) {
    documents_->set(Dokument_, std::string(path));
    SättÄndringsdatum(*documents_, Idag_);
    documents_->update();
    return true;
}

}  // namespace kolmera
