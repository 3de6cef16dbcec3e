#include "registers/registereditor.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <utility>

#include "lang/errortext.h"
#include "lang/keys/registers.h"
#include "lang/keys/registerswindow.h"
#include "platform/searchwords.h"
#include "registers/registertexts.h"

namespace kolmera {

RegisterEditor::RegisterEditor(SqlLayer& sql, LanguageTexts& texts, const std::filesystem::path& dataFolder,
                               std::string company)
    : sql_(sql), texts_(texts), folder_(dataFolder), company_(std::move(company)) {}

void RegisterEditor::open(const RegisterDefinition& definition) {
    rows_.clear();
    shown_.clear();
    register_.emplace(definition, sql_, texts_);
    for (int column = 0; column < static_cast<int>(register_->columns().size()); ++column) {
        if (register_->column(column).listed) shown_.push_back(column);
    }
}

void RegisterEditor::read(std::string_view words) {
    const SearchWords wanted(words);
    rows_.clear();
    more_ = false;
    register_->forEachRow([&](const RegisterRow& row) {
        if (!wanted.empty()) {
            std::string text;
            for (const int column : shown_) text.append(register_->textOf(row, column)).append(" ");
            if (!wanted.in(text)) return true;
        }
        more_ = rows_.size() >= kMostRows;
        if (!more_) rows_.push_back(row);
        return !more_;
    });
}

bool RegisterEditor::canEdit(const RegisterRow& row, int column, bool isNew) const {
    const RegisterColumn cell = register_->cell(row, column);
    return !cell.fixed && (isNew || !cell.key);
}

std::string RegisterEditor::check(const RegisterRow& row, int column, std::string& text) {
    const std::vector<RegisterProblem> problems = register_->problemsOfText(row, column, text);
    if (!problems.empty()) return fieldText(texts_, *register_, problems.front());
    RegisterRow written = row;
    Value& value = written.cells.at(static_cast<std::size_t>(column));
    if (!text.empty() && !register_->valueOf(row, column, text, value)) text = register_->textOf(written, column);
    return {};
}

std::vector<RegisterEditor::Fault> RegisterEditor::save(const RegisterRow& shown, bool isNew,
                                                        const std::map<int, std::string>& texts) {
    RegisterValues values;
    std::vector<RegisterProblem> problems;
    RegisterRow named = shown;
    for (const auto& [column, text] : texts) {
        if (!isNew && text == register_->textOf(shown, column)) continue;
        if (isNew && text.empty() && !register_->column(column).key) continue;  // the column's default
        Value& value = values[column];
        if (auto problem = register_->valueOf(shown, column, text, value)) problems.push_back(std::move(*problem));
        if (isNew) named.cells.at(static_cast<std::size_t>(column)) = value;
    }
    if (!problems.empty()) return faults(named, problems);
    if (values.empty()) return {};
    WritingCounts counts{.rows = 1};
    (isNew ? counts.added : counts.changed) = 1;
    const auto wrong = write([&] { return isNew ? register_->add(values) : register_->change(shown, values); }, counts);
    return faults(named, wrong);
}

std::vector<std::string> RegisterEditor::remove(const RegisterRow& shown) {
    std::vector<std::string> told;
    for (const RegisterProblem& problem :
         write([&] { return register_->remove(shown); }, {.rows = 1, .added = 0, .changed = 0, .removed = 1}))
        told.push_back(problemText(texts_, *register_, rowName(register_->keyOf(shown)), problem));
    return told;
}

std::vector<RegisterProblem> RegisterEditor::write(const std::function<std::vector<RegisterProblem>()>& write,
                                                   const WritingCounts& counts) {
    RecordedWriting writing(*sql_.FtgDB, folder_, headOfWriting(sql_, texts_, *register_, company_));
    std::vector<RegisterProblem> problems;
    try {
        problems = write();
    } catch (...) {
        writing.end("stopped", {});
        throw;
    }
    writing.end(problems.empty() ? "completed" : "stopped", problems.empty() ? counts : WritingCounts{});
    return problems;
}

std::vector<RegisterEditor::Fault> RegisterEditor::faults(const RegisterRow& row,
                                                          const std::vector<RegisterProblem>& problems) {
    std::vector<Fault> faults;
    for (const RegisterProblem& problem : problems) {
        const bool ofField = problem.column >= 0;
        faults.push_back(
            {problem.column, ofField ? fieldText(texts_, *register_, problem)
                                     : problemText(texts_, *register_, rowName(register_->keyOf(row)), problem)});
    }
    return faults;
}

// Files.

RegisterEditor::Told RegisterEditor::told(const RegisterImport& import) {
    Told told;
    std::string& text = told.text;
    const auto say = [&](ModuleKey label, const std::string& value) {
        text += fmt::format("{}: {}\n", texts_.ModulText(label), value);
    };
    say(text::registers::kColumnsRead, fmt::format("{}", fmt::join(import.columns, ", ")));
    if (!import.leftOut.empty())
        say(text::registers::kColumnsLeftOut, fmt::format("{}", fmt::join(import.leftOut, ", ")));
    say(text::registers::kRowsRead, fmt::format("{}", import.counts.rows));
    say(text::registers::kRowsAdded, fmt::format("{}", import.counts.added));
    say(text::registers::kRowsChanged, fmt::format("{}", import.counts.changed));
    say(text::registers::kRowsSame, fmt::format("{}", import.same));
    say(text::registers::kRowsRejected, fmt::format("{}", import.rejected));
    for (const RegisterImport::Rejected& one : import.reasons) {
        const bool ofColumn = one.problem.column >= 0;
        told.refused.push_back({one.row, ofColumn ? register_->column(one.problem.column).caption : std::string(),
                                one.problem.text, reasonText(texts_, one.problem)});
    }
    told.done = import.counts.written() > 0;
    return told;
}

RegisterEditor::Told RegisterEditor::import(const std::filesystem::path& file, const std::vector<int>& columns,
                                            bool tryOut, const std::function<bool()>& cancelled) {
    try {
        RegisterReader reader(*register_, sql_, file, columns);
        reader.cancelled = cancelled;
        if (tryOut) {
            const RegisterImport import = reader.tryOut();
            Told told = this->told(import);
            told.done = told.done && !import.cancelled;
            return told;
        }
        RunHeader header = headOfWriting(sql_, texts_, *register_, company_);
        header.priceFile.path = file.string();
        RecordedWriting writing(*sql_.FtgDB, folder_, std::move(header));
        RegisterImport import;
        try {
            import = reader.read();
        } catch (...) {
            writing.end("stopped", reader.soFar().counts);
            throw;
        }
        writing.end(import.cancelled ? "cancelled" : "completed", import.counts);
        Told told = this->told(import);
        if (writing.failure()) {
            told.text +=
                texts_.ModulTextMed(text::registers::kNotRecorded, errorText(texts_, *writing.failure())) + "\n";
        }
        return told;
    } catch (const UnfitFile& unfit) {
        constexpr FormKey kTexts[] = {text::registerswindow::kNoHeadings, text::registerswindow::kNoKey,
                                      text::registerswindow::kNoHeadings, text::registerswindow::kNoHeadings,
                                      text::registerswindow::kTwice};
        return {.done = false,
                .text = texts_.FormulärSträngMed1(kTexts[static_cast<std::size_t>(unfit.what)], unfit.about),
                .refused = {}};
    }
}

std::string RegisterEditor::exportTo(const std::filesystem::path& file) {
    return texts_.ModulTextMed(text::registers::kExported, fmt::format("{}", writeRegister(*register_, file)));
}

}  // namespace kolmera
