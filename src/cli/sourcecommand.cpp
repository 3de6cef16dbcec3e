#include "cli/sourcecommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>

#include "cli/jobsession.h"
#include "cli/printablelines.h"
#include "definitions/joboptions.h"
#include "definitions/maskfile.h"
#include "definitions/masktarget.h"
#include "definitions/pricefilepath.h"
#include "import/run/runmessage.h"
#include "import/run/sourcestage.h"
#include "lang/keys/source.h"
#include "lang/keys/terminal.h"
#include "platform/lettercase.h"
#include "platform/outputfile.h"
#include "platform/pricefile.h"
#include "source/detection/detection.h"
#include "source/settingsjson.h"

namespace kolmera::cli {
namespace fs = std::filesystem;
namespace {

using Json = nlohmann::ordered_json;

/// A line of a trade format is a record, whatever stands in it; so is the first one.
void keepLines(SourceFormat& format) {
    if (format.kind == SourceKind::Fixed) format.kind = SourceKind::Delimited;
    if (format.kind != SourceKind::Delimited) return;
    format.delimiter = '\0';
    format.quote = '\0';
    format.starts.clear();
    format.headings = false;
    format.skip = 0;
}

/// What both commands know of a job. Errors are told.
class JobSource {
  public:
    JobSource(const std::string& job, const std::string& dataFolder, const std::string& file,
              const Surroundings& surroundings)
        : surroundings_(surroundings),
          named_{.job = job, .dataFolder = dataFolder, .locale = {}},
          session_(named_, surroundings),
          file_(file) {}

    int detectAndSet(const SourceArguments& arguments);
    int convert(const std::string& output);

  private:
    [[nodiscard]] bool findJob();
    [[nodiscard]] fs::path priceFile();
    [[nodiscard]] TargetLayout layout();
    SourceSettings detected(const std::optional<SourceSettings>& before);
    std::optional<SourceSettings> changed(const SourceSettings& before, const std::string& wanted);
    int write(SourceConverter& converter, const std::string& output);

    const Surroundings& surroundings_;
    JobArguments named_;
    JobSession session_;
    std::string file_;
    std::optional<Job> job_;
};

bool JobSource::findJob() {
    job_ = session_.findJob();
    return job_.has_value();
}

fs::path JobSource::priceFile() {
    if (!file_.empty()) return fs::absolute(file_);
    const StartState& state = session_.session.state;
    return findPriceFile(job_->priceFile, state.drives, state.dataFolder(), state.programFolder());
}

/// Of a trade format, or a mask that is not there, a line a record.
TargetLayout JobSource::layout() {
    const bool trade = ÄrStandardFormat(job_->name);
    const auto mask = trade ? std::nullopt : MaskFile(session_.session.state.dataFolder()).find(job_->mask);
    TargetLayout layout = mask ? targetLayout(*mask) : TargetLayout{};
    if (trade && job_->name != "(EIO)") layout.page = CodePage::Oem850;
    layout.decimalSign = session_.session.state.locale.decimalSign();
    return layout;
}

/// The columns of the mask are bound to the headings above the columns of their numbers.
SourceSettings JobSource::detected(const std::optional<SourceSettings>& before) {
    SourceSettings settings = before.value_or(SourceSettings{});
    SourceLimits limits;
    limits.cancelled = [this] { return surroundings_.cancel.load(); };
    settings.format = detectSource(priceFile(), {}, limits).format;
    if (layout().records == TargetLayout::Records::Whole) keepLines(settings.format);
    settings.headings = SourceTable(openRows(priceFile(), settings.format, limits), settings.format).headings();
    if (!settings.columns.empty()) return settings;
    const TargetLayout target = layout();
    for (std::size_t i = 0; i < target.columns.size(); ++i) {
        if (target.columns[i].use == ColumnUse::Nothing || i >= settings.headings.size()) continue;
        const int number = static_cast<int>(i) + 1;
        const std::string& heading = settings.headings[i];
        const bool once = !heading.empty() && std::ranges::count(settings.headings, heading) == 1;
        settings.columns.push_back(
            {.column = number, .from = {.heading = once ? heading : std::string(), .number = number}, .rule = {}});
    }
    return settings;
}

/// Members of other names are passed over, so that no value of theirs is refused.
bool isMember(const Json& settings, const std::string& path) {
    const Json::json_pointer member("/" + path);
    if (settings.at(member).is_structured()) return true;
    return std::ranges::any_of(std::array{Json(nullptr), Json(-1.5), Json("\x01")}, [&](const Json& odd) {
        Json changed = settings;
        changed[member] = odd;
        return !sourceSettingsOf(changed);
    });
}

/// Nothing when there is no such member, or it cannot have that value.
std::optional<SourceSettings> JobSource::changed(const SourceSettings& before, const std::string& wanted) {
    constexpr std::size_t kLongestNumber = 5;  // of a place in a list
    const std::size_t sign = wanted.find('=');
    if (sign == std::string::npos) return std::nullopt;
    std::size_t digits = 0;
    for (const char c : std::string_view(wanted).substr(0, sign)) {
        digits = c >= '0' && c <= '9' ? digits + 1 : 0;
        if (digits > kLongestNumber) return std::nullopt;
    }
    Json object = toJson(before);
    const std::string value = wanted.substr(sign + 1);
    try {
        const Json::json_pointer member("/" + wanted.substr(0, sign));
        Json parsed = Json::parse(value, nullptr, false);
        if (value.empty()) {
            Json& parent = object.at(member.parent_pointer());
            if (parent.is_array()) {
                parent.erase(std::stoul(member.back()));
            } else {
                parent.erase(member.back());
            }
        } else {
            object[member] = parsed.is_discarded() ? Json(value) : std::move(parsed);
        }
    } catch (const std::exception&) {  // of the library, and std::stoul's
        return std::nullopt;
    }
    auto settings = sourceSettingsOf(object);
    const bool changesNothing = settings && *settings == before && !value.empty() && toJson(before) != object;
    if (changesNothing && !isMember(object, wanted.substr(0, sign))) return std::nullopt;
    return settings;
}

int JobSource::detectAndSet(const SourceArguments& arguments) {
    if (!findJob()) return exitcode::kStopped;
    Session& session = session_.session;
    JobOptionsFile options(session.state.dataFolder());
    const std::optional<SourceSettings> stored = arguments.clear ? std::nullopt : options.source(job_->name);
    std::optional<SourceSettings> settings = stored;
    if (arguments.detect) settings = detected(stored);
    for (const std::string& wanted : arguments.set) {
        settings = changed(settings.value_or(SourceSettings{}), wanted);
        if (settings) continue;
        session_.say(session.text(text::source::kNoSuchMember, wanted));
        return exitcode::kUsage;
    }
    if (settings != stored || arguments.clear) options.setSource(job_->name, settings);
    if (!settings && arguments.json) {
        surroundings_.out << "null\n";
    } else if (!settings) {
        PrintableStream(surroundings_.out) << session.text(text::source::kNoSource, job_->name) << '\n';
    } else {
        surroundings_.out << toJson(*settings).dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
    }
    return exitcode::kDone;
}

int JobSource::convert(const std::string& output) {
    if (!findJob()) return exitcode::kStopped;
    Session& session = session_.session;
    const auto settings = JobOptionsFile(session.state.dataFolder()).source(job_->name);
    if (!settings) {
        session_.say(session.text(text::source::kNoSource, job_->name));
        return exitcode::kStopped;
    }
    SourceLimits limits;
    limits.cancelled = [this] { return surroundings_.cancel.load(); };
    const TargetLayout target = layout();
    SourceConverter converter(openRows(priceFile(), settings->format, limits), *settings, target);
    if (converter.fault().any()) {
        session_.say(headingMessage(session.texts, {converter.fault(), converter.headings()}, *settings));
        return exitcode::kStopped;
    }
    return write(converter, output);
}

int JobSource::write(SourceConverter& converter, const std::string& output) {
    constexpr std::size_t kPiece = 1 << 16;
    std::optional<OutputFile> file;
    if (output != "-") file.emplace(output);
    std::string bytes;
    const auto flush = [&] {
        if (file) {
            file->write(bytes);
        } else {
            surroundings_.out << bytes;
        }
        bytes.clear();
    };
    while (converter.next(bytes)) {
        if (bytes.size() >= kPiece) flush();
    }
    flush();
    if (file) file->finish();
    RunSummary summary;
    tell(converter.notes(), summary.report);
    const std::uint64_t badNumbers = converter.notes().tally(SourceNote::Kind::BadNumber).count;
    for (const SourceNote& note : converter.notes().tally(SourceNote::Kind::BadNumber).kept) {
        summary.report.at(static_cast<std::int64_t>(note.row));
        summary.report.about(note.key);
        summary.report.remark(Remark::UnfitValue, note.column, note.text);
    }
    Session& session = session_.session;
    surroundings_.err << session.text(text::source::kConverted, fmt::format("{}", converter.records())) << '\n';
    const std::string told = runMessage(session.texts, summary, job_->priceFile, session_.port.examplesTold());
    if (!told.empty()) surroundings_.err << replaceAll(told, "\r\n", "\n") << '\n';
    return summary.report.hasFaults() || badNumbers > 0 ? exitcode::kPassedOver : exitcode::kDone;
}

template <class Work>
int withErrorsTold(const Surroundings& surroundings, const std::string& dataFolder, Work&& work) {
    try {
        return work();
    } catch (const ReadingCancelled&) {
        return exitcode::kCancelled;
    } catch (const PlatformError& error) {
        Session session(surroundings, dataFolder);
        surroundings.err << session.text(text::terminal::kError) << ' ' << session.explain(error) << '\n';
        return exitcode::kStopped;
    }
}

}  // namespace

int sourceCommand(const SourceArguments& arguments, const Surroundings& surroundings) {
    return withErrorsTold(surroundings, arguments.dataFolder, [&] {
        return JobSource(arguments.job, arguments.dataFolder, arguments.file, surroundings).detectAndSet(arguments);
    });
}

int convertCommand(const ConvertArguments& arguments, const Surroundings& surroundings) {
    return withErrorsTold(surroundings, arguments.dataFolder, [&] {
        return JobSource(arguments.job, arguments.dataFolder, arguments.file, surroundings).convert(arguments.output);
    });
}

}  // namespace kolmera::cli
