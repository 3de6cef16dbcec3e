#include "discounts/lettereditor.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <utility>

#include "db/conversions.h"
#include "definitions/jobfile.h"
#include "discounts/lettermessages.h"
#include "discounts/lettertable.h"
#include "lang/errortext.h"
#include "lang/keys/company.h"
#include "lang/keys/letter.h"
#include "lang/keys/prisrab.h"
#include "platform/attempt.h"
#include "platform/lettercase.h"

namespace kolmera {
namespace fs = std::filesystem;
namespace {

constexpr std::string_view kFileEnding = ".txt";

/// Listens on behalf of the user, who is told by a report at the end.
using Reported = PassedOverSilently;

/// How many files of a folder are named `beginning`, anything, ".txt".
int countFiles(const fs::path& folder, std::string_view beginning) {
    const std::string first = upperCase(beginning);
    const std::string last = upperCase(kFileEnding);
    int count = 0;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        const std::string name = upperCase(entry->path().filename().string());
        if (name.size() >= first.size() + last.size() && name.starts_with(first) && name.ends_with(last)) ++count;
    }
    return count;
}

}  // namespace

LetterEditor::LetterEditor(StartState& state, LanguageTexts& texts, MessageBoxes& boxes, CompanyRegister& companies)
    : state_(state),
      texts_(texts),
      boxes_(boxes),
      register_(companies),
      rows_(state.locale),
      folder_(state.dataFolder()) {
    register_.waitForLock = [this] { return waitForLock(); };
}

LetterEditor::~LetterEditor() {
    closeCompany();
    register_.waitForLock = nullptr;
}

void LetterEditor::open(int JobbNr) {
    companies_ = companyList(register_, state_.dataFolder());
    if (JobbNr < 1) return;
    PassedOverSilently passedOver;
    Job job;
    attempt(passedOver, "KOLMERA.TXT", [&] { job = JobFile(state_.dataFolder()).read(JobbNr).value_or(Job{}); });
    jobsSupplier_ = trimmed(job.supplier);
    const int row = placeOfDatabase(companies_, job.company);
    if (row >= 0) chooseCompany(row);
}

bool LetterEditor::waitForLock() {
    gaveUp_ = !keepWaiting || !keepWaiting(texts_.ModulTextMed(text::company::kWaiting, FtgFil_));
    return !gaveUp_;
}

/// Covers statements that may have to wait for a lock.
class LetterEditor::Patience {
  public:
    explicit Patience(LetterEditor& editor) : editor_(editor) { editor.gaveUp_ = false; }
    ~Patience() {
        if (editor_.waited) editor_.waited();
    }
    Patience(const Patience&) = delete;
    Patience& operator=(const Patience&) = delete;

  private:
    LetterEditor& editor_;
};

/// Runs a statement; a failure is shown, with what could not be done in front of it, unless the user gave up waiting.
/// Returns whether it succeeded.
bool LetterEditor::tried(ModuleKey failureText, const std::function<void()>& statement) {
    try {
        const Patience patience(*this);
        statement();
        return true;
    } catch (const PlatformError& error) {
        if (error.number() == errors::kLocked && gaveUp_ && keepWaiting) return false;
        boxes_.MeddelandeVarning(texts_.ModulText(failureText) + "\r\n\r\n" + errorText(texts_, error));
        return false;
    }
}

// Company and supplier.

// What the company showed must go before it: another one may not be opened under open recordsets.
void LetterEditor::closeCompany() {
    closeLetter();
    suppliers_.clear();
    supplierRow_ = -1;
    state_.sql.FtgDB.reset();
}

bool LetterEditor::chooseCompany(int row) {
    closeCompany();
    companyRow_ = row;
    FtgFil_ = companies_.at(static_cast<std::size_t>(row)).database;
    {
        const Patience patience(*this);
        if (!register_.ÖppnaDatabas(FtgFil_)) return false;
    }
    tried(text::letter::kCannotShow, [this] { suppliers_ = readSuppliers(state_.sql); });
    if (!jobsSupplier_.empty()) chooseSupplier(rowOfSupplier(suppliers_, jobsSupplier_));
    return true;
}

void LetterEditor::chooseSupplier(int row) {
    closeLetter();
    supplierRow_ = row >= 0 && row < static_cast<int>(suppliers_.size()) ? row : -1;
    if (supplierRow_ >= 0) openLetter();
}

const SupplierRow& LetterEditor::supplier() const { return suppliers_.at(static_cast<std::size_t>(supplierRow_)); }

std::string LetterEditor::captionSuffix() const {
    return supplierRow_ < 0 ? std::string() : " - " + supplier().number + " - " + supplier().searchName;
}

void LetterEditor::closeLetter() {
    letter_.reset();
    rows_.clear();
    row_ = -1;
    clearFields();
}

void LetterEditor::openLetter() {
    closeLetter();
    tried(text::letter::kCannotShow, [this] {
        const std::string statement = lettertable::letterOf(supplier().number);
        letter_ = state_.sql.SQLÖppnaRs(statement, RecordsetType::Dynaset);
        // All values at once: the dynaset asks for every value anew.
        const auto all = state_.sql.SQLÖppnaRs(statement, RecordsetType::Snapshot);
        for (; !all->eof(); all->moveNext()) rows_.append(*all);
    });
}

// The edit fields.

void LetterEditor::clearFields() {
    fields_ = {};
    total_.clear();
    changed_ = unsaved_ = false;
}

void LetterEditor::chooseRow(int row) {
    row_ = row >= 0 && row < rows_.count() ? row : -1;
    if (row_ < 0 || !letter_) return;
    tried(text::letter::kCannotShow, [this] {
        letter_->findFirst(fmt::format("[ID] = {}", rows_.id(row_)));
        if (!letter_->noMatch()) showGroup();
    });
}

/// Fills the fields from the current record.
void LetterEditor::showGroup() {
    for (int number = 0; number < kFields; ++number) {
        const int column = lettertable::kCode + number;
        const FieldType type = letter_->fields().at(static_cast<std::size_t>(column)).type;
        fields_.at(static_cast<std::size_t>(number)) = TillText(letter_->value(column), type, state_.locale);
    }
    total_ = TotalRabattText();
    changed_ = unsaved_ = false;
}

void LetterEditor::edit(int number, std::string text) {
    fields_.at(static_cast<std::size_t>(number)) = std::move(text);
    changed_ = unsaved_ = true;
}

void LetterEditor::leave(int number) {
    if (!std::exchange(changed_, false)) return;
    if (number != 0) {
        total_ = TotalRabattText();
        return;
    }
    tried(text::letter::kCannotShow, [this] {
        if (!find(field(0))) return;
        row_ = rows_.rowOf(lettertable::idOf(*letter_));
        showGroup();
    });
}

std::string LetterEditor::TotalRabattText() const {
    std::array<float, kDiscountSteps> discounts{};
    for (int step = 0; step < kDiscountSteps; ++step) {
        discounts.at(static_cast<std::size_t>(step)) = TillSng(field(step + 1), state_.locale);
    }
    return state_.locale.formatFixed(kolmera::TotalRabatt(discounts), 2);
}

/// Makes the supplier's group of that code the current record; false when there is none.
bool LetterEditor::find(std::string_view code) {
    if (!letter_ || code.empty()) return false;
    letter_->findFirst("Rabattgrupp = " + SqlLayer::SQLText(code));
    return !letter_->noMatch();
}

/// The first discount field whose text is neither empty nor a number.
std::optional<int> LetterEditor::wrongDiscount() const {
    for (int number = 1; number < kFields; ++number) {
        if (!trimmed(field(number)).empty() && !state_.locale.parseNumber(field(number))) return number;
    }
    return std::nullopt;
}

std::optional<int> LetterEditor::Spara() {
    if (trimmed(field(0)).empty()) {
        // Nothing was asked for, but a discount that is typed must not look saved.
        if (std::all_of(fields_.begin() + 1, fields_.end(), [](const auto& text) { return text.empty(); })) return {};
        boxes_.MeddelandeVarning(texts_.ModulText(text::letter::kNoCode));
        return 0;
    }
    if (!canRead()) return std::nullopt;
    if (const auto wrong = wrongDiscount()) {
        boxes_.MeddelandeVarning(texts_.ModulTextMed(text::letter::kNoNumber, field(*wrong)));
        return wrong;
    }
    for (int number = 1; number < kFields; ++number) {
        if (!mayExceedPrice(number)) return number;
    }
    if (!tried(text::letter::kCannotSave, [this] { saveGroup(); })) {
        letter_->cancelUpdate();
        return std::nullopt;
    }
    clearFields();
    return 0;
}

/// Whether a discount is at most 100 per cent, or meant to be more.
bool LetterEditor::mayExceedPrice(int number) {
    if (!isBeyondPrice(TillDbl(field(number), state_.locale))) return true;
    return boxes_.MeddelandeJaNejNej(texts_.ModulTextMed(text::letter::kAskBeyond, field(number))) == Answer::Yes;
}

void LetterEditor::saveGroup() {
    const bool exists = find(field(0));
    if (exists) {
        letter_->edit();
    } else {
        letter_->addNew();
        letter_->set(lettertable::kSupplier, supplier().number);
    }
    letter_->set(lettertable::kCode, field(0));
    for (int number = 1; number < kFields; ++number) {
        const auto discount = state_.locale.parseNumber(field(number));
        letter_->set(lettertable::kCode + number, discount ? Value(*discount) : Value(Null()));
    }
    letter_->update();
    if (!exists) letter_->moveToModified();
    if (const int old = rows_.rowOf(lettertable::idOf(*letter_)); old >= 0) rows_.remove(old);
    rows_.append(*letter_);
    row_ = rows_.count() - 1;
}

void LetterEditor::Avbryt() { clearFields(); }

/// Files may have been read in with a group that has no code.
bool LetterEditor::showsNamelessGroup() const {
    return field(0).empty() && row_ >= 0 && row_ < rows_.count() && rows_.text(row_, 0).empty();
}

/// Makes the group to delete the current record; false when there is none.
bool LetterEditor::findGroupToDelete() {
    if (!showsNamelessGroup()) return find(field(0));
    letter_->findFirst(fmt::format("[ID] = {}", rows_.id(row_)));
    return !letter_->noMatch();
}

void LetterEditor::TaBort() {
    if (!canDelete()) return;
    tried(text::letter::kCannotDelete, [this] {
        if (!findGroupToDelete()) return;
        const std::string question = showsNamelessGroup()
                                         ? texts_.ModulText(text::letter::kAskToDeleteNameless)
                                         : texts_.FormulärSträngMed1(text::prisrab::kAskToDelete, field(0));
        if (boxes_.MeddelandeJaNejNej(question, texts_.FormulärSträng(text::prisrab::kDeleteTitle)) != Answer::Yes)
            return;
        const int row = rows_.rowOf(lettertable::idOf(*letter_));
        letter_->remove();
        if (row >= 0) rows_.remove(row);
        row_ = -1;
        clearFields();
    });
}

// Files.

bool LetterEditor::canRead() {
    if (letter_) return true;
    boxes_.MeddelandeInfo(texts_.ModulText(text::letter::kChooseSupplier));
    return false;
}

void LetterEditor::LäsFil(const fs::path& file) {
    if (!canRead()) return;
    folder_ = file.parent_path();
    Reported passedOver;
    LetterExchange exchange(state_.sql, supplier().number, passedOver);
    exchange.cancelled = [this] { return gaveUp_; };
    if (!mayReplace(exchange, file)) return;
    const std::string title = texts_.FormulärSträng(text::prisrab::kReadTitle);
    LetterRead report;
    closeLetter();
    tried(text::letter::kCannotSave, [&] {
        const Hourglass reading(boxes_.port());
        report = exchange.replaceFrom(file);
    });
    openLetter();
    const std::vector<std::string> lines = remarks(texts_, report);
    if (!lines.empty()) boxes_.MeddelandeVarning(fmt::format("{}", fmt::join(lines, "\r\n\r\n")), title);
}

/// Whether the file can be read to its end, and the user agrees to lose the letter that is there.
bool LetterEditor::mayReplace(LetterExchange& exchange, const fs::path& file) {
    const std::string title = texts_.FormulärSträng(text::prisrab::kReadTitle);
    try {
        if (usableLines(exchange, file) == 0) {
            boxes_.MeddelandeVarning(noGroups(texts_, file), title);
            return false;
        }
    } catch (const PlatformError& error) {
        boxes_.MeddelandeVarning(readingFailed(texts_, file, error), title);
        return false;
    }
    return rows_.empty() ||
           boxes_.MeddelandeOKAvbryt(texts_.FormulärSträng(text::prisrab::kAskToReplace), title) == Answer::OK;
}

std::int64_t LetterEditor::usableLines(LetterExchange& exchange, const fs::path& file) {
    const Patience patience(*this);
    const Hourglass checking(boxes_.port());
    return exchange.usableLines(file);
}

fs::path LetterEditor::proposedFile() const {
    const std::string beginning = texts_.FormulärSträng(text::prisrab::kFileName);
    return folder_ / fmt::format("{}{}{}", beginning, countFiles(folder_, beginning) + 1, kFileEnding);
}

void LetterEditor::SkapaFil(const fs::path& file) {
    if (!canWrite()) return;
    folder_ = file.parent_path();
    const std::string title = texts_.FormulärSträng(text::prisrab::kWriteTitle);
    Reported passedOver;
    try {
        LetterWritten report;
        {
            const Patience patience(*this);
            const Hourglass writing(boxes_.port());
            report = LetterExchange(state_.sql, supplier().number, passedOver).writeTo(file);
        }
        for (const std::string& line : remarks(texts_, report)) boxes_.MeddelandeVarning(line, title);
    } catch (const PlatformError& error) {
        boxes_.MeddelandeVarning(writingFailed(texts_, file, error), title);
    }
}

}  // namespace kolmera
