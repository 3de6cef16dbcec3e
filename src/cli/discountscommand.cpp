#include "cli/discountscommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <ostream>
#include <utility>

#include "cli/companychoice.h"
#include "cli/session.h"
#include "cli/terminalport.h"
#include "definitions/supplierlist.h"
#include "discounts/letterexchange.h"
#include "discounts/lettermessages.h"
#include "lang/keys/company.h"
#include "lang/keys/files.h"
#include "lang/keys/letter.h"
#include "lang/keys/terminal.h"
#include "platform/lettercase.h"
#include "startup/startup.h"

namespace kolmera::cli {
namespace fs = std::filesystem;
namespace {

/// Files that a text under their name would not be.
bool isOtherSpreadsheet(const fs::path& file) {
    constexpr std::string_view kExtensions[] = {".ods", ".fods", ".ots", ".sxc", ".numbers", ".gnumeric"};
    const std::string extension = file.extension().string();
    return std::ranges::any_of(kExtensions, [&](std::string_view other) { return equalNoCase(extension, other); });
}

/// One command on one supplier's letter: finds the company and the supplier, and tells what is wrong with them.
class LetterCommand {
  public:
    LetterCommand(const DiscountsArguments& arguments, const Surroundings& surroundings)
        : arguments_(arguments),
          surroundings_(surroundings),
          file_(fs::absolute(arguments.file).lexically_normal()),
          session_(surroundings, arguments.dataFolder),
          port_(session_, surroundings.err, surroundings.cancel, false),
          boxes_(port_, {}),
          companies_(session_.state, session_.texts, boxes_) {
        companies_.waitForLock = [this] { return waitForLock(); };
    }

    int exportLetter();
    int importLetter();

  private:
    bool openCompany();
    bool waitForLock();
    [[nodiscard]] int stopped() { return port_.cancelled() ? exitcode::kCancelled : exitcode::kStopped; }
    [[nodiscard]] std::optional<std::string> supplierNumber();
    bool canReplace(LetterExchange& exchange);
    int finish(const LetterRead& report);

    int stop(const std::string& message) {
        surroundings_.err << session_.text(text::terminal::kError) << ' ' << replaceAll(message, "\r\n", "\n") << '\n';
        return exitcode::kStopped;
    }
    void print(const std::string& label, std::int64_t count) {
        surroundings_.out << fmt::format("{}: {}\n", label, count);
    }
    template <typename Report>
    void printRemarks(const Report& report) {
        for (const std::string& line : remarks(session_.texts, report)) surroundings_.err << line << '\n';
    }

    const DiscountsArguments& arguments_;
    const Surroundings& surroundings_;
    fs::path file_;
    std::string database_;  ///< of the company
    Session session_;
    TerminalPort port_;
    MessageBoxes boxes_;
    CompanyRegister companies_;
    bool toldOfLock_ = false;
};

/// Another program keeps the company locked. Ctrl-C gives up.
bool LetterCommand::waitForLock() {
    if (!std::exchange(toldOfLock_, true)) {
        surroundings_.err << session_.text(text::company::kWaiting, database_) << std::endl;
    }
    return !port_.cancelled();
}

bool LetterCommand::openCompany() {
    if (!session_.hasDataFolder(surroundings_.err)) return false;
    LäsDorvikIni(session_.state);
    const std::optional<std::string> database =
        chosenCompany(session_, companies_, arguments_.company, surroundings_.err);
    if (!database) return false;
    database_ = *database;
    return companies_.ÖppnaDatabas(database_);
}

/// The supplier's number as the company writes it.
std::optional<std::string> LetterCommand::supplierNumber() {
    const std::vector<SupplierRow> suppliers = readSuppliers(session_.state.sql);
    const int row = rowOfSupplier(suppliers, trimmed(arguments_.supplier));
    if (row >= 0) return suppliers[static_cast<std::size_t>(row)].number;
    stop(session_.text(text::letter::kNoSuchSupplier, arguments_.supplier));
    return std::nullopt;
}

int LetterCommand::exportLetter() {
    if (isOtherSpreadsheet(file_)) return stop(session_.text(text::files::kUnwritableSheet, file_.filename().string()));
    const std::optional<std::string> supplier = openCompany() ? supplierNumber() : std::nullopt;
    if (!supplier) return exitcode::kStopped;
    LetterExchange exchange(session_.state.sql, *supplier, port_);
    if (!exchange.hasLetter()) return stop(session_.text(text::letter::kNoLetter, *supplier));
    LetterWritten report;
    try {
        report = exchange.writeTo(file_);
    } catch (const PlatformError& error) {
        return stop(writingFailed(session_.texts, file_, error));
    }
    print(session_.text(text::letter::kGroupsWritten), report.groups);
    printRemarks(report);
    surroundings_.out << session_.text(text::letter::kWritten, file_.string()) << '\n';
    return report.questionMarks.count > 0 ? exitcode::kPassedOver : exitcode::kDone;
}

/// Whether the file can be read to its end and holds groups: the old letter is deleted only then.
bool LetterCommand::canReplace(LetterExchange& exchange) {
    try {
        if (exchange.usableLines(file_) > 0) return true;
        stop(noGroups(session_.texts, file_));
    } catch (const PlatformError& error) {
        stop(readingFailed(session_.texts, file_, error));
    }
    return false;
}

int LetterCommand::importLetter() {
    if (isOtherSpreadsheet(file_)) return stop(session_.text(text::files::kUnreadableSheet, file_.filename().string()));
    const std::optional<std::string> supplier = openCompany() ? supplierNumber() : std::nullopt;
    if (!supplier) return stopped();
    LetterExchange exchange(session_.state.sql, *supplier, port_);
    exchange.cancelled = [this] { return port_.cancelled(); };
    if (!canReplace(exchange)) return stopped();
    return finish(exchange.replaceFrom(file_));
}

int LetterCommand::finish(const LetterRead& report) {
    if (report.cancelled || report.stopped) {
        stop(remarks(session_.texts, report).front());
        return report.cancelled ? exitcode::kCancelled : exitcode::kStopped;
    }
    print(session_.text(text::letter::kDeletedGroups), report.deleted);
    print(session_.text(text::letter::kLinesRead), report.lines);
    print(session_.text(text::letter::kNewGroups), report.added);
    print(session_.text(text::letter::kSkippedLines), report.passedOver.count + report.withoutCode.count);
    printRemarks(report);
    surroundings_.out << session_.text(text::letter::kRead) << '\n';
    return port_.passedOver() > 0 ? exitcode::kPassedOver : exitcode::kDone;
}

}  // namespace

int exportDiscountsCommand(const DiscountsArguments& arguments, const Surroundings& surroundings) {
    return LetterCommand(arguments, surroundings).exportLetter();
}

int importDiscountsCommand(const DiscountsArguments& arguments, const Surroundings& surroundings) {
    return LetterCommand(arguments, surroundings).importLetter();
}

}  // namespace kolmera::cli
