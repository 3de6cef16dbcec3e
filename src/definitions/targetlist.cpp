#include "definitions/targetlist.h"

#include <fmt/format.h>

#include <algorithm>

#include "db/conversions.h"
#include "definitions/targetcodes.h"
#include "lang/keys/prismtyp.h"

namespace kolmera {
namespace {

constexpr int kNeverOffered[] = {ordinal(kProdukt, "Postversion"), ordinal(kProdukt, "Postlås")};
constexpr int kKeyColumns[] = {target("Nummer"), target("Söknamn"), target("Levartikelnr")};

std::string entry(int code, std::string_view name) { return fmt::format("{}.\t{}", code, name); }

std::string columnName(const FieldDef& column, int place, LanguageTexts& texts) {
    if (texts.language() == "SE") return column.name;
    const std::string translated = texts.RegisterText("Produkt", place);
    return translated.empty() ? column.name : translated;
}

class TargetReader {
  public:
    TargetReader(SqlLayer& sql, LanguageTexts& texts)
        : sql_(sql), texts_(texts), columns_(sql.FtgDB->table("Produkt").fields) {}

    TargetList read() {
        const std::string none = texts_.FormulärSträng(text::prismtyp::kNotImported);
        list_.targets.push_back({.code = 0, .text = fmt::format("««\t{}   »»", none)});
        addColumns(1, kLastColumnBeforeHeadings);
        addHeadings();
        addColumns(kLastColumnBeforeHeadings + 1, static_cast<int>(columns_.size()) - 1);
        return std::move(list_);
    }

  private:
    void addColumns(int first, int last) {
        last = std::min(last, static_cast<int>(columns_.size()) - 1);
        for (int place = first; place <= last; ++place) {
            if (std::ranges::find(kNeverOffered, place) != std::end(kNeverOffered)) continue;
            const FieldDef& column = columns_[static_cast<std::size_t>(place)];
            const int code = targetOfColumn(place);
            list_.targets.push_back({.code = code,
                                     .text = entry(code, columnName(column, place, texts_)),
                                     .type = column.type,
                                     .name = column.name});
        }
    }

    // The code follows the heading's number, not its row: that is where a run stores the value.
    void addHeadings() {
        const auto headings =
            sql_.SQLÖppnaRs("SELECT * FROM Prodaltrubrik WHERE Nummer < 100 ORDER BY Nummer", RecordsetType::Snapshot);
        for (; !headings->eof(); headings->moveNext()) {
            const int number = TillLng(headings->value("Nummer"), sql_.locale());
            if (number < 1) continue;
            if (number > kLastHeading) {
                list_.headingsLeftOut = true;
                continue;
            }
            const int code = targetOfHeading(number);
            const std::string name = TillText(headings->value("Rubrik"), sql_.locale());
            list_.targets.push_back({.code = code, .text = entry(code, name), .name = name});
        }
    }

    SqlLayer& sql_;
    LanguageTexts& texts_;
    const std::vector<FieldDef>& columns_;
    TargetList list_;
};

}  // namespace

bool Target::numeric() const {
    return type == FieldType::Byte || type == FieldType::Integer || type == FieldType::Long || floating();
}

bool Target::floating() const { return type == FieldType::Single || type == FieldType::Double; }

bool Target::keyCapable() const {
    return std::ranges::find(kKeyColumns, code) != std::end(kKeyColumns) || headingOf(code) != 0;
}

bool Target::priceLevel() const { return priceListOf(columnOf(code)) != 0; }

int TargetList::row(int code) const {
    const auto found = std::ranges::find(targets, code, &Target::code);
    return found == targets.end() ? -1 : static_cast<int>(found - targets.begin());
}

TargetList readTargets(SqlLayer& sql, LanguageTexts& texts) { return TargetReader(sql, texts).read(); }

}  // namespace kolmera
