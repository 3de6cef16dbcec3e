#include "cli/texttable.h"

#include <algorithm>
#include <ostream>

#include "platform/encodings.h"
#include "platform/printable.h"

namespace kolmera::cli {

void TextTable::add(std::vector<std::string> row) {
    for (std::string& cell : row) cell = printable(cell, cell.size());
    rows_.push_back(std::move(row));
}

void TextTable::print(std::ostream& out) const {
    std::vector<std::size_t> widths(rows_.front().size());
    for (const auto& row : rows_) {
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], characterCount(row[i]));
    }
    for (const auto& row : rows_) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += row[i];
            line.append(widths[i] - characterCount(row[i]) + 2, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << '\n';
    }
}

void TextTable::printAndEmpty(std::ostream& out) {
    print(out);
    rows_.resize(1);
}

}  // namespace kolmera::cli
