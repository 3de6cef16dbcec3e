#include "definitions/couplingeditor.h"

#include <fmt/format.h>

#include <algorithm>

#include "db/conversions.h"
#include "definitions/savemessages.h"
#include "lang/keys/definitions.h"
#include "lang/keys/prisstyr.h"
#include "platform/attempt.h"
#include "platform/encodings.h"
#include "platform/lettercase.h"

namespace kolmera {
void CouplingEditor::setCompany(SqlLayer& sql, std::string database) {
    sql_ = &sql;
    database_ = std::move(database);
    suppliers_.reset();
    PassedOverSilently passedOver;
    attempt(passedOver, "Leverantör", [this] { suppliers_ = sql_->SQLÖppnaTabell("Leverantör", "Nummer", 0, true); });
    list();
}

std::optional<CouplingEditor::Supplier> CouplingEditor::find(const std::string& number) {
    std::optional<Supplier> found;
    if (!suppliers_ || number.empty()) return found;
    PassedOverSilently passedOver;
    attempt(passedOver, "Leverantör", [&] {
        const Value keys[] = {number};
        if (sql_->SQLSökIngenTräff(suppliers_, "=", keys)) return;
        found = {TillText(suppliers_->value("Nummer"), sql_->locale()),
                 TillText(suppliers_->value("Söknamn"), sql_->locale())};
    });
    return found;
}

std::string CouplingEditor::rowText(const Coupling& coupling) {
    const auto supplierFound = find(coupling.supplier);
    const std::string name =
        supplierFound ? supplierFound->searchName
                      : fmt::format("({}{})", texts_.FormulärSträng(text::prisstyr::kNoSuchSupplier), database_);
    return fmt::format("{}\t-->\t{}\t{}\t{}", coupling.code, coupling.supplier, coupling.mainSupplier ? "H" : "", name);
}

void CouplingEditor::list() {
    rows_.clear();
    chosen_ = -1;
    PassedOverSilently passedOver;
    attempt(passedOver, "PRISLEV.TXT", [this] {
        for (Coupling& coupling : file_.ofJob(job_)) {
            std::string text = rowText(coupling);
            rows_.push_back({std::move(coupling), std::move(text)});
        }
    });
}

int CouplingEditor::rowOfCode(const std::string& wanted) const {
    const auto found = std::ranges::find_if(
        rows_, [code = trimmed(wanted)](const Row& row) { return equalNoCase(row.coupling.code, code); });
    return found == rows_.end() ? -1 : static_cast<int>(found - rows_.begin());
}

void CouplingEditor::choose(int row) {
    if (row < 0 || row >= static_cast<int>(rows_.size())) {
        chosen_ = -1;
        return;
    }
    chosen_ = row;
    const Coupling& coupling = rows_[static_cast<std::size_t>(row)].coupling;
    code = coupling.code;
    supplier = coupling.supplier;
    mainSupplier = coupling.mainSupplier;
    searchName_.clear();
    supplierEntered();
}

void CouplingEditor::codeEntered() {
    if (trimmed(code).empty()) return;
    if (const int row = rowOfCode(code); row >= 0) choose(row);
}

void CouplingEditor::supplierEntered() {
    if (trimmed(supplier).empty()) return;
    const auto found = find(std::string(trimmed(supplier)));
    searchName_ = found ? found->searchName : "";
    if (found) supplier = found->number;
}

std::vector<Coupling> CouplingEditor::shown() const {
    std::vector<Coupling> couplings;
    for (const Row& row : rows_) couplings.push_back(row.coupling);
    return couplings;
}

bool CouplingEditor::change(const std::function<void()>& statement) {
    try {
        statement();
        return true;
    } catch (const PlatformError& error) {
        tellNotSaved(error, {.changedElsewhere = text::definitions::kCouplingsChanged, .name = job_}, texts_, boxes_);
        if (error.number() == errors::kChangedElsewhere) list();
        return false;
    }
}

bool CouplingEditor::canBeStored() {
    for (const std::string& typed : {code, supplier}) {
        const std::string why = whyNotStored(typed, kCouplingTextLength, texts_);
        if (why.empty()) continue;
        boxes_.MeddelandeInfo(why);
        return false;
    }
    return true;
}

/// A coupling without a supplier of the company is not used by any run.
bool CouplingEditor::supplierIsMeant() {
    const std::string number(trimmed(supplier));
    if (!suppliers_ || find(number)) return true;
    const std::string question = number.empty()
                                     ? texts_.ModulTextMed(text::definitions::kAskWithoutSupplier, trimmed(code))
                                     : texts_.ModulTextMed(text::definitions::kAskWithUnknownSupplier, number);
    return boxes_.MeddelandeJaNejNej(question) == Answer::Yes;
}

bool CouplingEditor::save() {
    if (trimmed(code).empty() || !canBeStored() || !supplierIsMeant()) return false;
    const Coupling coupling{.job = job_, .code = code, .supplier = supplier, .mainSupplier = mainSupplier};
    if (!change([&] { file_.save(coupling, shown()); })) return false;
    const std::string saved = composed(code);
    list();
    cancel();
    chosen_ = rowOfCode(saved);
    return true;
}

void CouplingEditor::cancel() {
    code.clear();
    supplier.clear();
    mainSupplier = false;
    searchName_.clear();
}

void CouplingEditor::remove() {
    if (chosen_ < 0) return;
    if (boxes_.MeddelandeJaNejNej(texts_.FormulärSträng(text::prisstyr::kAskToRemoveCoupling),
                                  texts_.FormulärSträng(text::prisstyr::kRemoveCouplingTitle)) != Answer::Yes) {
        return;
    }
    const Coupling coupling = rows_[static_cast<std::size_t>(chosen_)].coupling;
    if (!change([&] { file_.remove(coupling, shown()); })) return;
    list();
    cancel();
}

}  // namespace kolmera
