#include "cli/productcommand.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <ostream>

#include "cli/companychoice.h"
#include "cli/session.h"
#include "cli/terminalport.h"
#include "cli/texttable.h"
#include "lang/keys/products.h"
#include "lang/keys/terminal.h"
#include "products/productcard.h"
#include "products/productfinder.h"
#include "products/producthistory.h"
#include "startup/startup.h"

namespace kolmera::cli {
namespace {

using Json = nlohmann::ordered_json;

Json asJson(const CardTable& table) {
    Json rows = Json::array();
    for (const auto& cells : table.rows) {
        Json row = Json::object();
        for (std::size_t column = 0; column < table.fields.size(); ++column) row[table.fields[column]] = cells[column];
        rows.push_back(std::move(row));
    }
    return rows;
}

void print(const ProductCard& card, const ProductArguments& arguments, std::ostream& out) {
    if (arguments.json) {
        Json json = {{"number", card.number}, {"name", card.name}};
        for (const CardTable& table : card.tables) json[table.name] = asJson(table);
        out << json.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
        return;
    }
    for (const CardTable& table : card.tables) {
        if (table.rows.empty()) continue;
        out << table.title << "\n\n";
        TextTable text(table.headings);
        for (const auto& cells : table.rows) text.add(cells);
        text.print(out);
        out << '\n';
    }
}

}  // namespace

int productCommand(const ProductArguments& arguments, const Surroundings& surroundings) {
    Session session(surroundings, arguments.dataFolder);
    if (!session.hasDataFolder(surroundings.err)) return exitcode::kStopped;
    LäsDorvikIni(session.state);
    TerminalPort port(session, surroundings.err, surroundings.cancel, false);
    MessageBoxes boxes(port, {});
    CompanyRegister companies(session.state, session.texts, boxes);
    const auto company = chosenCompany(session, companies, arguments.company, surroundings.err);
    if (!company || !companies.ÖppnaDatabas(*company)) return exitcode::kStopped;
    SqlLayer& sql = session.state.sql;

    const std::vector<std::string> numbers = ProductFinder(sql).named(arguments.number);
    if (numbers.size() != 1) {
        const ModuleKey why = numbers.empty() ? text::products::kNone : text::products::kSeveral;
        surroundings.err << session.text(text::terminal::kError) << ' ' << session.text(why, arguments.number) << '\n';
        for (const std::string& number : numbers) surroundings.err << "  " << number << '\n';
        return exitcode::kStopped;
    }
    std::optional<ProductCard> card = productCard(sql, session.texts, numbers.front());
    if (!card) {
        surroundings.err << session.text(text::terminal::kError) << ' '
                         << session.text(text::products::kNone, numbers.front()) << '\n';
        return exitcode::kStopped;
    }
    ProductHistory::Outcome outcome;
    if (arguments.changes > 0) {
        CardTable history = historyTable(session.texts);
        const ProductHistory past(session.state.dataFolder(),
                                  {.number = card->number, .companyFile = *company, .ids = card->ids});
        outcome = past.read({.changes = static_cast<std::size_t>(arguments.changes)}, surroundings.cancel,
                            [&](const RunHeader& run, const std::vector<ProductChange>& changes) {
                                addHistory(history, sql, session.texts, run, changes);
                            });
        card->tables.push_back(std::move(history));
    }
    print(*card, arguments, surroundings.out);
    if (surroundings.cancel.load(std::memory_order_relaxed)) return exitcode::kCancelled;
    if (outcome.unreadable == 0) return exitcode::kDone;
    surroundings.err << session.text(text::products::kUnreadableRuns, fmt::format("{}", outcome.unreadable)) << '\n';
    return exitcode::kPassedOver;
}

}  // namespace kolmera::cli
