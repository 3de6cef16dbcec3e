#include "definitions/jobeditor.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "db/conversions.h"
#include "definitions/jobcopy.h"
#include "definitions/pricefilepath.h"
#include "definitions/savemessages.h"
#include "lang/errortext.h"
#include "lang/keys/copies.h"
#include "lang/keys/definitions.h"
#include "lang/keys/prisstyr.h"
#include "platform/attempt.h"
#include "platform/encodings.h"
#include "platform/lettercase.h"

namespace kolmera {
namespace {

constexpr std::string_view kNextParagraph = "\r\n\r\n";

bool empty(const std::string& text) { return trimmed(text).empty(); }

}  // namespace

JobEditor::JobEditor(StartState& state, LanguageTexts& texts, MessageBoxes& boxes, CompanyRegister& companies)
    : couplings(texts, boxes, state.dataFolder()), state_(state), texts_(texts), boxes_(boxes), register_(companies) {}

JobEditor::~JobEditor() { closeCompany(); }

void JobEditor::open(int JobbNr, bool ÄrStandardJobb) {
    tradeFormat_ = ÄrStandardJobb;
    companies_ = companyList(register_, state_.dataFolder());
    PassedOverSilently passedOver;
    attempt(passedOver, "KOLMERA.TXT", [&] { shown_ = JobFile(state_.dataFolder()).read(JobbNr); });
    job = shown_.value_or(Job{});
    couplings.setJob(job.name);
    if (!tradeFormat_) {
        readMasks();
        const auto mask = std::ranges::find(masks_, job.mask, &Mask::Namn);
        maskRow_ = mask == masks_.end() ? -1 : static_cast<int>(mask - masks_.begin());
    }
    const int row = placeOfDatabase(companies_, job.company.empty() ? state_.StandardFöretag : job.company);
    if (row >= 0) chooseCompany(row);
    readLimits();
    begun_ = job;
    begunMask_ = chosenMaskName();
}

void JobEditor::readLimits() {
    try {
        if (shown_) {
            limits = JobOptionsFile(state_.dataFolder()).limits(shown_->name);
            source = JobOptionsFile(state_.dataFolder()).source(shown_->name);
        }
    } catch (const PlatformError& error) {
        boxes_.MeddelandeVarning(texts_.ModulTextMed(text::limits::kUnreadable, kJobOptionsFile) + "\r\n\r\n" +
                                 errorText(texts_, error));
    }
    begunLimits_ = limits;
    begunSource_ = source;
}

TargetLayout JobEditor::target(std::size_t columns) const {
    TargetLayout layout = sampleLayout(chosenWholeMask(), columns);
    layout.decimalSign = state_.locale.decimalSign();
    return layout;
}

std::optional<WholeMask> JobEditor::chosenWholeMask() const {
    std::optional<WholeMask> mask;
    PassedOverSilently passedOver;
    attempt(passedOver, "PRISMASK.TXT", [&] { mask = MaskFile(state_.dataFolder()).find(chosenMaskName()); });
    return mask;
}

std::filesystem::path JobEditor::sampleFor(const WholeMask& mask) {
    if (!source) return priceFile();
    if (editedMask_ != mask) {
        editedMask_.reset();
        editedSample_ = convertSample(priceFile(), *source, mask, state_.dataFolder());
        editedMask_ = mask;
    }
    return editedSample_.path;
}

JobOptionsChange JobEditor::changedOptions() {
    if (source && !tradeFormat_) {
        if (const auto mask = chosenWholeMask()) bindToHeadings(*source, *mask);
    }
    JobOptionsChange change;
    if (limits != begunLimits_) change.limits = limits;
    if (source != begunSource_) change.source = source;
    return change;
}

std::optional<std::filesystem::path> JobEditor::foundFile() const {
    std::error_code unreadable;
    std::filesystem::path file = priceFile();
    if (empty(job.priceFile) || !std::filesystem::is_regular_file(file, unreadable)) return std::nullopt;
    return file;
}

std::string JobEditor::caption() const {
    return job.number == 0 ? std::string() : texts_.FormulärSträng(text::prisstyr::kCaption) + job.name;
}

std::filesystem::path JobEditor::priceFile() const {
    return findPriceFile(job.priceFile, state_.drives, state_.dataFolder(), state_.programFolder());
}

std::filesystem::path JobEditor::fileFolder() const {
    const std::filesystem::path folder = priceFile().parent_path();
    std::error_code unreadable;
    return std::filesystem::is_directory(folder, unreadable) ? folder : state_.dataFolder();
}

bool JobEditor::chooseCompany(int row) {
    companyRow_ = row;
    job.company = companies_.at(static_cast<std::size_t>(row)).database;
    suppliers_.clear();
    headings_.clear();
    closeCompany();
    if (!openCompany()) return false;
    PassedOverSilently passedOver;
    attempt(passedOver, job.company, [this] { readCompany(); });
    return true;
}

bool JobEditor::openCompany() { return state_.sql.FtgDB != nullptr || register_.ÖppnaDatabas(job.company); }

// What the company showed must go before it: another one may not be opened under open recordsets.
void JobEditor::closeCompany() {
    couplings.close();
    state_.sql.FtgDB.reset();
}

void JobEditor::readCompany() {
    if (!tradeFormat_) {
        suppliers_ = readSuppliers(state_.sql);
        return;
    }
    couplings.setCompany(state_.sql, job.company);
    if (isFinfo()) readHeadings();
}

void JobEditor::readHeadings() {
    headings_.push_back({0, texts_.FormulärSträng(text::prisstyr::kNoHeading)});
    const auto records =
        state_.sql.SQLÖppnaRs("SELECT * FROM Prodaltrubrik WHERE Rubrik IS NOT NULL AND Nummer < 100 ORDER BY Nummer",
                              RecordsetType::Snapshot);
    for (; !records->eof(); records->moveNext()) {
        const int number = TillLng(records->value("Nummer"), state_.locale);
        headings_.push_back(
            {number, fmt::format(" {:2} {}", number, TillText(records->value("Rubrik"), state_.locale))});
    }
}

int JobEditor::headingRow(int number) const {
    const auto found = std::ranges::find(headings_, number, &HeadingChoice::number);
    return found == headings_.end() ? 0 : static_cast<int>(found - headings_.begin());
}

std::string JobEditor::supplierCaption(std::string_view label) const {
    if (companyRow_ < 0) return std::string(label);
    return fmt::format("{} {} ({})", label, replaceAll(companyName(), "&", "&&"), properCase(job.company));
}

std::string JobEditor::couplingCaption() const {
    const std::string company = companyRow_ < 0 ? "Dorvik" : companyName();
    return texts_.FormulärSträngMed1(text::prisstyr::kCouplingCaption, job.name) + company;
}

void JobEditor::readMasks() {
    PassedOverSilently passedOver;
    masks_.clear();
    attempt(passedOver, "PRISMASK.TXT", [this] { masks_ = MaskFile(state_.dataFolder()).all(); });
}

void JobEditor::chooseMask(int row) { maskRow_ = row >= 0 && row < static_cast<int>(masks_.size()) ? row : -1; }

void JobEditor::chooseSupplier(int row) {
    if (row >= 0 && row < static_cast<int>(suppliers_.size())) {
        job.supplier = suppliers_[static_cast<std::size_t>(row)].number;
    }
}

bool JobEditor::canMakeMask() const { return companyRow_ >= 0 && !job.company.empty() && !empty(job.priceFile); }

std::optional<std::filesystem::path> JobEditor::sampleForMask(bool newMask) {
    if (!canMakeMask()) return std::nullopt;
    const std::filesystem::path sample = priceFile();
    std::error_code unreadable;
    if (!std::filesystem::is_regular_file(sample, unreadable)) {
        boxes_.MeddelandeVarning(texts_.FormulärSträngMed1(text::prisstyr::kNoSample, job.priceFile),
                                 texts_.FormulärSträng(text::prisstyr::kNoSampleTitle));
        return std::nullopt;
    }
    if (!openCompany()) return std::nullopt;
    sample_ = {};
    editedMask_.reset();
    if (!source) return sample;
    try {
        sample_ = convertSample(sample, *source, newMask ? std::nullopt : chosenWholeMask(), state_.dataFolder());
    } catch (const PlatformError& error) {
        boxes_.MeddelandeVarning(errorText(texts_, error));
        return std::nullopt;
    }
    return sample_.path;
}

bool JobEditor::maskIsAsShown() {
    if (maskRow_ < 0) return false;
    const Mask shown = masks_[static_cast<std::size_t>(maskRow_)];
    std::optional<WholeMask> stored;
    PassedOverSilently passedOver;
    attempt(passedOver, "PRISMASK.TXT", [&] { stored = MaskFile(state_.dataFolder()).read(shown.number); });
    if (stored && stored->mask == shown) return true;
    tell(PlatformError(errors::kChangedElsewhere, {}), text::definitions::kMaskChangedNothingDone, shown.Namn);
    readMasks();
    chooseMask(static_cast<int>(std::ranges::find(masks_, shown.Namn, &Mask::Namn) - masks_.begin()));
    return false;
}

void JobEditor::maskSaved(int number) {
    readMasks();
    chooseMask(number - 1);
}

std::string JobEditor::chosenMaskName() const {
    return maskRow_ < 0 ? std::string() : masks_[static_cast<std::size_t>(maskRow_)].Namn;
}

void JobEditor::tell(const PlatformError& error, ModuleKey changedElsewhere, const std::string& name) {
    tellNotSaved(error,
                 {.changedElsewhere = changedElsewhere, .nameTaken = text::definitions::kImportNameTaken, .name = name},
                 texts_, boxes_);
}

bool JobEditor::agreesToDelete(const std::string& mask, std::size_t count) {
    std::string question = texts_.FormulärSträngMed1(text::prisstyr::kAskToDeleteMask, mask);
    const auto add = [&](ModuleKey text, std::string_view value) {
        question.append(kNextParagraph).append(texts_.ModulTextMed(text, value));
    };
    if (count > 1) add(text::definitions::kSeveralMasks, std::to_string(count));
    std::string users;
    PassedOverSilently passedOver;
    attempt(passedOver, "KOLMERA.TXT", [&] {
        for (const Job& each : JobFile(state_.dataFolder()).all()) {
            if (each.mask == mask) users.append(users.empty() ? "" : ", ").append(each.name);
        }
    });
    if (!users.empty()) add(text::definitions::kMaskUsedBy, users);
    return boxes_.MeddelandeJaNejNej(question, texts_.FormulärSträng(text::prisstyr::kDeleteMaskTitle)) == Answer::Yes;
}

void JobEditor::copyMask() {
    if (!maskIsAsShown()) return;
    const auto mask = chosenWholeMask();
    if (!mask) return;
    try {
        maskSaved(kolmera::copyMask(state_.dataFolder(), *mask, texts_.ModulText(text::copies::kWord)));
    } catch (const PlatformError& error) {
        tell(error, text::definitions::kMaskChangedNothingDone, mask->mask.Namn);
    }
}

void JobEditor::deleteMask() {
    if (!canDeleteMask()) return;
    const std::string name = chosenMaskName();
    std::vector<Mask> named;
    std::ranges::copy_if(masks_, std::back_inserter(named), [&](const Mask& mask) { return mask.Namn == name; });
    if (!agreesToDelete(name, named.size())) return;
    try {
        MaskFile(state_.dataFolder()).remove(named);
    } catch (const PlatformError& error) {
        tell(error, text::definitions::kMaskChangedNothingDone, name);
    }
    maskRow_ = -1;
    readMasks();
}

/// The text and the control of the first check that fails.
std::optional<std::pair<FormKey, JobEditor::Control>> JobEditor::missing() const {
    const struct {
        bool fails, inTradeFormat;
        FormKey text;
        Control focus;
    } checks[] = {
        {empty(job.name), false, text::prisstyr::kNoName, Control::Namn},
        {ÄrStandardFormat(trimmed(job.name)), false, text::prisstyr::kReservedName, Control::Namn},
        {empty(job.priceFile), true, text::prisstyr::kNoFile, Control::FilNamn},
        {maskRow_ < 0, false, text::prisstyr::kNoMask, Control::Mask_Lista},
        {companyRow_ < 0, true, text::prisstyr::kNoCompany, Control::FTG_Lista},
    };
    for (const auto& check : checks) {
        if (check.fails && (check.inTradeFormat || !tradeFormat_)) return std::pair(check.text, check.focus);
    }
    return std::nullopt;
}

/// Why the first text that cannot be stored cannot, and its control.
std::optional<std::pair<std::string, JobEditor::Control>> JobEditor::notStorable() const {
    const struct {
        const std::string& typed;
        int width;
        Control focus;
    } texts[] = {
        {job.name, kJobTextLength, Control::Namn},           {job.priceFile, kJobTextLength, Control::FilNamn},
        {job.command, kJobTextLength, Control::KompFilNamn}, {job.fromGroup, kJobGroupLength, Control::FromGrp},
        {job.toGroup, kJobGroupLength, Control::TomGrp},
    };
    for (const auto& text : texts) {
        std::string why = whyNotStored(text.typed, text.width, texts_);
        if (!why.empty()) return std::pair(std::move(why), text.focus);
    }
    return std::nullopt;
}

JobEditor::Outcome JobEditor::save() {
    if (const auto first = missing()) {
        boxes_.MeddelandeInfo(texts_.FormulärSträng(first->first));
        return {.focus = first->second};
    }
    if (const auto first = notStorable()) {
        boxes_.MeddelandeInfo(first->first);
        return {.focus = first->second};
    }
    for (std::string* text : {&job.name, &job.priceFile, &job.command}) *text = trimmed(composed(*text));
    if (!tradeFormat_) {
        job.mask = masks_[static_cast<std::size_t>(maskRow_)].Namn;
        job.kind.clear();
        // A supplier of another company must not stay behind unseen.
        if (state_.sql.FtgDB && chosenSupplier() < 0) job.supplier.clear();
    }
    if (!headings_.empty()) {
        for (int* heading : {&job.heading1, &job.heading2}) {
            *heading = headings_[static_cast<std::size_t>(headingRow(*heading))].number;
        }
    }
    try {
        return {.JobbNr = JobFile(state_.dataFolder()).save(job, shown_, changedOptions())};
    } catch (const PlatformError& error) {
        tell(error, text::definitions::kImportChangedNothingSaved,
             error.number() == errors::kDuplicateKey ? job.name : begun_.name);
        return {.focus = error.number() == errors::kDuplicateKey ? Control::Namn : Control::None};
    }
}

bool JobEditor::changed() const {
    return job != begun_ || limits != begunLimits_ || source != begunSource_ || chosenMaskName() != begunMask_;
}

}  // namespace kolmera
