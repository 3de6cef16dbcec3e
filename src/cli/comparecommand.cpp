#include "cli/comparecommand.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <ostream>

#include "cli/printablelines.h"
#include "cli/runchoice.h"
#include "cli/session.h"
#include "history/changetable.h"
#include "history/comparison.h"
#include "history/runfolder.h"
#include "history/warnings.h"
#include "lang/keys/changes.h"
#include "lang/keys/history.h"
#include "lang/keys/terminal.h"
#include "platform/lettercase.h"
#include "platform/outputfile.h"
#include "platform/printable.h"
#include "platform/spreadsheet/workbook.h"

namespace kolmera::cli {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kKeyCharacters = 50;

class Comparison {
  public:
    Comparison(Session& session, const RunFolder& folder, const RunHeader& before, const RunHeader& now)
        : session_(session),
          comparison_(RecordReader(folder.file(before.id)), RecordReader(folder.file(now.id))),
          before_(before),
          now_(now) {}

    [[nodiscard]] bool possible() const { return comparison_.comparable(); }
    void print(std::ostream& out);
    void printJson(std::ostream& out);
    void save(const std::filesystem::path& file);

  private:
    void forEach(const std::function<void(bool isNew, std::string_view key)>& take) {
        for (const bool isNew : {true, false}) {
            const auto takeOne = [&](std::string_view key) {
                take(isNew, key);
                return true;
            };
            isNew ? comparison_.forEachAdded(takeOne) : comparison_.forEachGone(takeOne);
        }
    }
    [[nodiscard]] std::string kind(bool isNew) {
        return session_.text(isNew ? text::changes::kAdded : text::history::kGone);
    }

    Session& session_;
    FileComparison comparison_;
    const RunHeader& before_;
    const RunHeader& now_;
};

void Comparison::print(std::ostream& terminal) {
    PrintableStream out(terminal);
    out << before_.id << " > " << now_.id << " (" << now_.job << ")\n"
        << fmt::format("{}: {}\n", kind(true), comparison_.added())
        << fmt::format("{}: {}\n", kind(false), comparison_.gone());
    forEach(
        [&](bool isNew, std::string_view key) { out << (isNew ? "+ " : "- ") << printable(key, key.size()) << '\n'; });
}

/// An article has a line of its own.
void Comparison::printJson(std::ostream& out) {
    out << "{\"before\":" << dumped(runJson(before_)) << ",\n\"run\":" << dumped(runJson(now_)) << ",\n\"new\":[";
    bool inNew = true;
    const char* separator = "\n";
    forEach([&](bool isNew, std::string_view key) {
        if (inNew && !isNew) {
            out << "],\n\"gone\":[";
            separator = "\n";
        }
        inNew = isNew;
        out << separator << dumped(Json(key));
        separator = ",\n";
    });
    out << (inNew ? "],\n\"gone\":[]}\n" : "]}\n");
}

void Comparison::save(const std::filesystem::path& file) {
    if (lowerCase(file.extension().string()) != ".xlsx") {
        OutputFile output(file);
        forEach([&](bool isNew, std::string_view key) {
            const std::string cells[] = {kind(isNew), std::string(key)};
            output.write(tabbedLine(cells, session_.state.locale) + "\r\n");
        });
        return output.finish();
    }
    std::vector<std::pair<bool, std::string>> rows;
    forEach([&](bool isNew, std::string_view key) { rows.emplace_back(isNew, key); });
    std::size_t at = 0;
    const SheetColumn columns[] = {{session_.text(text::changes::kKindHeading), FieldType::Text, kKeyCharacters},
                                   {session_.text(text::changes::kProductHeading), FieldType::Text, kKeyCharacters}};
    addSheet(file, session_.text(text::changes::kSheet), columns, [&]() -> std::optional<std::vector<Value>> {
        if (at == rows.size()) return std::nullopt;
        const auto& [isNew, key] = rows[at++];
        return std::vector<Value>{kind(isNew), key};
    });
}

}  // namespace

int compareCommand(const CompareArguments& arguments, const Surroundings& surroundings) {
    Session session(surroundings, arguments.dataFolder);
    if (!session.hasDataFolder(surroundings.err)) return exitcode::kStopped;
    const RunFolder folder(session.state.dataFolder());
    const std::vector<RunHeader> runs = listedRuns(session, folder, surroundings.err);
    const std::optional<RunHeader> now = chosenRun(session, runs, arguments.run, surroundings.err);
    if (!now) return exitcode::kStopped;
    std::optional<RunHeader> before;
    if (!arguments.with.empty()) {
        before = chosenRun(session, runs, arguments.with, surroundings.err);
        if (!before) return exitcode::kStopped;
    } else if (const RunHeader* previous = previousRun(runs, *now)) {
        before = *previous;
    }
    std::optional<Comparison> comparison;
    if (before) comparison.emplace(session, folder, *before, *now);
    if (!comparison || !comparison->possible()) {
        surroundings.err << session.text(text::terminal::kError) << ' '
                         << session.text(text::history::kNothingToCompare, now->id) << '\n';
        return exitcode::kStopped;
    }
    if (!arguments.output.file.empty()) comparison->save(arguments.output.file);
    arguments.output.json ? comparison->printJson(surroundings.out) : comparison->print(surroundings.out);
    return exitcode::kDone;
}

}  // namespace kolmera::cli
