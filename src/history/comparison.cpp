#include "history/comparison.h"

#include <fmt/format.h>

#include "platform/lettercase.h"

namespace kolmera {

FileComparison::FileComparison(const RecordReader& before, const RecordReader& now) : file_({}, {.create = true}) {
    file_.run("PRAGMA journal_mode=OFF");
    file_.run("PRAGMA synchronous=OFF");
    file_.run("PRAGMA cache_size=-8192");
    file_.begin();
    before_ = fill("before", before);
    now_ = fill("now", now);
    findDifferences();
}

std::int64_t FileComparison::fill(const char* table, const RecordReader& record) {
    file_.run(fmt::format("CREATE TABLE {} (key TEXT PRIMARY KEY) WITHOUT ROWID", table));
    SqliteStatement add(file_, fmt::format("INSERT OR IGNORE INTO {} VALUES (?)", table));
    record.forEachKey([&](std::string_view key) {
        add.bind(1, key);
        add.run();
        return true;
    });
    return file_.number(fmt::format("SELECT COUNT(*) FROM {}", table));
}

void FileComparison::findDifferences() {
    file_.run(
        "CREATE TABLE article (n INTEGER PRIMARY KEY, isnew INTEGER, key TEXT, product TEXT DEFAULT '', "
        "name TEXT DEFAULT '', search TEXT)");
    SqliteStatement add(file_, "INSERT INTO article (isnew, key, search) VALUES (?1, ?2, ?3)");
    for (const bool isNew : {true, false}) {
        SqliteStatement keys(file_, fmt::format("SELECT key FROM {} WHERE key NOT IN (SELECT key FROM {}) ORDER BY key",
                                                isNew ? "now" : "before", isNew ? "before" : "now"));
        while (keys.step()) {
            const std::string search = lowerCase(keys.text(0));
            add.bind(1, std::int64_t{isNew});
            add.bind(2, keys.text(0));
            add.bind(3, std::string_view(search));
            add.run();
        }
    }
}

std::int64_t FileComparison::added() { return file_.number("SELECT COUNT(*) FROM article WHERE isnew"); }
std::int64_t FileComparison::gone() { return file_.number("SELECT COUNT(*) FROM article WHERE NOT isnew"); }

void FileComparison::forEach(bool isNew, const std::function<bool(std::string_view key)>& take) {
    SqliteStatement keys(file_, "SELECT key FROM article WHERE isnew = ?1 ORDER BY n");
    keys.bind(1, std::int64_t{isNew});
    while (keys.step() && take(keys.text(0))) {
    }
}

void FileComparison::forEachAdded(const std::function<bool(std::string_view)>& take) { forEach(true, take); }
void FileComparison::forEachGone(const std::function<bool(std::string_view)>& take) { forEach(false, take); }

}  // namespace kolmera
