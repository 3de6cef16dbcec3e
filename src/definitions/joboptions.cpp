#include "definitions/joboptions.h"

#include <functional>
#include <nlohmann/json.hpp>

#include "platform/error.h"
#include "platform/recordfolder.h"
#include "source/settingsjson.h"

namespace kolmera {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kJobs = "jobs";
constexpr const char* kLimitsMember = "limits";
constexpr const char* kSourceMember = "source";
constexpr const char* kSourceMembers[] = {"format", "headings", "columns", "leave-out"};

[[noreturn]] void refuse() {
    throw PlatformError(errors::kUnreadableOptions, "not the options of jobs").about(std::string(kJobOptionsFile));
}

/// The file; an object whose member "jobs", where it has one, is an object of objects. Nothing where it is not.
std::optional<Json> parsed(const std::string& content) {
    if (content.empty()) return Json::object();
    Json file = Json::parse(content, nullptr, false);
    if (!file.is_object()) return std::nullopt;
    const Json jobs = file.value(kJobs, Json::object());
    if (!jobs.is_object()) return std::nullopt;
    for (const Json& job : jobs) {
        if (!job.is_object()) return std::nullopt;
    }
    return file;
}

std::string textOf(const Json& file) { return file.dump(2) + '\n'; }

Json& child(Json& object, std::string_view name) {
    Json& member = object[std::string(name)];
    if (!member.is_object()) member = Json::object();
    return member;
}

void removeEmpty(Json& object, std::string_view name) {
    const auto member = object.find(std::string(name));
    if (member != object.end() && member->empty()) object.erase(member);
}

Limits limitsOf(const Json& job) {
    Limits limits;
    const Json stored = job.value(kLimitsMember, Json::object());
    if (!stored.is_object()) refuse();
    for (const LimitKind& kind : kLimits) {
        const auto value = stored.find(std::string(kind.name));
        if (value == stored.end()) continue;
        if (!value->is_number() || value->get<double>() < 0) refuse();
        limits.*kind.value = value->get<double>();
    }
    return limits;
}

/// What the file has of a job; an empty object where it has nothing.
Json optionsOf(const std::string& content, std::string_view job) {
    const std::optional<Json> file = parsed(content);
    if (!file) refuse();
    const Json jobs = file->value(kJobs, Json::object());
    return jobs.value(std::string(job), Json::object());
}

/// Whether the brackets that are opened are closed, and nothing is open at the end.
bool isWhole(const std::string& content) {
    int open = 0;
    bool quoted = false;
    for (std::size_t i = 0; i < content.size(); ++i) {
        const char c = content[i];
        if (c == '"') quoted = !quoted;
        if (quoted && c == '\\') ++i;
        if (quoted) continue;
        if (c == '{' || c == '[') ++open;
        if (c == '}' || c == ']') --open;
    }
    return open == 0 && !quoted;
}

/// Whether a file that cannot be understood shows that it has nothing of a job: a price file must never be read without
/// the source that its job had. One that is cut may have lost it. Else its name would stand there, unless letters are
/// written in another way.
bool hasNothingOf(const std::string& content, std::string_view job) {
    return isWhole(content) && content.find("\\u") == std::string::npos &&
           content.find(Json(std::string(job)).dump()) == std::string::npos;
}

/// Changes what the file's text has of a job.
void editOptions(std::string& content, std::string_view job, const std::function<void(Json& options)>& edit) {
    std::optional<Json> file = parsed(content);
    if (!file) refuse();
    Json& jobs = child(*file, kJobs);
    edit(child(jobs, job));
    removeEmpty(jobs, job);
    content = textOf(*file);
}

/// The same in a change of its own.
void changeOptions(const std::filesystem::path& folder, std::string_view job,
                   const std::function<void(Json& options)>& edit) {
    RecordChange change(folder);
    editOptions(change.text(kJobOptionsFile), job, edit);
    change.commit();
}

void storeLimits(Json& options, const Limits& limits) {
    Json& stored = child(options, kLimitsMember);
    for (const LimitKind& kind : kLimits) {
        const std::optional<double>& value = limits.*kind.value;
        if (value) {
            stored[std::string(kind.name)] = *value;
        } else {
            stored.erase(std::string(kind.name));
        }
    }
    removeEmpty(options, kLimitsMember);
}

void storeSource(Json& options, const std::optional<SourceSettings>& source) {
    if (!source) {
        options.erase(kSourceMember);
        return;
    }
    Json& stored = child(options, kSourceMember);
    for (const char* member : kSourceMembers) stored.erase(member);
    stored.update(toJson(*source));
}

}  // namespace

Limits JobOptionsFile::limits(std::string_view job) const {
    return limitsOf(optionsOf(readWholeText(folder_, kJobOptionsFile), job));
}

void JobOptionsFile::setLimits(std::string_view job, const Limits& limits) {
    changeOptions(folder_, job, [&](Json& options) { storeLimits(options, limits); });
}

void putOptions(std::string& content, std::string_view job, const JobOptionsChange& change) {
    if (!change.limits && !change.source) return;
    editOptions(content, job, [&](Json& options) {
        if (change.limits) storeLimits(options, *change.limits);
        if (change.source) storeSource(options, *change.source);
    });
}

std::optional<SourceSettings> JobOptionsFile::source(std::string_view job) const {
    const std::string content = readWholeText(folder_, kJobOptionsFile);
    if (!parsed(content) && hasNothingOf(content, job)) return std::nullopt;
    const Json options = optionsOf(content, job);
    const auto stored = options.find(kSourceMember);
    if (stored == options.end()) return std::nullopt;
    auto settings = sourceSettingsOf(*stored);
    if (!settings) refuse();
    return settings;
}

void JobOptionsFile::setSource(std::string_view job, const std::optional<SourceSettings>& source) {
    changeOptions(folder_, job, [&](Json& options) { storeSource(options, source); });
}

void renameJobOptions(std::string& content, std::string_view from, std::string_view to, bool copies) {
    std::optional<Json> file = content.empty() ? std::nullopt : parsed(content);
    if (!file || !file->contains(kJobs)) return;
    Json& jobs = (*file)[kJobs];
    const auto options = jobs.find(std::string(from));
    if (options == jobs.end()) return;
    Json moved = *options;
    if (!copies) jobs.erase(options);
    jobs[std::string(to)] = std::move(moved);
    content = textOf(*file);
}

void removeJobOptions(std::string& content, std::string_view job) {
    std::optional<Json> file = content.empty() ? std::nullopt : parsed(content);
    if (!file || !file->contains(kJobs) || (*file)[kJobs].erase(std::string(job)) == 0) return;
    content = textOf(*file);
}

}  // namespace kolmera
