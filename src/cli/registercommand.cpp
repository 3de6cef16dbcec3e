#include "cli/registercommand.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <utility>

#include "cli/changeoutput.h"
#include "cli/companychoice.h"
#include "cli/nearnames.h"
#include "cli/session.h"
#include "cli/terminalport.h"
#include "cli/texttable.h"
#include "lang/keys/company.h"
#include "lang/keys/help.h"
#include "lang/keys/registers.h"
#include "lang/keys/terminal.h"
#include "platform/lettercase.h"
#include "platform/printable.h"
#include "platform/searchwords.h"
#include "registers/registerfile.h"
#include "registers/registertexts.h"
#include "startup/startup.h"

namespace kolmera::cli {
namespace fs = std::filesystem;
namespace {

using Json = nlohmann::ordered_json;
using Words = std::span<const std::string>;

class RegisterCommand {
  public:
    RegisterCommand(const RegisterArguments& arguments, const Surroundings& surroundings)
        : arguments_(arguments),
          surroundings_(surroundings),
          session_(surroundings, arguments.dataFolder),
          port_(session_, surroundings.err, surroundings.cancel, false),
          boxes_(port_, {}),
          companies_(session_.state, session_.texts, boxes_),
          folder_(session_.state.dataFolder()) {
        companies_.waitForLock = [this] { return waitForLock(); };
    }

    int run();

  private:
    using Action = int (RegisterCommand::*)(Words words);
    struct NamedAction {
        const char* name;
        Action carryOut;
    };
    static const NamedAction kActions[];

    int list(Words words);
    int columns(Words words);
    int show(Words words);
    int set(Words words);
    int remove(Words words);
    int import(Words words);
    int exportFile(Words words);

    bool waitForLock();
    bool openRegister();
    [[nodiscard]] bool goOn() const { return !surroundings_.cancel.load(std::memory_order_relaxed); }
    std::optional<Words> keyOf(Words words);
    std::optional<RegisterRow> rowOf(Words words);
    std::optional<RegisterValues> valuesOf(const RegisterRow& row, Words words);
    Json rowJson(const RegisterRow& row);
    /// Lets `write` write, as a run of its own, and tells what is wrong.
    int record(const std::string& row, WritingCounts& counts, ModuleKey done,
               const std::function<std::vector<RegisterProblem>()>& write);
    int endRecord(RecordedWriting& writing, const char* outcome, const WritingCounts& counts);
    void print(const RegisterImport& import);
    [[nodiscard]] Json importJson(const RegisterImport& import);
    int unfit(const UnfitFile& unfit);
    int tell(const std::string& row, const std::vector<RegisterProblem>& problems);

    int stop(const std::string& message) {
        surroundings_.err << session_.text(text::terminal::kError) << ' ' << message << '\n';
        return exitcode::kStopped;
    }
    int misused(const std::string& message) {
        stop(message);
        return exitcode::kUsage;
    }
    std::string formText(FormKey key) { return session_.texts.FormulärSträng(key); }
    [[nodiscard]] SqlLayer& sql() { return session_.state.sql; }

    const RegisterArguments& arguments_;
    const Surroundings& surroundings_;
    Session session_;
    TerminalPort port_;
    MessageBoxes boxes_;
    CompanyRegister companies_;
    RunFolder folder_;
    std::string company_;
    std::optional<Register> register_;
    bool toldOfLock_ = false;
};

const RegisterCommand::NamedAction RegisterCommand::kActions[] = {
    {"list", &RegisterCommand::list},        {"columns", &RegisterCommand::columns},
    {"show", &RegisterCommand::show},        {"set", &RegisterCommand::set},
    {"remove", &RegisterCommand::remove},    {"import", &RegisterCommand::import},
    {"export", &RegisterCommand::exportFile}};

bool RegisterCommand::waitForLock() {
    if (!std::exchange(toldOfLock_, true)) {
        surroundings_.err << session_.text(text::company::kWaiting, company_) << std::endl;
    }
    return goOn();
}

int RegisterCommand::run() {
    const std::string wanted = arguments_.action.empty() ? "list" : arguments_.action;
    const auto* const action = std::ranges::find(kActions, wanted, &NamedAction::name);
    if (action == std::end(kActions)) {
        std::vector<std::string> names;
        for (const NamedAction& one : kActions) names.emplace_back(one.name);
        return misused(
            session_.texts.FormulärSträngMed1(text::registers::kGive, fmt::format("{}", fmt::join(names, ", "))));
    }
    try {
        if (!openRegister()) return goOn() ? exitcode::kStopped : exitcode::kCancelled;
        return (this->*action->carryOut)(arguments_.words);
    } catch (const PlatformError&) {
        if (goOn()) throw;
        return exitcode::kCancelled;
    }
}

bool RegisterCommand::openRegister() {
    const RegisterDefinition* definition = registerNamed(trimmed(arguments_.name));
    if (definition == nullptr) {
        std::vector<std::string> names;
        for (const RegisterDefinition& one : registerDefinitions()) {
            names.emplace_back(one.name);
            names.emplace_back(one.namn);
        }
        std::string message = session_.text(text::registers::kNoRegister, arguments_.name);
        if (const auto near = nearNames(arguments_.name, names); !near.empty())
            message += ' ' + session_.text(text::terminal::kDidYouMean, near[0]);
        stop(message);
        return false;
    }
    if (!session_.hasDataFolder(surroundings_.err)) return false;
    LäsDorvikIni(session_.state);
    const auto company = chosenCompany(session_, companies_, arguments_.company, surroundings_.err);
    if (!company) return false;
    company_ = *company;
    if (!companies_.ÖppnaDatabas(company_)) return false;
    register_.emplace(*definition, sql(), session_.texts);
    return true;
}

// Looking.

Json RegisterCommand::rowJson(const RegisterRow& row) {
    Json json = Json::object();
    for (std::size_t place = 0; place < row.cells.size(); ++place)
        json[register_->columns()[place].field] = jsonOf(row.cells[place]);
    return json;
}

int RegisterCommand::list(Words words) {
    const SearchWords wanted(fmt::format("{}", fmt::join(words, " ")));
    std::vector<int> shown;
    std::vector<std::string> headings;
    for (int column = 0; column < static_cast<int>(register_->columns().size()); ++column) {
        if (!register_->column(column).listed) continue;
        shown.push_back(column);
        headings.push_back(register_->column(column).caption);
    }
    constexpr int kPage = 1000;
    TextTable table(headings);
    int onPage = 0;
    const char* separator = "[\n";
    register_->forEachRow([&](const RegisterRow& row) {
        std::vector<std::string> cells;
        cells.reserve(shown.size());
        for (const int column : shown) cells.push_back(register_->textOf(row, column));
        if (!wanted.in(fmt::format("{}", fmt::join(cells, " ")))) return goOn();
        if (arguments_.json) {
            surroundings_.out << std::exchange(separator, ",\n") << dumped(rowJson(row));
            return goOn();
        }
        table.add(std::move(cells));
        if (++onPage % kPage == 0) table.printAndEmpty(surroundings_.out);
        return goOn();
    });
    if (arguments_.json) {
        surroundings_.out << (separator[0] == '[' ? "[]\n" : "]\n");
    } else if (onPage == 0 || onPage % kPage != 0) {
        table.print(surroundings_.out);
    }
    return goOn() ? exitcode::kDone : exitcode::kCancelled;
}

/// What a column takes: for people, and for programs.
std::pair<FormKey, const char*> kindOf(FieldType type) {
    switch (type) {
        case FieldType::Boolean:
            return {text::registers::kYesNo, "yesno"};
        case FieldType::Date:
            return {text::registers::kDate, "date"};
        case FieldType::Byte:
        case FieldType::Integer:
        case FieldType::Long:
            return {text::registers::kWholeNumber, "whole"};
        case FieldType::Currency:
        case FieldType::Single:
        case FieldType::Double:
            return {text::registers::kNumber, "number"};
        case FieldType::Text:
        case FieldType::Memo:
            break;
    }
    return {text::registers::kText, "text"};
}

int RegisterCommand::columns(Words /*words*/) {
    TextTable table({formText(text::registers::kColumn), formText(text::registers::kKey),
                     formText(text::registers::kKind), formText(text::registers::kLength),
                     formText(text::registers::kTakenFrom)});
    Json list = Json::array();
    for (const RegisterColumn& column : register_->columns()) {
        const RegisterDefinition* named = column.refersTo();
        const std::string from = named == nullptr ? std::string() : formText(named->title);
        const std::string key = column.key     ? formText(text::registers::kIsKey)
                                : column.fixed ? formText(text::registers::kIsKept)
                                               : std::string();
        const std::string length = column.size > 0 ? fmt::format("{}", column.size) : std::string();
        const bool same = column.field == column.caption;
        table.add({same ? column.field : fmt::format("{} ({})", column.field, column.caption), key,
                   formText(kindOf(column.type).first), length, from});
        list.push_back({{"column", column.field},
                        {"caption", column.caption},
                        {"key", column.key},
                        {"fixed", column.fixed},
                        {"kind", kindOf(column.type).second},
                        {"length", column.size},
                        {"register", named == nullptr ? Json() : Json(named->name)}});
    }
    if (arguments_.json) {
        surroundings_.out << list.dump(2) << '\n';
    } else {
        table.print(surroundings_.out);
    }
    return exitcode::kDone;
}

std::optional<Words> RegisterCommand::keyOf(Words words) {
    const auto keys = static_cast<std::size_t>(register_->keys());
    if (words.size() >= keys) return words.first(keys);
    std::vector<std::string> names;
    for (std::size_t key = 0; key < keys; ++key) names.push_back(register_->columns()[key].caption);
    stop(session_.text(text::registers::kGiveKey, fmt::format("{}", fmt::join(names, ", "))));
    return std::nullopt;
}

std::optional<RegisterRow> RegisterCommand::rowOf(Words words) {
    const std::optional<Words> key = keyOf(words);
    if (!key) return std::nullopt;
    auto row = register_->find(*key);
    if (!row) tell(rowName({key->begin(), key->end()}), {{.what = RegisterProblem::What::NotThere}});
    return row;
}

int RegisterCommand::show(Words words) {
    const std::optional<RegisterRow> row = rowOf(words);
    if (!row) return exitcode::kStopped;
    if (arguments_.json) {
        surroundings_.out << rowJson(*row).dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
        return exitcode::kDone;
    }
    for (int column = 0; column < static_cast<int>(register_->columns().size()); ++column) {
        const std::string text = register_->textOf(*row, column);
        if (text.empty()) continue;
        surroundings_.out << fmt::format("{}: {}\n", register_->column(column).caption, printable(text, text.size()));
    }
    return exitcode::kDone;
}

// Writing.

int RegisterCommand::tell(const std::string& row, const std::vector<RegisterProblem>& problems) {
    for (const RegisterProblem& problem : problems) stop(problemText(session_.texts, *register_, row, problem));
    return exitcode::kStopped;
}

/// COLUMN=VALUE: what a value is depends on its row in the settings.
std::optional<RegisterValues> RegisterCommand::valuesOf(const RegisterRow& row, Words words) {
    RegisterValues values;
    std::vector<RegisterProblem> problems;
    for (const std::string& word : words) {
        const std::size_t sign = word.find('=');
        const int column = register_->columnNamed(word.substr(0, sign));
        if (column < 0) {
            stop(session_.text(text::registers::kNoColumn, word.substr(0, sign)));
            return std::nullopt;
        }
        if (auto problem = register_->valueOf(row, column, word.substr(sign + 1), values[column]))
            problems.push_back(std::move(*problem));
    }
    if (problems.empty()) return values;
    tell(rowName(register_->keyOf(row)), problems);
    return std::nullopt;
}

int RegisterCommand::endRecord(RecordedWriting& writing, const char* outcome, const WritingCounts& counts) {
    writing.end(outcome, counts);
    if (!writing.failure()) return exitcode::kDone;
    surroundings_.err << session_.text(text::registers::kNotRecorded, session_.explain(*writing.failure())) << '\n';
    return exitcode::kPassedOver;
}

int RegisterCommand::record(const std::string& row, WritingCounts& counts, ModuleKey done,
                            const std::function<std::vector<RegisterProblem>()>& write) {
    RecordedWriting writing(*sql().FtgDB, folder_, headOfWriting(sql(), session_.texts, *register_, company_));
    std::vector<RegisterProblem> problems;
    try {
        problems = write();
    } catch (...) {
        writing.end("stopped", {});
        throw;
    }
    if (!problems.empty()) {
        writing.end("stopped", {});
        return tell(row, problems);
    }
    counts.rows = 1;
    const int code = endRecord(writing, "completed", counts);
    surroundings_.out << session_.text(counts.written() == 0 ? text::registers::kSame : done, row) << '\n';
    return code;
}

int RegisterCommand::set(Words words) {
    const std::optional<Words> key = keyOf(words);
    if (!key) return exitcode::kStopped;
    for (const std::string& word : words.subspan(key->size())) {
        if (word.find('=') == std::string::npos) return misused(session_.text(text::registers::kGiveValue, word));
    }
    const std::string name = rowName({key->begin(), key->end()});
    const std::optional<RegisterRow> there = register_->find(*key);
    RegisterRow row = there ? *there : register_->newRow();
    WritingCounts counts;
    if (there) {
        const std::optional<RegisterValues> values = valuesOf(row, words.subspan(key->size()));
        if (!values) return exitcode::kStopped;
        const auto differs = [&](const auto& one) {
            return row.cells[static_cast<std::size_t>(one.first)] != one.second;
        };
        counts.changed = std::ranges::any_of(*values, differs) ? 1 : 0;
        return record(name, counts, text::registers::kRowChanged, [&] { return register_->change(row, *values); });
    }
    if (!register_->takesRows()) return tell(name, {{.what = RegisterProblem::What::NotThere}});
    RegisterValues values;
    std::vector<RegisterProblem> problems;
    for (int column = 0; column < register_->keys(); ++column) {
        Value& value = values[column];
        if (auto problem = register_->valueOf(row, column, (*key)[static_cast<std::size_t>(column)], value))
            problems.push_back(std::move(*problem));
        row.cells[static_cast<std::size_t>(column)] = value;
    }
    if (!problems.empty()) return tell(name, problems);
    const std::optional<RegisterValues> others = valuesOf(row, words.subspan(key->size()));
    if (!others) return exitcode::kStopped;
    for (const auto& [column, value] : *others) values.try_emplace(column, value);
    counts.added = 1;
    return record(name, counts, text::registers::kAdded, [&] { return register_->add(values); });
}

int RegisterCommand::remove(Words words) {
    const std::optional<RegisterRow> row = rowOf(words);
    if (!row) return exitcode::kStopped;
    WritingCounts counts;
    counts.removed = 1;
    return record(rowName(register_->keyOf(*row)), counts, text::registers::kRemoved,
                  [&] { return register_->remove(*row); });
}

// Files.

int RegisterCommand::unfit(const UnfitFile& unfit) {
    constexpr ModuleKey kTexts[] = {text::registers::kNoHeadings, text::registers::kNoKey, text::registers::kNoColumn,
                                    text::registers::kNoHeading, text::registers::kTwice};
    return stop(session_.text(kTexts[static_cast<std::size_t>(unfit.what)], unfit.about));
}

int RegisterCommand::import(Words words) {
    if (words.size() != 1)
        return misused(session_.texts.FormulärSträngMed1(text::registers::kGive, formText(text::registers::kFile)));
    std::vector<ColumnBinding> bindings;
    for (const std::string& word : arguments_.columns) {
        const std::size_t sign = word.rfind('=');
        if (sign == std::string::npos) return misused(session_.text(text::registers::kGiveValue, word));
        bindings.push_back({word.substr(0, sign), word.substr(sign + 1)});
    }
    const fs::path file = fs::absolute(words[0]).lexically_normal();
    try {
        RegisterReader reader(*register_, sql(), file, bindings);
        reader.cancelled = [this] { return !goOn(); };
        std::optional<RecordedWriting> writing;
        RegisterImport import;
        int code = exitcode::kDone;
        if (arguments_.dryRun) {
            import = reader.tryOut();
        } else {
            RunHeader header = headOfWriting(sql(), session_.texts, *register_, company_);
            header.priceFile.path = file.string();
            writing.emplace(*sql().FtgDB, folder_, std::move(header));
            try {
                import = reader.read();
            } catch (...) {
                writing->end("stopped", reader.soFar().counts);
                throw;
            }
            code = endRecord(*writing, import.cancelled ? "cancelled" : "completed", import.counts);
        }
        if (arguments_.json) {
            surroundings_.out << importJson(import).dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
        } else {
            print(import);
        }
        if (import.cancelled) return exitcode::kCancelled;
        return import.rejected > 0 ? exitcode::kPassedOver : code;
    } catch (const UnfitFile& fault) {
        return unfit(fault);
    }
}

void RegisterCommand::print(const RegisterImport& import) {
    const auto say = [this](ModuleKey label, const std::string& value) {
        surroundings_.out << fmt::format("{}: {}\n", session_.text(label), value);
    };
    const auto names = [](const std::vector<std::string>& list) {
        const std::string text = fmt::format("{}", fmt::join(list, ", "));
        return printable(text, text.size());
    };
    say(text::registers::kColumnsRead, names(import.columns));
    if (!import.leftOut.empty()) say(text::registers::kColumnsLeftOut, names(import.leftOut));
    say(text::registers::kRowsRead, fmt::format("{}", import.counts.rows));
    say(text::registers::kRowsAdded, fmt::format("{}", import.counts.added));
    say(text::registers::kRowsChanged, fmt::format("{}", import.counts.changed));
    say(text::registers::kRowsSame, fmt::format("{}", import.same));
    say(text::registers::kRowsRejected, fmt::format("{}", import.rejected));
    for (const RegisterImport::Rejected& one : import.reasons) {
        surroundings_.err << problemText(session_.texts, *register_, fmt::format("{}", one.row), one.problem) << '\n';
    }
    if (arguments_.dryRun) surroundings_.out << session_.text(text::registers::kTriedOut) << '\n';
}

Json RegisterCommand::importJson(const RegisterImport& import) {
    Json reasons = Json::array();
    for (const RegisterImport::Rejected& one : import.reasons) {
        const int column = one.problem.column;
        reasons.push_back(
            {{"row", one.row},
             {"column", column < 0 ? Json() : Json(register_->column(column).field)},
             {"text", one.problem.text},
             {"reason", problemText(session_.texts, *register_, fmt::format("{}", one.row), one.problem)}});
    }
    return {{"dry_run", arguments_.dryRun}, {"columns", import.columns},    {"left_out", import.leftOut},
            {"rows", import.counts.rows},   {"added", import.counts.added}, {"changed", import.counts.changed},
            {"same", import.same},          {"rejected", import.rejected},  {"reasons", reasons},
            {"cancelled", import.cancelled}};
}

int RegisterCommand::exportFile(Words words) {
    if (words.size() != 1)
        return misused(session_.texts.FormulärSträngMed1(text::registers::kGive, formText(text::registers::kFile)));
    const std::int64_t rows = writeRegister(*register_, fs::absolute(words[0]).lexically_normal());
    surroundings_.out << session_.text(text::registers::kExported, fmt::format("{}", rows)) << '\n';
    return exitcode::kDone;
}

}  // namespace

int registersCommand(const RegistersArguments& arguments, const Surroundings& surroundings) {
    Session session(surroundings);
    const bool english = session.texts.language() == "EN";
    TextTable table({session.texts.FormulärSträng(text::registers::kRegister),
                     session.texts.FormulärSträng(text::registers::kContents)});
    Json list = Json::array();
    for (const RegisterDefinition& one : registerDefinitions()) {
        const std::string title = session.texts.FormulärSträng(one.title);
        table.add({std::string(english ? one.name : one.namn), title});
        list.push_back({{"register", one.name}, {"swedish", one.namn}, {"title", title}});
    }
    if (arguments.json) {
        surroundings.out << list.dump(2) << '\n';
    } else {
        table.print(surroundings.out);
    }
    return exitcode::kDone;
}

int registerCommand(const RegisterArguments& arguments, const Surroundings& surroundings) {
    return RegisterCommand(arguments, surroundings).run();
}

}  // namespace kolmera::cli
