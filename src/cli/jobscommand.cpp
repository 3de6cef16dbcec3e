#include "cli/jobscommand.h"

#include <fmt/format.h>

#include <array>
#include <nlohmann/json.hpp>
#include <ostream>

#include "cli/session.h"
#include "definitions/joblist.h"
#include "lang/keys/terminal.h"
#include "platform/encodings.h"

namespace kolmera::cli {
namespace {

constexpr std::size_t kColumns = 7;
using TableRow = std::array<std::string, kColumns>;

nlohmann::json asJson(const JobRow& row) {
    return {{"number", row.job.number},       {"job", row.job.name},
            {"type", row.kindText},           {"mask", row.job.mask},
            {"pricefile", row.job.priceFile}, {"filestate", row.fileState},
            {"company", row.job.company},     {"supplier", row.job.supplier},
            {"command", row.job.command},     {"tradeformat", row.tradeFormat}};
}

TableRow asTableRow(const JobRow& row) {
    return {fmt::format("{}", row.job.number),
            row.job.name,
            row.kindText,
            row.job.priceFile,
            row.fileState,
            row.job.company,
            row.job.supplier};
}

void printTable(const std::vector<TableRow>& rows, std::ostream& out) {
    std::array<std::size_t, kColumns> widths{};
    for (const TableRow& row : rows) {
        for (std::size_t i = 0; i < kColumns; ++i) widths[i] = std::max(widths[i], characterCount(row[i]));
    }
    for (const TableRow& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < kColumns; ++i) {
            line += row[i];
            line.append(widths[i] - characterCount(row[i]) + 2, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << '\n';
    }
}

}  // namespace

int jobsCommand(const JobsArguments& arguments, const Surroundings& surroundings) {
    Session session(surroundings, arguments.dataFolder);
    const auto folder = absoluteFolder(arguments.dataFolder);
    if (!session.hasDataFolder(surroundings.err)) return exitcode::kStopped;
    const auto rows = jobRows(session.texts, {.drives = session.state.drives,
                                              .dataFolder = folder,
                                              .programFolder = surroundings.programFolder,
                                              .locale = session.state.locale});
    if (arguments.json) {
        auto list = nlohmann::json::array();
        for (const JobRow& row : rows) list.push_back(asJson(row));
        surroundings.out << list.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
        return exitcode::kDone;
    }
    if (rows.empty()) {
        surroundings.out << session.text(text::terminal::kNoImports, folder.string()) << '\n';
        return exitcode::kDone;
    }
    std::vector<TableRow> table{
        {session.text(text::terminal::kNumberHeading), session.text(text::terminal::kImportHeading),
         session.text(text::terminal::kKindHeading), session.text(text::terminal::kPriceFileHeading),
         session.text(text::terminal::kFileDateHeading), session.text(text::terminal::kCompanyHeading),
         session.text(text::terminal::kSupplierHeading)}};
    for (const JobRow& row : rows) table.push_back(asTableRow(row));
    printTable(table, surroundings.out);
    return exitcode::kDone;
}

}  // namespace kolmera::cli
