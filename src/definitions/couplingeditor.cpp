#include "definitions/couplingeditor.h"

#include <fmt/format.h>

#include <algorithm>

#include "db/conversions.h"
#include "lang/errortext.h"
#include "platform/attempt.h"
#include "platform/lettercase.h"

namespace kolmera {
namespace {

constexpr std::string_view kForm = "PrisStyr";
constexpr int kNoSuchSupplier = 5, kAskToRemove = 50, kRemoveTitle = 51;
constexpr int kCannotSave = 124;

}  // namespace

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
    const std::string name = supplierFound
                                 ? supplierFound->searchName
                                 : fmt::format("({}{})", texts_.FormulärSträng(kForm, kNoSuchSupplier), database_);
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

bool CouplingEditor::change(const std::function<void()>& statement) {
    try {
        statement();
        return true;
    } catch (const PlatformError& error) {
        const std::string title = texts_.ModulText("KMR", kCannotSave);
        boxes_.MeddelandeVarning(fmt::format("{}.\r\n\r\n{}", title, errorText(texts_, error)), title);
        return false;
    }
}

bool CouplingEditor::save() {
    if (trimmed(code).empty()) return false;
    const Coupling coupling{.job = job_, .code = code, .supplier = supplier, .mainSupplier = mainSupplier};
    if (!change([&] { file_.save(coupling); })) return false;
    const std::string saved = code;
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
    if (boxes_.MeddelandeJaNejNej(texts_.FormulärSträng(kForm, kAskToRemove),
                                  texts_.FormulärSträng(kForm, kRemoveTitle)) != Answer::Yes) {
        return;
    }
    const int number = rows_[static_cast<std::size_t>(chosen_)].coupling.number;
    if (!change([&] { file_.remove(number); })) return;
    list();
    cancel();
}

}  // namespace kolmera
