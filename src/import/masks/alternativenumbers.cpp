#include "import/masks/alternativenumbers.h"

#include <algorithm>

#include "db/conversions.h"
#include "import/rows/seekkeys.h"
#include "platform/attempt.h"

namespace kolmera {
namespace {

constexpr std::size_t kLongestAlternative = 50;

/// In a file: a row is found by the index on product and heading, and changed where it is found.
class FileAlternatives final : public StoredAlternatives {
  public:
    FileAlternatives(SqlLayer& sql, std::unique_ptr<Recordset> table)
        : sql_(sql),
          table_(std::move(table)),
          produktnr_(table_->ordinal("Produktnr")),
          nummer_(table_->ordinal("Nummer")),
          alternativnr_(table_->ordinal("Alternativnr")) {}

    std::optional<std::string> find(std::string_view productNumber, int heading) override {
        if (sql_.SQLSökIngenTräff(table_, "=", keys_.of(productNumber, heading))) return std::nullopt;
        return TillText(table_->value(alternativnr_), sql_.locale());
    }
    void add(std::string_view productNumber, int heading, std::string_view alternative) override {
        table_->addNew();
        table_->set(nummer_, std::int64_t{heading});
        table_->set(produktnr_, std::string(productNumber));
        table_->set(alternativnr_, std::string(alternative));
        table_->update();
    }
    bool change(std::string_view, int, std::string_view alternative) override {
        table_->edit();
        table_->set(alternativnr_, std::string(alternative));
        table_->update();
        return true;
    }
    void remove(std::string_view, int) override { table_->remove(); }

  private:
    SqlLayer& sql_;
    std::unique_ptr<Recordset> table_;
    SeekKeys keys_;
    int produktnr_, nummer_, alternativnr_;
};

/// On a server: the rows of a product are read once and kept until another product comes; changes are statements.
class ServerAlternatives final : public StoredAlternatives {
  public:
    ServerAlternatives(SqlLayer& sql, std::unique_ptr<Recordset> table, PassedOver& passedOver)
        : sql_(sql), table_(std::move(table)), passedOver_(passedOver) {}

    std::optional<std::string> find(std::string_view productNumber, int heading) override {
        if (!loaded_ || productNumber != productNumber_) load(productNumber);
        const auto row = rowOf(heading);
        if (row == rows_.end()) return std::nullopt;
        return row->alternative;
    }
    void add(std::string_view productNumber, int heading, std::string_view alternative) override {
        table_->addNew();
        table_->set("Nummer", std::int64_t{heading});
        table_->set("Produktnr", std::string(productNumber));
        table_->set("Alternativnr", std::string(alternative));
        loaded_ = false;  // what is known of the product is old when the row cannot be added
        table_->update();
        rows_.push_back({heading, std::string(alternative)});
        loaded_ = true;
    }
    bool change(std::string_view productNumber, int heading, std::string_view alternative) override {
        Action action{"UPDATE Prodaltprodnr SET Alternativnr = "};
        action.add(alternative);
        if (!run(std::move(action), productNumber, heading)) return false;
        rowOf(heading)->alternative = alternative;
        return true;
    }
    void remove(std::string_view productNumber, int heading) override {
        if (run({"DELETE FROM Prodaltprodnr"}, productNumber, heading)) rows_.erase(rowOf(heading));
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
        rows_.clear();
        const auto found = sql_.SQLÖppnaRs("SELECT Nummer, Alternativnr FROM Prodaltprodnr WHERE Produktnr = " +
                                               SqlLayer::SQLText(productNumber) + " ORDER BY Produktnr, Nummer",
                                           RecordsetType::Snapshot);
        for (; !found->eof(); found->moveNext()) {
            rows_.push_back({TillLng(found->value(0), sql_.locale()), TillText(found->value(1), sql_.locale())});
        }
        productNumber_ = productNumber;
        loaded_ = true;
    }
    std::vector<Row>::iterator rowOf(int heading) { return std::ranges::find(rows_, heading, &Row::heading); }
    bool run(Action action, std::string_view productNumber, int heading) {
        action.text += " WHERE Produktnr = ";
        action.add(productNumber);
        action.text += " AND Nummer = " + std::to_string(heading);
        return sql_.SQLKör(action.text, action.parameters, passedOver_);
    }

    SqlLayer& sql_;
    std::unique_ptr<Recordset> table_;
    PassedOver& passedOver_;
    bool loaded_ = false;
    std::string productNumber_;
    std::vector<Row> rows_;
};

}  // namespace

std::unique_ptr<Recordset> openAlternatives(SqlLayer& sql) {
    if (sql.ÄrSQLFöretag) return sql.SQLÖppnaRs("Prodaltprodnr", RecordsetType::Dynaset);
    return sql.SQLÖppnaTabell("Prodaltprodnr", "Produktnr", 0, false);
}

std::unique_ptr<StoredAlternatives> storedAlternatives(SqlLayer& sql, std::unique_ptr<Recordset> table,
                                                       PassedOver& passedOver) {
    if (sql.ÄrSQLFöretag) return std::make_unique<ServerAlternatives>(sql, std::move(table), passedOver);
    return std::make_unique<FileAlternatives>(sql, std::move(table));
}

AlternativeNumbers::AlternativeNumbers(const LoadedMask& mask, std::unique_ptr<StoredAlternatives> stored,
                                       PassedOver& passedOver)
    : stored_(std::move(stored)), passedOver_(passedOver) {
    for (const Relation& relation : mask.relations) {
        const int heading = headingOf(relation.Mål);
        if (heading == 0) continue;
        columns_.push_back({{relation.Källa, relation.Division, relation.TypKod}, heading});
    }
}

int AlternativeNumbers::write(std::string_view productNumber, const EntryList& entries) {
    int written = 0;
    for (const Column& column : columns_) {
        const std::string_view alternative = firstCharacters(entries.text(column.source), kLongestAlternative);
        attempt(passedOver_, "Prodaltprodnr",
                [&] { searchAgainOnDuplicate([&] { written += write(column, productNumber, alternative) ? 1 : 0; }); });
    }
    return written;
}

bool AlternativeNumbers::write(const Column& column, std::string_view productNumber, std::string_view alternative) {
    const bool always = column.source.TypKod == 'U';
    const bool whenEmpty = column.source.TypKod == 'S';
    if (!always && !whenEmpty) return false;
    const auto stored = stored_->find(productNumber, column.heading);
    if (alternative.empty()) {
        if (stored && always) stored_->remove(productNumber, column.heading);
        return false;
    }
    if (!stored) {
        stored_->add(productNumber, column.heading, alternative);
        return true;
    }
    if (*stored == alternative || (whenEmpty && !stored->empty())) return false;
    return stored_->change(productNumber, column.heading, alternative);
}

}  // namespace kolmera
