#include "products/producthistory.h"

#include <fmt/format.h>

#include <algorithm>

#include "db/conversions.h"
#include "history/captions.h"
#include "lang/keys/products.h"
#include "lang/keys/registers.h"
#include "platform/lettercase.h"
#include "registers/registertable.h"

namespace kolmera {

bool ProductHistory::isOurs(const RowChange& change) const {
    if (const auto known = rows_.ids.find(change.table); known != rows_.ids.end() && known->second.contains(change.id))
        return true;
    // Rows that have been removed since.
    return change.table != "Produkt" && !change.label.empty() && equalNoCase(trimmed(change.label), rows_.number);
}

ProductHistory::Outcome ProductHistory::read(
    const Limits& limits, const std::atomic<bool>& cancelled,
    const std::function<void(const RunHeader& run, const std::vector<ProductChange>& changes)>& take) const {
    Outcome outcome;
    std::size_t found = 0;
    for (const std::string& id : folder_.ids()) {
        if (cancelled || found >= limits.changes || outcome.read >= limits.runs) return outcome;
        ++outcome.read;
        try {
            const RecordReader record(folder_.file(id));
            if (!equalNoCase(record.header().companyFile, rows_.companyFile)) continue;
            std::vector<ProductChange> changes;
            record.forEachChange([&](const RowChange& change) {
                if (!isOurs(change)) return !cancelled;
                for (const CellChange& cell : change.cells) {
                    if (changes.size() < limits.changes)
                        changes.push_back({.run = id,
                                           .table = change.table,
                                           .record = change.record,
                                           .kind = change.kind,
                                           .cell = cell});
                }
                return !cancelled;
            });
            found += changes.size();
            if (!changes.empty() && !cancelled) take(record.header(), changes);
        } catch (const PlatformError&) {
            ++outcome.unreadable;
        }
    }
    outcome.all = !cancelled;
    return outcome;
}

CardTable historyTable(LanguageTexts& texts) {
    return {.name = "history",
            .title = texts.ModulText(text::products::kHistory),
            .fields = {"Startad", "Inläsning", "Kolumn", "Före", "Efter", "Post"},
            .headings = {texts.ModulText(text::products::kWhen), texts.ModulText(text::products::kRun),
                         texts.FormulärSträng(text::registers::kColumn), texts.ModulText(text::products::kBefore),
                         texts.ModulText(text::products::kAfter), texts.ModulText(text::products::kRecord)},
            .rows = {}};
}

void addHistory(CardTable& table, SqlLayer& sql, LanguageTexts& texts, const RunHeader& run,
                const std::vector<ProductChange>& changes) {
    constexpr std::size_t kToMinutes = 16;
    std::string when = run.started.substr(0, kToMinutes);
    std::ranges::replace(when, 'T', ' ');
    for (const ProductChange& change : changes) {
        const TableDef& definition = sql.FtgDB->table(change.table);
        const auto place = static_cast<std::size_t>(change.cell.column);
        if (place >= definition.fields.size() || isKeptByProgram(definition.fields[place].name)) continue;
        const FieldType type = definition.fields[place].type;
        const auto value = [&](const Value& each) { return TillText(each, type, sql.locale()); };
        table.rows.push_back({when, run.job, columnCaption(texts, definition, change.cell.column),
                              value(change.cell.before), value(change.cell.after),
                              change.record > 0 ? fmt::format("{}", change.record) : std::string()});
    }
}

}  // namespace kolmera
