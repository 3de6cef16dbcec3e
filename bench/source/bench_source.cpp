// Makes price files, and reads one to its end or finds out what it is. run_source_bench times it.
#include <fmt/format.h>

#include <filesystem>
#include <optional>
#include <string>

#include "platform/outputfile.h"
#include "platform/spreadsheet/workbook.h"
#include "source/detection/detection.h"
#include "source/readers/opensource.h"

namespace kolmera::bench {
namespace {

constexpr const char* kHeadings[] = {"Artikelnr",   "Benämning", "Enhet", "Bruttopris", "Nettopris",
                                     "Rabattgrupp", "EAN",       "Antal", "Datum",      "Anmärkning"};

/// The same every time.
std::string cell(std::size_t row, std::size_t column, bool quoted) {
    switch (column) {
        case 0:
            return fmt::format("{:07}", row);
        case 1:
            return quoted && row % 10 == 0 ? fmt::format("\"Rör {}\"\" förzinkat; längd {} mm\"", row % 9, row % 997)
                                           : fmt::format("Rör {} mm förzinkat, längd {} mm", row % 97, row % 997);
        case 2:
            return "ST";
        case 3:
            return fmt::format("{},{:02}", row % 9973, row % 100);
        case 4:
            return fmt::format("{},{:02}", row % 7919, row % 97);
        case 5:
            return fmt::format("RG{:03}", row % 540);
        case 6:
            return fmt::format("73{:011}", row * 7);
        case 7:
            return fmt::format("{}", row % 50);
        case 8:
            return fmt::format("2026-{:02}-{:02}", row % 12 + 1, row % 28 + 1);
        default:
            return row % 20 == 0 ? "utgår" : "";
    }
}

void makeText(const std::filesystem::path& file, std::size_t rows) {
    OutputFile out(file);
    for (std::size_t row = 0; row <= rows; ++row) {
        std::string line;
        for (std::size_t column = 0; column < std::size(kHeadings); ++column) {
            line.append(column == 0 ? "" : ";").append(row == 0 ? kHeadings[column] : cell(row, column, true));
        }
        out.write(line.append("\r\n"));
    }
    out.finish();
}

void makeWorkbook(const std::filesystem::path& file, std::size_t rows) {
    std::vector<SheetColumn> columns;
    for (const char* heading : kHeadings) columns.push_back({heading, FieldType::Text, 60});
    columns[3].type = columns[4].type = columns[7].type = FieldType::Double;
    std::size_t row = 0;
    addSheet(file, "Priser", columns, [&]() -> std::optional<std::vector<Value>> {
        if (++row > rows) return std::nullopt;
        std::vector<Value> values;
        for (std::size_t column = 0; column < columns.size(); ++column) {
            if (columns[column].type == FieldType::Double) {
                values.emplace_back(static_cast<double>(row % 9973) + static_cast<double>(row % 100) / 100);
            } else {
                values.emplace_back(cell(row, column, false));
            }
        }
        return values;
    });
}

int read(const std::filesystem::path& file) {
    SourceFormat format;
    if (file.extension() == ".xlsx") format.kind = SourceKind::Xlsx;
    const std::unique_ptr<RowReader> reader = openRows(file, format);
    std::size_t rows = 0;
    std::size_t cells = 0;
    std::size_t bytes = 0;
    for (Row row; reader->next(row); ++rows) {
        cells += row.cells.size();
        for (const Cell& each : row.cells) bytes += each.text.size();
    }
    fmt::print("{} rows, {} cells, {} bytes in them\n", rows, cells, bytes);
    return 0;
}

}  // namespace
}  // namespace kolmera::bench

int main(int argc, char** argv) {
    using namespace kolmera::bench;
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() == 2 && arguments[0] == "read") return read(arguments[1]);
    if (arguments.size() == 2 && arguments[0] == "detect") {
        kolmera::detectSource(arguments[1]);
    } else if (arguments.size() == 3 && arguments[0] == "text") {
        makeText(arguments[1], std::stoul(arguments[2]));
    } else if (arguments.size() == 3 && arguments[0] == "workbook") {
        makeWorkbook(arguments[1], std::stoul(arguments[2]));
    } else {
        fmt::print(stderr, "bench_source read FILE | detect FILE | text FILE ROWS | workbook FILE ROWS\n");
        return 2;
    }
    return 0;
}
