#include "cli/jobscommand.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <ostream>

#include "cli/session.h"
#include "cli/texttable.h"
#include "definitions/joblist.h"
#include "lang/keys/terminal.h"

namespace kolmera::cli {
namespace {

nlohmann::json asJson(const JobRow& row) {
    return {{"number", row.job.number},       {"job", row.job.name},
            {"type", row.kindText},           {"mask", row.job.mask},
            {"pricefile", row.job.priceFile}, {"filestate", row.fileState},
            {"company", row.job.company},     {"supplier", row.job.supplier},
            {"command", row.job.command},     {"tradeformat", row.tradeFormat}};
}

std::vector<std::string> asTableRow(const JobRow& row) {
    return {fmt::format("{}", row.job.number),
            row.job.name,
            row.kindText,
            row.job.priceFile,
            row.fileState,
            row.job.company,
            row.job.supplier};
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
    TextTable table({session.text(text::terminal::kNumberHeading), session.text(text::terminal::kImportHeading),
                     session.text(text::terminal::kKindHeading), session.text(text::terminal::kPriceFileHeading),
                     session.text(text::terminal::kFileDateHeading), session.text(text::terminal::kCompanyHeading),
                     session.text(text::terminal::kSupplierHeading)});
    for (const JobRow& row : rows) table.add(asTableRow(row));
    table.print(surroundings.out);
    return exitcode::kDone;
}

}  // namespace kolmera::cli
