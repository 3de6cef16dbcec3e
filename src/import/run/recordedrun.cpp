#include "import/run/recordedrun.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <ctime>
#include <utility>

#include "lang/errortext.h"

namespace kolmera {

namespace {

std::string timeText(std::time_t time) { return fmt::format("{:%Y-%m-%dT%H:%M:%S}", fmt::localtime(time)); }

}  // namespace

std::string timeText() { return timeText(std::time(nullptr)); }

std::string timeText(const std::filesystem::path& file) {
    struct stat found {};
    return stat(file.c_str(), &found) == 0 ? timeText(found.st_mtime) : std::string();
}

RecordedRun::RecordedRun(RecordKeeping& keeping, LanguageTexts& texts) : keeping_(keeping), texts_(texts) {}

RecordedRun::~RecordedRun() = default;

bool RecordedRun::begin(RunHeader header) {
    keeping_.id.clear();
    keeping_.failure.reset();
    keeping_.notThinned.reset();
    header.kind = keeping_.kind;
    header.user = keeping_.user;
    header.version = KOLMERA_VERSION;
    header.priceFile.copied = keeping_.copiesPriceFile;
    try {
        if (keeping_.copiesPriceFile) copy_ = std::make_unique<Compressor>();
        record_ = std::make_unique<RunRecord>(keeping_.folder, std::move(header));
    } catch (const PlatformError& error) {
        keeping_.failure = error;
    }
    return record_ != nullptr;
}

void RecordedRun::giveUp(const PlatformError& error) {
    if (record_) record_->giveUp(error);
}

void RecordedRun::read(std::string_view bytes) {
    if (!record_) return;
    digest_.add(bytes);
    if (copy_) copy_->add(bytes, [this](std::string_view compressed) { record_->copy(compressed); });
    bytesRead_ += static_cast<std::int64_t>(bytes.size());
}

void RecordedRun::remark(const Remarked& remarked) { add(remarked, remarked.kind, {}); }

void RecordedRun::failed(const Remarked& remarked, const PlatformError& error) {
    add(remarked, remarked.kind, errorText(texts_, error));
}

void RecordedRun::add(const Remarked& remarked, std::string_view kind, const std::string& reason) {
    if (!record_) return;
    const bool atHand = remarked.record == place_.record;
    record_->remark({.kind = std::string(kind),
                     .record = remarked.record,
                     .offset = atHand ? place_.offset : -1,
                     .length = atHand ? place_.length : -1,
                     .product = std::string(remarked.product),
                     .column = std::string(remarked.column),
                     .text = std::string(remarked.text),
                     .reason = reason});
}

void RecordedRun::end(const std::string& outcome, const std::string& counts, bool whole) {
    if (record_) {
        if (copy_) copy_->finish([this](std::string_view compressed) { record_->copy(compressed); });
        record_->change([&](RunHeader& header) {
            header.ended = timeText();
            header.outcome = outcome;
            header.counts = counts;
            if (!whole) return;
            header.priceFile.size = bytesRead_;
            header.priceFile.sha256 = digest_.hexadecimal();
        });
        record_->close();
        if (record_->failure()) {
            keeping_.failure = record_->failure();
        } else {
            keeping_.id = record_->header().id;
        }
    }
    if (!keeping_.limits) return;
    try {
        (void)RunFolder::at(keeping_.folder).thin(*keeping_.limits);
    } catch (const PlatformError& error) {
        keeping_.notThinned = error;
    }
}

}  // namespace kolmera
