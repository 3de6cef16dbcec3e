#include "history/keptrows.h"

#include "history/blockbytes.h"

namespace kolmera {

KeptRows::KeptRows() : file_({}, {.create = true}) {
    file_.run("PRAGMA journal_mode=OFF");
    file_.run("PRAGMA synchronous=OFF");
    file_.run("PRAGMA cache_size=-2048");
    file_.begin();
    file_.run("CREATE TABLE kept(tab, id, why, kind, record, label, by, cells)");
    add_ = SqliteStatement(file_, "INSERT INTO kept VALUES(?, ?, ?, ?, ?, ?, ?, ?)");
}

void KeptRows::add(const KeptRow& row) {
    BlockWriter cells;
    for (const KeptCell& cell : row.cells) {
        cells.signedNumber(cell.column);
        for (const Value* value : {&cell.before, &cell.left, &cell.now}) cells.value(*value);
    }
    const StatementUse use(add_);
    add_.bind(1, std::string_view(row.table));
    add_.bind(2, row.id);
    add_.bind(3, static_cast<std::int64_t>(row.why));
    add_.bind(4, static_cast<std::int64_t>(row.kind));
    add_.bind(5, row.record);
    add_.bind(6, std::string_view(row.label));
    add_.bind(7, std::string_view(row.by));
    add_.bindBytes(8, cells.bytes());
    add_.step();
}

std::int64_t KeptRows::count() { return file_.number("SELECT COUNT(*) FROM (SELECT DISTINCT tab, id FROM kept)"); }

void KeptRows::forEach(const std::function<bool(const KeptRow&)>& take) {
    SqliteStatement all(file_, "SELECT tab, id, why, kind, record, label, by, cells FROM kept ORDER BY tab, id, rowid");
    while (all.step()) {
        KeptRow row{.why = static_cast<Stays>(all.integer(2)),
                    .kind = static_cast<ChangeKind>(all.integer(3)),
                    .table = std::string(all.text(0)),
                    .id = all.integer(1),
                    .record = all.integer(4),
                    .label = std::string(all.text(5)),
                    .by = std::string(all.text(6)),
                    .cells = {}};
        for (BlockReader bytes(all.bytes(7)); !bytes.atEnd();) {
            KeptCell& cell = row.cells.emplace_back();
            cell.column = static_cast<int>(bytes.signedNumber());
            for (Value* value : {&cell.before, &cell.left, &cell.now}) *value = bytes.value();
        }
        if (!take(row)) return;
    }
}

}  // namespace kolmera
