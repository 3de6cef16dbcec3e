#include "cli/summaryfile.h"

#include <fcntl.h>

#include <cerrno>
#include <chrono>
#include <nlohmann/json.hpp>
#include <ostream>
#include <thread>

#include "cli/commandline.h"
#include "cli/terminalstream.h"
#include "import/run/runcounts.h"
#include "lang/errortext.h"
#include "platform/printable.h"
#include "platform/privatefile.h"

namespace kolmera::cli {
namespace fs = std::filesystem;
namespace {

using Json = nlohmann::ordered_json;

std::string textOf(const Json& summary) {
    return summary.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + '\n';
}

const char* outcomeOf(int exitCode) {
    switch (exitCode) {
        case exitcode::kDone:
            return "done";
        case exitcode::kPassedOver:
            return "done_with_remarks";
        case exitcode::kCancelled:
            return "cancelled";
        case exitcode::kBeyondLimits:
            return "beyond_limits";
        default:
            return "stopped";
    }
}

Json examplesJson(const RunReport::Tally& tally) {
    Json examples = Json::array();
    for (const RunReport::Example& example : tally.examples) {
        examples.push_back({{"record", example.record},
                            {"product", example.product},
                            {"column", example.column},
                            {"text", example.text}});
    }
    return examples;
}

Json remarksJson(const RunReport& report) {
    Json remarks = Json::object();
    for (const RemarkKind& kind : kRemarks) {
        const RunReport::Tally& tally = report.tally(kind.remark);
        if (kind.ofSource && tally.count == 0) continue;
        remarks[std::string(kind.name)] = {{"count", tally.count}, {"examples", examplesJson(tally)}};
    }
    return remarks;
}

Json failuresJson(LanguageTexts& texts, const RunReport& report) {
    constexpr std::size_t kErrorCharacters = 300;
    Json failures = Json::array();
    for (const RunReport::Failure& failure : report.failures()) {
        failures.push_back({{"statement", failure.statement},
                            {"error", failure.error.number()},
                            {"text", printable(errorText(texts, failure.error), kErrorCharacters)},
                            {"count", failure.count},
                            {"record", failure.record},
                            {"product", failure.product}});
    }
    return failures;
}

}  // namespace

Json summaryJson(LanguageTexts& texts, const std::string& job, const RunResult& result) {
    const RunSummary& summary = result.summary;
    const RunReport& report = summary.report;
    Json json = {{"job", job},
                 {"outcome", outcomeOf(result.exitCode)},
                 {"exit_code", result.exitCode},
                 {"messages", result.messages}};
    json.update(countsJson(summary));
    json.update({{"number_form", result.numberForm},
                 {"preparation_status", summary.preparation.exitStatus},
                 {"file_not_renewed", summary.preparation.fileNotRenewed},
                 {"cancelled", summary.cancelled},
                 {"seconds", result.seconds},
                 {"remarks", remarksJson(report)},
                 {"uncoupled_codes", report.uncoupledCodes()},
                 {"failed_statements", failuresJson(texts, report)}});
    return json;
}

SummaryFile::SummaryFile(const fs::path& file, const std::string& job, const std::atomic<bool>& cancel)
    : file_(fs::absolute(file)), cancel_(cancel) {
    std::error_code unreachable;
    const bool link = fs::is_symlink(fs::symlink_status(file_, unreachable));
    const fs::file_status status = fs::status(file_, unreachable);
    writtenDirectly_ = fs::exists(status) && !fs::is_regular_file(status);
    // A file that may not be written must not be replaced either, though its folder would allow that.
    if (writtenDirectly_ || (fs::exists(status) && !link)) existing_ = openInPlace();
    if (!writtenDirectly_) replaceBy({{"job", job}, {"outcome", "running"}});
}

Descriptor SummaryFile::openInPlace() const {
    constexpr auto kPause = std::chrono::milliseconds(20);
    for (;; std::this_thread::sleep_for(kPause)) {
        try {
            return Descriptor(file_, O_WRONLY | O_NONBLOCK);
        } catch (const PlatformError& error) {
            const bool noReader = error.systemError() == ENXIO;
            if (!noReader || cancel_.load(std::memory_order_relaxed)) throw;
        }
    }
}

void SummaryFile::writeInPlace(const std::string& text) const {
    TerminalStream buffer(existing_.get(), cancel_);
    std::ostream stream(&buffer);
    stream << text << std::flush;
    if (!stream.good()) throw PlatformError(errors::kDiskFull, "the summary could not be written to its end");
}

void SummaryFile::finish(const Json& summary) {
    if (writtenDirectly_) return writeInPlace(textOf(summary));
    replaceBy(summary);
}

void SummaryFile::replaceBy(const Json& summary) const {
    PrivateFile file(file_, "", existing_.isOpen() ? PrivateFile::kForOwner : PrivateFile::kForAll);
    if (existing_.isOpen()) file.descriptor().copyRights(existing_);
    file.descriptor().writeAt(0, textOf(summary));
    file.moveTo(file_);
}

}  // namespace kolmera::cli
