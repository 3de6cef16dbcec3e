#include "support/engineanswers.h"

#include <charconv>

namespace kolmera::test {

std::string show(const Value& value) {
    if (const auto* yes = std::get_if<bool>(&value)) return *yes ? "true" : "false";
    if (const auto* whole = std::get_if<std::int64_t>(&value)) return std::to_string(*whole);
    if (const auto* date = std::get_if<Date>(&value)) return date->iso();
    if (isNull(value)) return "Null";
    if (const auto* number = std::get_if<double>(&value)) {
        std::string digits(32, ' ');
        digits.resize(static_cast<std::size_t>(
            std::to_chars(digits.data(), digits.data() + digits.size(), *number).ptr - digits.data()));
        return digits;
    }
    return std::string(1, '\'').append(textOf(value)).append(1, '\'');
}

std::string select(Database& database, std::string_view statement) {
    const auto records = database.open(statement, RecordsetType::Snapshot);
    std::string text;
    for (; !records->eof(); records->moveNext()) {
        if (!text.empty()) text += "; ";
        for (int i = 0; i < static_cast<int>(records->fields().size()); ++i) {
            if (i > 0) text += ' ';
            text += show(records->value(i));
        }
    }
    return text;
}

}  // namespace kolmera::test
