#include "registers/recordedwriting.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <ctime>
#include <utility>

#include "history/presentrows.h"
#include "history/registerruns.h"
#include "lang/keys/registers.h"
#include "platform/systemuser.h"

namespace kolmera {

RunHeader headOfWriting(SqlLayer& sql, LanguageTexts& texts, Register& written, const std::string& company) {
    RunHeader head;
    head.user = SystemUser::current().login;
    head.version = KOLMERA_VERSION;
    head.definition = fmt::format("{}\"{}\"}}", kRegisterDefinition, written.definition().name);
    head.job = texts.ModulTextMed(text::registers::kRun, written.title());
    head.companyFile = company;
    const auto settings = sql.SQLÖppnaRs("Syinställningar", RecordsetType::Dynaset, options::kReadOnly);
    if (!settings->eof()) head.companyName = textOf(settings->value("Företagsnamn"));
    return head;
}

RecordedWriting::RecordedWriting(Database& database, const RunFolder& folder, RunHeader head)
    : database_(database), folder_(folder) {
    try {
        head.lastIds = readLastIds(database_);
        record_ = std::make_unique<RunRecord>(folder_.path(), std::move(head));
        id_ = record_->header().id;
        database_.listen(record_.get());
    } catch (const PlatformError& error) {
        failure_ = error;
        close();
    }
}

RecordedWriting::~RecordedWriting() {
    // Without an end the record tells of what the company holds, as that of a run which was ended from outside.
    if (record_) database_.listen(nullptr);
}

/// Without a record after all.
void RecordedWriting::close() {
    if (record_) {
        record_->close();
        record_.reset();
    }
    if (id_.empty()) return;
    try {
        folder_.remove(id_);
    } catch (const PlatformError& error) {
        if (!failure_) failure_ = error;
    }
    id_.clear();
}

void RecordedWriting::end(const char* outcome, const WritingCounts& counts) {
    if (!record_) return;
    database_.listen(nullptr);
    if (counts.written() == 0) return close();
    record_->change([&](RunHeader& header) {
        header.ended = fmt::format("{:%Y-%m-%dT%H:%M:%S}", fmt::localtime(std::time(nullptr)));
        header.outcome = outcome;
        header.counts = fmt::format(R"({{"records":{},"new":{},"changed":{},"removed":{}}})", counts.rows, counts.added,
                                    counts.changed, counts.removed);
    });
    record_->close();
    failure_ = record_->failure();
    if (failure_) id_.clear();
    record_.reset();
}

}  // namespace kolmera
