#include "history/comparison.h"

#include <fmt/format.h>

namespace kolmera {
namespace {

constexpr const char* kAdded = "SELECT key FROM now WHERE key NOT IN (SELECT key FROM before)";
constexpr const char* kGone = "SELECT key FROM before WHERE key NOT IN (SELECT key FROM now)";

}  // namespace

FileComparison::FileComparison(const RecordReader& before, const RecordReader& now) : file_({}, {.create = true}) {
    file_.run("PRAGMA journal_mode=OFF");
    file_.run("PRAGMA synchronous=OFF");
    file_.run("PRAGMA cache_size=-8192");
    file_.begin();
    before_ = fill("before", before);
    now_ = fill("now", now);
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

std::int64_t FileComparison::added() { return file_.number(fmt::format("SELECT COUNT(*) FROM ({})", kAdded)); }
std::int64_t FileComparison::gone() { return file_.number(fmt::format("SELECT COUNT(*) FROM ({})", kGone)); }

void FileComparison::forEach(const char* statement, const std::function<bool(std::string_view)>& take) {
    SqliteStatement keys(file_, fmt::format("{} ORDER BY key", statement));
    while (keys.step() && take(keys.text(0))) {
    }
}

void FileComparison::forEachAdded(const std::function<bool(std::string_view)>& take) { forEach(kAdded, take); }
void FileComparison::forEachGone(const std::function<bool(std::string_view)>& take) { forEach(kGone, take); }

}  // namespace kolmera
