#include "cli/changeoutput.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <ostream>
#include <utility>

#include "cli/printablelines.h"
#include "cli/terminalport.h"
#include "cli/texttable.h"
#include "history/changereport.h"
#include "history/changetable.h"
#include "history/productnames.h"
#include "import/run/runreport.h"
#include "lang/keys/changes.h"
#include "lang/keys/terminal.h"
#include "startup/company.h"
#include "startup/startup.h"

namespace kolmera::cli {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kKindNames[] = {"run", "preview", "undo"};
constexpr const char* kChangeNames[] = {"added", "changed", "removed"};
constexpr std::size_t kRecordsShown = 10;  ///< of a notice, for people

std::string remarkText(Session& session, std::string_view name) {
    if (name == kFailedStatement) return session.text(text::terminal::kFailedStatements);
    const auto kind = std::ranges::find(kRemarks, name, &RemarkKind::name);
    return kind == std::end(kRemarks) ? std::string(name) : session.text(kind->text);
}

Json extremeJson(const std::optional<PriceFigures::Extreme>& extreme) {
    if (!extreme) return nullptr;
    return {{"percent", extreme->percent},
            {"product", extreme->product},
            {"before", extreme->before},
            {"after", extreme->after}};
}

Json pricesJson(const ChangeFigures& figures, const ChangeReport& report) {
    Json prices = Json::array();
    for (const PriceFigures& price : figures.prices) {
        Json bars = Json::array();
        for (std::size_t bar = 0; bar < kHistogramBars; ++bar) {
            bars.push_back({{"percent", report.barCaption(bar)}, {"prices", price.histogram.at(bar)}});
        }
        prices.push_back({{"table", price.table},
                          {"column", price.column},
                          {"raised", price.raised},
                          {"lowered", price.lowered},
                          {"from_zero", price.fromZero},
                          {"to_zero", price.toZero},
                          {"median_percent", price.median ? Json(*price.median) : Json()},
                          {"largest_rise", extremeJson(price.largestRise)},
                          {"largest_fall", extremeJson(price.largestFall)},
                          {"histogram", bars}});
    }
    return prices;
}

template <typename Number>
Json known(const std::optional<Number>& number) {
    return number ? Json(*number) : Json();
}

Json figuresJson(const ChangeFigures& figures, const ChangeReport& report) {
    return {{"records", known(figures.records)},           {"skipped", known(figures.skipped)},
            {"new_products", figures.newProducts},         {"changed_products", figures.changedProducts},
            {"removed_products", figures.removedProducts}, {"unchanged_prices", known(figures.unchanged)},
            {"prices", pricesJson(figures, report)}};
}

Json noticesJson(const ChangeReport& report) {
    Json notices = Json::array();
    for (const Notice& notice : report.notices()) {
        notices.push_back(
            {{"warning", notice.warning}, {"name", notice.name}, {"text", notice.text}, {"records", notice.records}});
    }
    return notices;
}

/// One record, as it is printed.
class Output {
  public:
    Output(Session& session, const RecordReader& record, const ChangeOutput& output, const Surroundings& surroundings)
        : session_(session),
          output_(output),
          surroundings_(surroundings),
          report_({.header = record.header(),
                   .forEachChange = [&record](const auto& take) { record.forEachChange(take); },
                   .forEachRemark = [&record](const auto& take) { record.forEachRemark(take); }},
                  session.texts, session.state.locale, [&session](auto name) { return remarkText(session, name); }) {}

    int run(const RunHeader* previous) {
        if (!report_.read(goOn_)) return exitcode::kCancelled;
        const bool named = nameProducts();
        if (!named && !output_.file.empty()) return exitcode::kStopped;  // half a list would be kept for a whole one
        report_.warn(previous);
        report_.list().show({});
        if (output_.json) {
            printJson();
        } else {
            printHead();
            if (output_.file.empty()) printTable();
        }
        if (!goOn_(0) || !save()) return exitcode::kCancelled;
        return named ? exitcode::kDone : exitcode::kPassedOver;
    }

  private:
    [[nodiscard]] bool nameProducts();
    void printHead();
    void printTable();
    void printJson();
    bool save();

    Session& session_;
    const ChangeOutput& output_;
    const Surroundings& surroundings_;
    ChangeReport report_;
    ChangeTable::KeepOn goOn_ = [this](std::int64_t /*rows*/) {
        return !surroundings_.cancel.load(std::memory_order_relaxed);
    };
};

/// False for a company that cannot be opened, which is told: its changes lack what only it knows.
bool Output::nameProducts() {
    StartState& state = session_.state;
    const std::string& company = report_.header().companyFile;
    // One on a server is not opened for names, which can take long.
    std::error_code unknown;
    const bool here = !company.empty() && !SqlLayer::ÄrSQLDatabas(company) &&
                      std::filesystem::exists(state.drives.resolve(company, state.dataFolder()), unknown);
    if (!here) return true;
    TerminalPort port(session_, surroundings_.err, surroundings_.cancel, false);
    MessageBoxes boxes(port, {});
    CompanyRegister companies(state, session_.texts, boxes);
    companies.waitForLock = [] { return false; };
    LäsDorvikIni(state);
    bool named = false;
    try {
        named = companies.ÖppnaDatabas(company);
        if (named) kolmera::nameProducts(state.sql, report_.net());
    } catch (const PlatformError& error) {
        named = false;
        surroundings_.err << session_.text(text::terminal::kError) << ' ' << session_.explain(error) << '\n';
    }
    state.sql.FtgDB.reset();
    return named;
}

void Output::printHead() {
    PrintableStream out(surroundings_.out);
    out << report_.header().id << ' ' << report_.title() << '\n' << report_.origin() << "\n\n";
    for (const Notice& notice : report_.notices()) {
        out << (notice.warning ? "! " : "") << report_.lineOf(notice);
        for (std::size_t i = 0; i < std::min(notice.records.size(), kRecordsShown); ++i) {
            out << (i == 0 ? " (" : ", ") << notice.records[i];
        }
        if (!notice.records.empty()) out << (notice.records.size() > kRecordsShown ? ", ...)" : ")");
        out << '\n';
    }
    for (const ChangeReport::Figure& figure : report_.figures()) {
        out << fmt::format("{}: {}\n", figure.caption, figure.value);
    }
    out << '\n';
}

/// In pages: the columns of each are as wide as it needs them.
void Output::printTable() {
    constexpr std::size_t kPage = 500;
    const ChangeTable table(report_.list(), session_.texts, session_.state.locale);
    const auto textsOf = [](const ChangeTable::Cells& cells) {
        return std::vector<std::string>(cells.begin(), cells.end());
    };
    TextTable page(textsOf(table.headings()));
    std::size_t rows = 0;
    table.forEach(
        [&](const ChangeRow& row) {
            page.add(textsOf(table.cells(row)));
            if (++rows % kPage == 0) page.printAndEmpty(surroundings_.out);
        },
        goOn_);
    if (rows > 0) page.printAndEmpty(surroundings_.out);
}

/// A change has a line of its own.
void Output::printJson() {
    std::ostream& out = surroundings_.out;
    out << "{\"run\":" << dumped(runJson(report_.header())) << ",\n\"notices\":" << dumped(noticesJson(report_))
        << ",\n\"figures\":" << dumped(figuresJson(report_.changes(), report_));
    out << ",\n\"changes\":[";
    const char* separator = "\n";
    ChangeTable(report_.list(), session_.texts, session_.state.locale)
        .forEach(
            [&](const ChangeRow& row) {
                out << std::exchange(separator, ",\n")
                    << dumped({{"kind", kChangeNames[static_cast<std::size_t>(row.kind)]},
                               {"product", row.product},
                               {"name", row.name},
                               {"column", row.caption},
                               {"id", row.id},
                               {"before", jsonOf(row.before)},
                               {"after", jsonOf(row.after)},
                               {"percent", known(row.percent)},
                               {"record", row.record}});
            },
            goOn_);
    out << "]}\n";
}

bool Output::save() {
    if (output_.file.empty()) return true;
    const ChangeTable table(report_.list(), session_.texts, session_.state.locale);
    if (!table.save(output_.file, goOn_)) return false;
    if (!output_.json) {
        surroundings_.out << session_.text(text::changes::kRowsWritten,
                                           grouped(report_.list().count(), session_.state.locale))
                          << '\n';
    }
    return true;
}

}  // namespace

std::string dumped(const Json& json) { return json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace); }

Json jsonOf(const Value& value) {
    if (const auto* yes = std::get_if<bool>(&value)) return *yes;
    if (const auto* whole = std::get_if<std::int64_t>(&value)) return *whole;
    if (const auto* number = std::get_if<double>(&value)) return *number;
    if (const auto* date = std::get_if<Date>(&value)) return date->iso();
    if (isNull(value)) return nullptr;
    return std::string(textOf(value));
}

Json runJson(const RunHeader& run) {
    const Json counts = Json::parse(run.counts, nullptr, false);
    return {{"run", run.id},
            {"kind", kKindNames[static_cast<std::size_t>(run.kind)]},
            {"of", run.of},
            {"started", run.started},
            {"ended", run.ended},
            {"outcome", run.outcome},
            {"user", run.user},
            {"host", run.host},
            {"version", run.version},
            {"job", run.job},
            {"company", run.companyName},
            {"company_file", run.companyFile},
            {"price_file", run.priceFile.path},
            {"price_file_size", run.priceFile.size},
            {"price_file_modified", run.priceFile.modified},
            {"price_file_sha256", run.priceFile.sha256},
            {"counts", counts.is_object() ? counts : Json::object()}};
}

int printChanges(Session& session, const RecordReader& record, const RunHeader* previous, const ChangeOutput& output,
                 const Surroundings& surroundings) {
    return Output(session, record, output, surroundings).run(previous);
}

}  // namespace kolmera::cli
