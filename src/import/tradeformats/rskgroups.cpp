#include "import/tradeformats/rskgroups.h"

#include <memory>
#include <string>

#include "db/batchtransaction.h"
#include "import/rows/defaults.h"
#include "import/rows/rowwriter.h"
#include "lang/keys/prismain.h"
#include "platform/encodings.h"
#include "platform/paths.h"
#include "platform/pricefile.h"

namespace kolmera {
namespace {

constexpr std::int64_t kLinesPerBatch = 50;

std::unique_ptr<PriceFile> openGroups(RunMachinery& run) {
    try {
        return run.open(findWithoutCase(run.priceFilePath().parent_path(), "RKOD.DAT"));
    } catch (const PlatformError&) {
        return nullptr;  // The run does without groups.
    }
}

/// "Prodgrupp" as it is written here.
class GroupRows {
  public:
    GroupRows(RunMachinery& run, Recordset& settings)
        : settings_(settings), report_(run.report()), row_(run.sql(), report_, "Prodgrupp", "Nummer") {}

    /// Whether the group was saved.
    bool put(const std::string& number, std::string_view name) {
        const RowWriter::Row found = row_.editOrAdd(number);
        if (found == RowWriter::Row::Unreachable) return false;
        if (found == RowWriter::Row::New) SättGruppKonton(row_.rows(), settings_, report_);
        row_.write(Nummer_, number);
        row_.write(Benämning_, name);
        return row_.save();
    }

  private:
    Recordset& settings_;
    RunReport& report_;
    RowWriter row_;
    const Column Nummer_ = row_.column("Nummer");
    const Column Benämning_ = row_.column("Benämning");
};

}  // namespace

bool LäsInproduktGrupperRSK(RunMachinery& run, Recordset& settings) {
    const auto file = openGroups(run);
    if (!file) return true;
    const std::string label = run.texts().FormulärSträng(text::prismain::kGroupsRead) + " ";
    run.port().status(run.texts().FormulärSträng(text::prismain::kReadingGroups));
    run.port().letEventsRun();

    GroupRows groups(run, settings);
    BatchTransaction transaction(*run.sql().FtgDB);
    bool goesOn = true;
    for (std::int64_t lines = 1; goesOn && !file->atEnd(); ++lines) {
        const std::string_view line = file->line();
        const std::string number = toUtf8(cut(line, columns(kRskGroup, "gruppnr")), CodePage::Oem850);
        run.report().at(lines);
        run.report().about(number);
        if (number.empty()) {
            ++run.summary().groupLinesSkipped;
        } else if (groups.put(number, toUtf8(cut(line, columns(kRskGroup, "benämning")), CodePage::Oem850))) {
            ++run.summary().groups;
        }
        if (lines % kLinesPerBatch != 0) continue;
        goesOn = run.progress(label, lines);
        if (goesOn) transaction.next();
    }
    transaction.end();
    run.report().at(0);
    return goesOn;
}

}  // namespace kolmera
