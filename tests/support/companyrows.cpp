#include "support/companyrows.h"

#include <fmt/format.h>

#include <algorithm>

#include "db/companyschema.h"

namespace kolmera::test {
namespace {

struct Shown {
    std::string operator()(Null) const { return "-"; }
    std::string operator()(bool value) const { return value ? "true" : "false"; }
    std::string operator()(std::int64_t value) const { return std::to_string(value); }
    std::string operator()(double value) const { return fmt::format("{:.17g}", value); }
    std::string operator()(Date value) const { return value.iso(); }
    std::string operator()(const std::string& value) const { return fmt::format("\"{}\"", value); }
};

std::string rowsOf(Database& database, bool withIds) {
    std::string text;
    for (const TableDef& table : companySchema()) {
        const auto records = database.open(fmt::format("SELECT * FROM {} ORDER BY ID", table.name),
                                           RecordsetType::Snapshot, options::kReadOnly);
        for (; !records->eof(); records->moveNext()) {
            text += table.name;
            for (const FieldDef& field : table.fields) {
                if (field.counter && !withIds) continue;
                text += ' ';
                text += std::visit(Shown(), records->value(field.name));
            }
            text += "\n";
        }
    }
    return text;
}

}  // namespace

std::string companyRows(Database& database) { return rowsOf(database, false); }
std::string companyRowsWithIds(Database& database) { return rowsOf(database, true); }

std::string firstDifference(std::string_view a, std::string_view b) {
    const auto [x, y] = std::ranges::mismatch(a, b);
    if (x == a.end() && y == b.end()) return {};
    const auto lineAt = [](std::string_view text, std::size_t place) {
        const std::size_t begin = text.substr(0, place).rfind('\n') + 1;  // npos + 1 is 0
        return std::string(text.substr(begin, text.find('\n', place) - begin));
    };
    const auto place = static_cast<std::size_t>(x - a.begin());
    return fmt::format("<{}>\n<{}>", lineAt(a, place), lineAt(b, place));
}

}  // namespace kolmera::test
