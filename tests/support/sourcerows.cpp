#include "support/sourcerows.h"

#include <fmt/format.h>

namespace kolmera::test {

std::string rowsOf(RowReader& reader) {
    constexpr std::string_view kMarks[] = {"", "#", "@", "?"};
    std::string text;
    Row row;
    while (reader.next(row)) {
        text.append(fmt::format("{}", row.number));
        for (const Cell& cell : row.cells)
            text.append(fmt::format("|{}{}", kMarks[static_cast<std::size_t>(cell.kind)], cell.text));
        text += '\n';
    }
    return text;
}

std::string rowsOf(std::string_view bytes, const SourceFormat& format, const SourceLimits& limits) {
    const TemporaryFolder folder;
    folder.write("file", bytes);
    return rowsOf(*openRows(folder / "file", format, limits));
}

}  // namespace kolmera::test
