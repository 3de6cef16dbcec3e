#include "import/masks/alternativenumbers.h"

#include <algorithm>

#include "db/conversions.h"
#include "platform/encodings.h"

namespace kolmera {
namespace {

constexpr std::size_t kLongestAlternative = 50;

/// In a file, and on a server that is asked for many records at once: a row is found by product and heading, and
/// changed where it is found.
class FoundAlternatives final : public StoredAlternatives {
  public:
    FoundAlternatives(SqlLayer& sql, AlternativeRows& rows) : StoredAlternatives(rows), sql_(sql) {}

    std::optional<std::string> find(std::string_view productNumber, int heading) override {
        if (!rows_.row.find(productNumber, std::int64_t{heading})) return std::nullopt;
        return TillText(rows_.row.rows().value(rows_.Alternativnr.ordinal), sql_.locale());
    }
    void change(std::string_view, int, std::string_view alternative) override {
        rows_.row.begin(true);
        rows_.row.write(rows_.Alternativnr, alternative);
        rows_.row.update();
    }
    void remove(std::string_view, int) override { rows_.row.rows().remove(); }

  private:
    SqlLayer& sql_;
};

/// On any other server: the rows of a product are read once and kept until another product comes; changes are
/// statements.
class ReadAlternatives final : public StoredAlternatives {
  public:
    ReadAlternatives(SqlLayer& sql, AlternativeRows& rows, PassedOver& passedOver)
        : StoredAlternatives(rows), sql_(sql), passedOver_(passedOver) {}

    std::optional<std::string> find(std::string_view productNumber, int heading) override {
        if (!loaded_ || productNumber != productNumber_) load(productNumber);
        const auto row = rowOf(heading);
        if (row == known_.end()) return std::nullopt;
        return row->alternative;
    }
    void add(std::string_view productNumber, int heading, std::string_view alternative) override {
        loaded_ = false;  // what is known of the product is old when the row cannot be added
        StoredAlternatives::add(productNumber, heading, alternative);
        known_.push_back({heading, std::string(alternative)});
        loaded_ = true;
    }
    void change(std::string_view productNumber, int heading, std::string_view alternative) override {
        Action action{"UPDATE Prodaltprodnr SET Alternativnr = "};
        action.add(alternative);
        if (!run(std::move(action), productNumber, heading)) return;
        rows_.row.storedElsewhere();
        rowOf(heading)->alternative = alternative;
    }
    void remove(std::string_view productNumber, int heading) override {
        if (run({"DELETE FROM Prodaltprodnr"}, productNumber, heading)) known_.erase(rowOf(heading));
    }

  private:
    struct Row {
        int heading;
        std::string alternative;
    };

    /// An action statement. A text in which `SQLKör` would rewrite words becomes a parameter.
    struct Action {
        std::string text;
        std::vector<Value> parameters = {};

        void add(std::string_view value) {
            constexpr auto npos = std::string_view::npos;
            const bool rewritten = value.find("TRUE") != npos || value.find("FALSE") != npos;
            text += rewritten ? "?" : SqlLayer::SQLText(value);
            if (rewritten) parameters.emplace_back(std::string(value));
        }
    };

    void load(std::string_view productNumber) {
        loaded_ = false;
        known_.clear();
        const auto found = sql_.SQLÖppnaRs("SELECT Nummer, Alternativnr FROM Prodaltprodnr WHERE Produktnr = " +
                                               SqlLayer::SQLText(productNumber) + " ORDER BY Produktnr, Nummer",
                                           RecordsetType::Snapshot);
        for (; !found->eof(); found->moveNext()) {
            known_.push_back({TillLng(found->value(0), sql_.locale()), TillText(found->value(1), sql_.locale())});
        }
        productNumber_ = productNumber;
        loaded_ = true;
    }
    std::vector<Row>::iterator rowOf(int heading) { return std::ranges::find(known_, heading, &Row::heading); }
    bool run(Action action, std::string_view productNumber, int heading) {
        action.text += " WHERE Produktnr = ";
        action.add(productNumber);
        action.text += " AND Nummer = " + std::to_string(heading);
        return sql_.SQLKör(action.text, action.parameters, passedOver_);
    }

    SqlLayer& sql_;
    PassedOver& passedOver_;
    bool loaded_ = false;
    std::string productNumber_;
    std::vector<Row> known_;
};

/// Whether all rows of a product are read together.
bool readsProducts(SqlLayer& sql) { return sql.ÄrSQLFöretag && !sql.FtgDB->hasWindows(); }

/// The way to the stored alternatives that suits the open company.
std::unique_ptr<StoredAlternatives> storedAlternatives(SqlLayer& sql, AlternativeRows& rows, PassedOver& passedOver) {
    if (readsProducts(sql)) return std::make_unique<ReadAlternatives>(sql, rows, passedOver);
    return std::make_unique<FoundAlternatives>(sql, rows);
}

}  // namespace

void StoredAlternatives::add(std::string_view productNumber, int heading, std::string_view alternative) {
    rows_.row.begin(false);
    rows_.name(productNumber, heading);
    rows_.row.write(rows_.Alternativnr, alternative);
    rows_.row.update();
}

std::unique_ptr<Recordset> openAlternatives(SqlLayer& sql) {
    if (readsProducts(sql)) return sql.SQLÖppnaRs("Prodaltprodnr", RecordsetType::Dynaset);
    return sql.SQLÖppnaTabell("Prodaltprodnr", "Produktnr", 0, false);
}

AlternativeNumbers::AlternativeNumbers(const LoadedMask& mask, SqlLayer& sql, std::unique_ptr<Recordset> table,
                                       RunSummary& summary)
    : rows_(sql, summary.report, std::move(table)), stored_(storedAlternatives(sql, rows_, summary.report)) {
    rows_.row.countIn(summary.alternatives);
    for (const Relation& relation : mask.relations) {
        const int heading = headingOf(relation.Mål);
        if (heading == 0) continue;
        columns_.push_back({{relation.Källa, relation.Division, relation.TypKod}, heading});
    }
}

void AlternativeNumbers::write(std::string_view productNumber, const EntryList& entries) {
    for (const MaskColumn& column : columns_) {
        const std::string_view alternative = firstCharacters(entries.text(column.source), kLongestAlternative);
        rows_.row.change([&] { write(column, productNumber, alternative); });
    }
}

void AlternativeNumbers::write(const MaskColumn& column, std::string_view productNumber, std::string_view alternative) {
    const bool always = column.source.TypKod == 'U';
    const bool whenEmpty = column.source.TypKod == 'S';
    if (!always && !whenEmpty) return;
    const auto stored = stored_->find(productNumber, column.heading);
    if (alternative.empty()) {
        if (stored && always) stored_->remove(productNumber, column.heading);
        return;
    }
    if (!stored) return stored_->add(productNumber, column.heading, alternative);
    if (*stored == alternative || (whenEmpty && !stored->empty())) return;
    stored_->change(productNumber, column.heading, alternative);
}

}  // namespace kolmera
