#include "definitions/couplingfile.h"

#include "definitions/definitionfile.h"
#include "platform/lettercase.h"

namespace kolmera {
namespace {

/// PRISLEV.TXT: one supplier code of one job. The jobs' records lie mixed.
constexpr RecordField kCoupling[] = {{"Inläsning", 0, 100}, {"Kod", 100, 20},      {"Leverantör", 120, 20},
                                     {"Huvudlev", 140, 1},  {"reserved", 141, 99}, {"record end", 240, 2}};
constexpr int kCouplingLength = 242;
static_assert(fillsRecord(kCoupling, kCouplingLength));
constexpr RecordLayout kLayout{"PRISLEV.TXT", kCouplingLength, kCoupling, true};

constexpr RecordField kMainSupplier = field(kCoupling, "Huvudlev");

Coupling couplingOf(int number, const Record& record) {
    return {.number = number,
            .job = record.text(field(kCoupling, "Inläsning")),
            .code = record.text(field(kCoupling, "Kod")),
            .supplier = record.text(field(kCoupling, "Leverantör")),
            .mainSupplier = letter(record, kMainSupplier) == 'H'};
}

std::vector<Coupling> couplingsOf(const Records& file, std::string_view job) {
    std::vector<Coupling> couplings;
    for (int number = 1; number <= file.count(); ++number) {
        Coupling coupling = couplingOf(number, file.read(number));
        if (coupling.job == job) couplings.push_back(std::move(coupling));
    }
    return couplings;
}

void clearMainSupplier(Records& file, const Coupling& coupling) {
    Record record = file.read(coupling.number);
    setLetter(record, kMainSupplier, ' ');
    file.write(coupling.number, record);
}

/// The number of the record written.
int put(Records& file, const Coupling& coupling, std::string_view code) {
    int number = 0;
    for (const Coupling& other : couplingsOf(file, coupling.job)) {
        if (number == 0 && equalNoCase(other.code, code)) number = other.number;
        if (coupling.mainSupplier && other.mainSupplier) clearMainSupplier(file, other);
    }
    Record record = number == 0 ? Record(kLayout) : file.read(number);
    record.setText(field(kCoupling, "Inläsning"), coupling.job);
    record.setText(field(kCoupling, "Kod"), code);
    record.setText(field(kCoupling, "Leverantör"), trimmed(coupling.supplier));
    setLetter(record, kMainSupplier, coupling.mainSupplier ? 'H' : ' ');
    if (number == 0) return file.append(record);
    file.write(number, record);
    return number;
}

}  // namespace

std::vector<Coupling> CouplingFile::ofJob(std::string_view job) const {
    return couplingsOf(readDefinitions(folder_, kLayout), job);
}

int CouplingFile::save(const Coupling& coupling) {
    const std::string_view code = trimmed(coupling.code);
    if (code.empty()) return 0;
    RecordChange change(folder_);
    const int number = put(change.file(kLayout), coupling, code);
    change.commit();
    return number;
}

void putCouplings(RecordChange& change, std::string_view job, const std::vector<Coupling>& couplings,
                  const std::vector<Coupling>& shown) {
    if (couplings.empty() && shown.empty()) return;
    Records& file = change.file(kLayout);
    expectUnchanged(couplingsOf(file, job), shown, kLayout);
    file.keepOnly([job](int number, const Record& record) { return couplingOf(number, record).job != job; });
    for (const Coupling& coupling : couplings) {
        const std::string_view code = trimmed(coupling.code);
        if (!code.empty()) put(file, coupling, code);
    }
}

void CouplingFile::save(const Coupling& coupling, const std::vector<Coupling>& shown) {
    RecordChange change(folder_);
    Records& file = change.file(kLayout);
    expectUnchanged(couplingsOf(file, coupling.job), shown, kLayout);
    put(file, coupling, trimmed(coupling.code));
    change.commit();
}

void CouplingFile::remove(const Coupling& coupling, const std::vector<Coupling>& shown) {
    RecordChange change(folder_);
    Records& file = change.file(kLayout);
    expectUnchanged(couplingsOf(file, coupling.job), shown, kLayout);
    file.keepOnly([&](int number, Record&) { return number != coupling.number; });
    change.commit();
}

}  // namespace kolmera
