#include "registers/registerfile.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>

#include "db/batchtransaction.h"
#include "platform/lettercase.h"
#include "platform/outputfile.h"
#include "platform/spreadsheet/workbook.h"
#include "registers/registervalues.h"
#include "source/detection/detection.h"
#include "source/readers/opensource.h"

namespace kolmera {
namespace {

constexpr int kRowsInBatch = 25;

bool isEmptyRow(const Row& row) {
    return std::ranges::all_of(row.cells, [](const Cell& cell) { return trimmedBlanks(cell.text).empty(); });
}

/// A sheet that an export has written is named after the register; the newest stands last.
std::string sheetOf(const RegisterDefinition& definition, const std::vector<std::string>& sheets) {
    for (auto sheet = sheets.rbegin(); sheet != sheets.rend(); ++sheet) {
        for (const std::string_view name : {definition.name, definition.namn}) {
            const bool isNumbered =
                startsWithNoCase(*sheet, name) &&
                std::ranges::all_of(sheet->substr(name.size()), [](char c) { return c >= '0' && c <= '9'; });
            if (isNumbered) return *sheet;
        }
    }
    return {};
}

/// Whether a binding means the column at that place of the file.
bool means(const ColumnBinding& binding, std::size_t cell, const std::vector<std::string>& headings) {
    if (cell < headings.size() && equalNoCase(trimmed(headings[cell]), trimmed(binding.heading))) return true;
    const std::string& text = binding.heading;
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && number == cell + 1;
}

}  // namespace

RegisterReader::RegisterReader(Register& to, SqlLayer& sql, const std::filesystem::path& file,
                               std::nullptr_t /*unbound*/)
    : to_(to), sql_(sql), file_(file) {
    try {
        lookAt();
    } catch (const PlatformError& error) {
        throw error.about(file_.string());
    }
}

RegisterReader::RegisterReader(Register& to, SqlLayer& sql, const std::filesystem::path& file,
                               const std::vector<ColumnBinding>& bindings)
    : RegisterReader(to, sql, file, nullptr) {
    bind(readHeadings(), bindings);
}

RegisterReader::RegisterReader(Register& to, SqlLayer& sql, const std::filesystem::path& file,
                               const std::vector<int>& columns)
    : RegisterReader(to, sql, file, nullptr) {
    const std::vector<std::string> headings = readHeadings();
    for (std::size_t cell = 0; cell < headings.size(); ++cell) {
        if (cell < columns.size() && columns[cell] >= 0) {
            bindOne(cell, columns[cell], headings[cell]);
        } else if (!trimmed(headings[cell]).empty()) {
            leftOut_.push_back(headings[cell]);
        }
    }
    checkBound(headings);
}

FileColumns RegisterReader::columnsOf(Register& to, SqlLayer& sql, const std::filesystem::path& file) {
    RegisterReader reader(to, sql, file, nullptr);
    FileColumns found;
    std::vector<std::vector<std::string>> samples;
    for (const std::string& heading : reader.readHeadings([&](const Row& row) {
             auto& sample = samples.emplace_back();
             for (const Cell& cell : row.cells) sample.emplace_back(cell.text);
         })) {
        const std::size_t cell = found.columns.size();
        FileColumns::Column& column = found.columns.emplace_back();
        column.heading = heading;
        for (const auto& sample : samples)
            column.samples.push_back(cell < sample.size() ? sample[cell] : std::string());
        const int named = to.columnNamed(heading);
        const bool twice = std::ranges::count(found.columns, named, &FileColumns::Column::column) > 0;
        if (named >= 0 && !twice && !to.column(named).fixed) column.column = named;
    }
    return found;
}

/// One for each column; empty ones where the file has no headings.
std::vector<std::string> RegisterReader::readHeadings(const std::function<void(const Row&)>& sample) {
    try {
        SourceTable table(openRows(file_, format_), format_);
        std::size_t rows = 0, cells = 0;
        for (Row row; rows < (sample ? FileColumns::kSamples : 1) && table.next(row); ++rows) {
            if (rows == 0) cells = row.cells.size();
            if (sample) sample(row);
        }
        return table.headings().empty() ? std::vector<std::string>(cells) : table.headings();
    } catch (const PlatformError& error) {
        throw error.about(file_.string());
    }
}

/// What the file is. Names of columns are needed, so its first row has them, unless columns are named by number.
void RegisterReader::lookAt() {
    KnownOfSource known;
    Detection found = detectSource(file_, known);
    const std::string sheet = sheetOf(to_.definition(), found.sheets);
    if (!sheet.empty() && sheet != found.format.sheet) {
        known.sheet = sheet;
        found = detectSource(file_, known);
    }
    format_ = found.format;
    format_.headings = true;
    if (found.confidence.decimalSign < kSureEnough) format_.decimalSign = sql_.locale().decimalSign();
}

void RegisterReader::bind(const std::vector<std::string>& headings, const std::vector<ColumnBinding>& bindings) {
    using What = UnfitFile::What;
    std::vector<bool> used(bindings.size());
    for (std::size_t cell = 0; cell < headings.size(); ++cell) {
        const auto binding =
            std::ranges::find_if(bindings, [&](const ColumnBinding& one) { return means(one, cell, headings); });
        const bool bound = binding != bindings.end();
        if (bound) used[static_cast<std::size_t>(binding - bindings.begin())] = true;
        const std::string& name = bound ? binding->column : headings[cell];
        const int column = to_.columnNamed(name);
        if (column >= 0) {
            bindOne(cell, column, headings[cell]);
        } else if (bound) {
            throw UnfitFile{What::UnknownColumn, name};
        } else if (!trimmed(name).empty()) {
            leftOut_.push_back(name);
        }
    }
    for (std::size_t i = 0; i < bindings.size(); ++i) {
        if (!used[i]) throw UnfitFile{What::UnknownHeading, bindings[i].heading};
    }
    checkBound(headings);
}

void RegisterReader::checkBound(const std::vector<std::string>& headings) const {
    using What = UnfitFile::What;
    if (bound_.empty()) throw UnfitFile{What::NoHeadings, fmt::format("{}", fmt::join(headings, ", "))};
    for (int key = 0; key < to_.keys(); ++key) {
        if (std::ranges::find(bound_, key, &Bound::column) == bound_.end())
            throw UnfitFile{What::NoKey, to_.column(key).caption};
    }
}

void RegisterReader::bindOne(std::size_t cell, int column, const std::string& heading) {
    if (std::ranges::find(bound_, column, &Bound::column) != bound_.end())
        throw UnfitFile{UnfitFile::What::TwiceBound, to_.column(column).caption};
    if (to_.column(column).fixed) {
        leftOut_.push_back(heading);
    } else {
        bound_.push_back({cell, column});
    }
}

RegisterImport RegisterReader::read() {
    BatchTransaction batch(*sql_.FtgDB);
    int rows = 0;
    readAll([&] {
        if (++rows % kRowsInBatch == 0) batch.next();
    });
    batch.end();
    return import_;
}

RegisterImport RegisterReader::tryOut() {
    Database& database = *sql_.FtgDB;
    database.beginWhole();
    try {
        readAll([] {});
        database.rollback();
        return import_;
    } catch (...) {
        if (database.inTransaction()) database.rollback();
        throw;
    }
}

void RegisterReader::readAll(const std::function<void()>& nextRow) {
    import_ = {};
    for (const Bound& bound : bound_) import_.columns.push_back(to_.column(bound.column).caption);
    import_.leftOut = leftOut_;
    SourceTable table(openRows(file_, format_), format_);
    for (Row row; table.next(row);) {
        if (isEmptyRow(row)) continue;
        if (cancelled && cancelled()) {
            import_.cancelled = true;
            break;
        }
        try {
            readRow(row);
        } catch (const PlatformError& error) {
            throw error.about(fmt::format("{}", row.number));
        }
        nextRow();
    }
}

void RegisterReader::readRow(const Row& row) {
    ++import_.counts.rows;
    const std::vector<RegisterProblem> problems = writeRow(row);
    if (problems.empty()) return;
    ++import_.rejected;
    for (const RegisterProblem& problem : problems) {
        if (import_.reasons.size() < RegisterImport::kMostRejected) import_.reasons.push_back({row.number, problem});
    }
}

std::optional<RegisterProblem> RegisterReader::cellValue(const RegisterRow& row, const Bound& bound, const Cell& cell,
                                                         Value& value) const {
    Spelling spelling;
    if (cell.kind == Cell::Kind::Text) {
        spelling.signs = {format_.decimalSign, format_.thousandsSign};
        spelling.order = format_.dateOrder;
    }
    return readValue(to_.cell(row, bound.column), bound.column, cell.text, spelling, value);
}

/// A row is written with all its cells, or left alone.
std::vector<RegisterProblem> RegisterReader::writeRow(const Row& row) {
    std::vector<std::string> key(static_cast<std::size_t>(to_.keys()));
    std::vector<RegisterProblem> problems;
    const auto textOf = [&](const Bound& bound) {
        return bound.cell < row.cells.size() ? row.cells[bound.cell] : Cell{};
    };
    RegisterValues values;
    const auto take = [&](const RegisterRow& of, bool keys) {
        for (const Bound& bound : bound_) {
            const Cell cell = textOf(bound);
            if ((bound.column < to_.keys()) != keys || (!keys && trimmedBlanks(cell.text).empty())) continue;
            Value value;
            if (auto problem = cellValue(of, bound, cell, value)) {
                problems.push_back(std::move(*problem));
            } else {
                values.emplace(bound.column, std::move(value));
            }
        }
    };
    const RegisterRow empty = to_.newRow();
    take(empty, true);
    if (!problems.empty()) return problems;
    const std::optional<RegisterRow> there = to_.findBy(values);
    take(there ? *there : empty, false);
    if (!problems.empty()) return problems;
    if (!there) {
        problems = to_.add(values);
        if (problems.empty()) ++import_.counts.added;
        return problems;
    }
    for (int column = 0; column < to_.keys(); ++column) values.erase(column);  // as the register spells it
    std::erase_if(values,
                  [&](const auto& one) { return there->cells[static_cast<std::size_t>(one.first)] == one.second; });
    if (values.empty()) {
        ++import_.same;
        return problems;
    }
    problems = to_.change(*there, values);
    if (problems.empty()) ++import_.counts.changed;
    return problems;
}

// Out.

namespace {

std::string quoted(const std::string& text) {
    if (text.find_first_of(";\"\r\n") == std::string::npos && text == trimmed(text)) return text;
    return '"' + replaceAll(text, "\"", "\"\"") + '"';
}

std::int64_t writeText(Register& from, const std::filesystem::path& file) {
    const int columns = static_cast<int>(from.columns().size());
    OutputFile output(file);
    output.write(kTextMark);
    const auto writeLine = [&](const std::function<std::string(int)>& cell) {
        std::string line;
        for (int column = 0; column < columns; ++column)
            line.append(column == 0 ? "" : ";").append(quoted(cell(column)));
        output.write(line.append("\r\n"));
    };
    writeLine([&](int column) { return from.column(column).caption; });
    std::int64_t rows = 0;
    from.forEachRow([&](const RegisterRow& row) {
        writeLine([&](int column) { return from.textOf(row, column); });
        ++rows;
        return true;
    });
    output.finish();
    return rows;
}

std::int64_t writeWorkbook(Register& from, const std::filesystem::path& file, const std::string& sheet) {
    constexpr int kAnyLength = 50;
    std::vector<SheetColumn> columns;
    for (const RegisterColumn& column : from.columns()) {
        columns.push_back({column.caption, column.type, column.size > 0 ? column.size : kAnyLength});
    }
    std::int64_t rows = 0;
    const auto next = from.rows();
    RegisterRow row;
    addSheet(file, sheet, columns, [&]() -> std::optional<std::vector<Value>> {
        if (!next(row)) return std::nullopt;
        ++rows;
        return row.cells;
    });
    return rows;
}

}  // namespace

std::int64_t writeRegister(Register& from, const std::filesystem::path& file) {
    const std::string extension = lowerCase(file.extension().string());
    // Files that a text under their name would not be.
    constexpr std::string_view kOthers[] = {".xls", ".xlsm", ".xlsb", ".ods", ".fods", ".ots", ".numbers", ".gnumeric"};
    if (std::ranges::find(kOthers, extension) != std::end(kOthers))
        throw PlatformError(errors::kUnwritableFormat, "not .xlsx").about(file.string());
    try {
        return extension == ".xlsx" ? writeWorkbook(from, file, from.shortName()) : writeText(from, file);
    } catch (const PlatformError& error) {
        throw error.about(file.string());
    }
}

}  // namespace kolmera
