#include "wholeruns/floor/row.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace kolmera::bench {

namespace {

std::string selectText(const std::string& table, const std::vector<std::string>& columns, std::span<const int> read,
                       const std::string& condition) {
    std::string text = "SELECT ID";
    for (std::size_t column = 0; column < columns.size(); ++column) {
        const bool wanted = std::ranges::find(read, static_cast<int>(column)) != read.end();
        text += wanted ? fmt::format(", \"{}\"", columns[column]) : ", NULL";
    }
    return fmt::format("{} FROM {} WHERE {} LIMIT 1", text, table, condition);
}

}  // namespace

Row::Row(Connection& connection, std::string table, std::vector<std::string> columns, std::span<const int> read,
         const std::string& condition)
    : connection_(connection),
      table_(std::move(table)),
      columns_(std::move(columns)),
      select_(connection, selectText(table_, columns_, read, condition)),
      delete_(connection, "DELETE FROM " + table_ + " WHERE ID = ?1"),
      cells_(columns_.size()) {}

bool Row::found() {
    if (!select_.step()) return false;
    id_ = select_.integer(0);
    return true;
}

void Row::leave() {
    select_.reset();
    changed_ = 0;
    new_ = false;
}

void Row::add() {
    leave();
    new_ = true;
}

double Row::real(int column) const {
    if (isSet(column)) return std::get<double>(cells_[static_cast<std::size_t>(column)]);
    return new_ ? 0 : select_.real(column + 1);
}

std::string_view Row::text(int column) const {
    if (isSet(column)) return std::get<std::string_view>(cells_[static_cast<std::size_t>(column)]);
    return new_ ? std::string_view() : select_.text(column + 1);
}

void Row::note(int column, bool differs, Cell cell) {
    cells_[static_cast<std::size_t>(column)] = cell;
    if (differs) {
        changed_ |= bit(column);
    } else {
        changed_ &= ~bit(column);
    }
}

void Row::set(int column, double number) {
    note(column, new_ || select_.isNull(column + 1) || select_.real(column + 1) != number, number);
}

void Row::set(int column, std::string_view text) {
    note(column, new_ || select_.isNull(column + 1) || select_.text(column + 1) != text, text);
}

Statement& Row::writer() {
    auto& kept = new_ ? inserts_ : updates_;
    if (const auto at = kept.find(changed_); at != kept.end()) return at->second;

    std::string names;
    std::string places;
    int place = 0;
    for (std::size_t column = 0; column < columns_.size(); ++column) {
        if (!isSet(static_cast<int>(column))) continue;
        const char* separator = place > 0 ? ", " : "";
        ++place;
        names += fmt::format(fmt::runtime(new_ ? "{}\"{}\"" : "{}\"{}\" = ?{}"), separator, columns_[column], place);
        places += fmt::format("{}?{}", separator, place);
    }
    const std::string text = new_ ? fmt::format("INSERT INTO {} ({}) VALUES ({})", table_, names, places)
                                  : fmt::format("UPDATE {} SET {} WHERE ID = ?{}", table_, names, place + 1);
    return kept.emplace(changed_, Statement(connection_, text)).first->second;
}

void Row::save() {
    if (!new_) select_.reset();
    if (changed_ != 0) {
        Statement& statement = writer();
        int place = 0;
        for (std::size_t column = 0; column < columns_.size(); ++column) {
            if (!isSet(static_cast<int>(column))) continue;
            std::visit([&](const auto& value) { statement.bind(++place, value); }, cells_[column]);
        }
        if (!new_) statement.bind(place + 1, id_);
        statement.run();
    }
    leave();
}

void Row::remove() {
    select_.reset();
    delete_.bind(1, id_);
    delete_.run();
    leave();
}

}  // namespace kolmera::bench
