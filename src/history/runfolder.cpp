#include "history/runfolder.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <initializer_list>
#include <optional>
#include <system_error>
#include <utility>

#include "history/recordfile.h"
#include "history/registerruns.h"
#include "history/runlock.h"
#include "platform/error.h"

namespace kolmera {

namespace fs = std::filesystem;

namespace {

/// "20261123-081500-0a1b"
bool isId(std::string_view id) {
    constexpr std::string_view kForm = "########-######-****";
    return std::ranges::equal(id, kForm, [](char character, char form) {
        const bool digit = character >= '0' && character <= '9';
        if (form == '-') return character == '-';
        return digit || (form == '*' && character >= 'a' && character <= 'z');
    });
}

std::int64_t bytesOf(const fs::path& file) {
    std::int64_t bytes = 0;
    for (const char* beside : {"", "-wal"}) {
        fs::path name = file;
        name += beside;
        std::error_code missing;
        const std::uintmax_t size = fs::file_size(name, missing);
        if (!missing) bytes += static_cast<std::int64_t>(size);
    }
    return bytes;
}

bool writtenWithinADay(const fs::path& file) {
    constexpr std::chrono::hours kDay(24);
    return std::ranges::any_of(std::initializer_list<const char*>{"", "-wal"}, [&](const char* beside) {
        std::error_code unknown;
        const fs::file_time_type written = fs::last_write_time(fs::path(file) += beside, unknown);
        return !unknown && fs::file_time_type::clock::now() - written <= kDay;
    });
}

/// Of writing to a register, by a window or a command. Such records are many and small: as many are kept of them
/// as of the others, and none pushes a run out.
bool isOfRegister(const fs::path& file) {
    try {
        return RecordReader(file).header().definition.starts_with(kRegisterDefinition);
    } catch (const PlatformError&) {
        return false;
    }
}

}  // namespace

RunFolder::RunFolder(const fs::path& dataFolder) : path_(dataFolder / "Körningar") {}

std::vector<std::string> RunFolder::ids() const {
    std::vector<std::string> ids;
    std::error_code none;
    for (const fs::directory_entry& entry : fs::directory_iterator(path_, none)) {
        const bool record = entry.path().extension() == kRecordEnding && isId(entry.path().stem().string());
        if (record && entry.is_regular_file(none) && !entry.is_symlink(none))
            ids.push_back(entry.path().stem().string());
    }
    std::ranges::sort(ids, std::greater());
    return ids;
}

bool RunFolder::takesRecords() const {
    std::error_code unknown;
    const std::filesystem::path folder = std::filesystem::exists(path_, unknown) ? path_ : path_.parent_path();
    return faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

std::vector<RunHeader> RunFolder::list(std::int64_t* unreadable) const {
    std::vector<RunHeader> headers;
    for (const std::string& id : ids()) {
        try {
            headers.push_back(header(id));
        } catch (const PlatformError&) {
            if (unreadable != nullptr) ++*unreadable;
        }
    }
    return headers;
}

RunHeader RunFolder::header(std::string_view id) const {
    RunHeader header = RecordReader(file(id)).header();
    header.underWay = isUnderWay(header);
    return header;
}

fs::path RunFolder::file(std::string_view id) const {
    fs::path file = path_ / (std::string(id) + std::string(kRecordEnding));
    std::error_code none;
    if (isId(id) && fs::is_regular_file(fs::symlink_status(file, none))) return file;
    throw PlatformError(errors::kFileNotFound, "there is no record of such a run").about(std::string(id));
}

bool RunFolder::isUnderWay(const RunHeader& run) const {
    if (!run.ended.empty()) return false;
    const std::optional<bool> locked = run.locked ? RunLock::isHeld(path_, run.id) : std::nullopt;
    return locked.value_or(writtenWithinADay(path_ / (run.id + std::string(kRecordEnding))));
}

/// A record that cannot be read may be one that is being made.
bool RunFolder::mayBeUnderWay(const fs::path& file) const {
    if (!writtenWithinADay(file)) return false;
    try {
        return isUnderWay(RecordReader(file).header());
    } catch (const PlatformError&) {
        return true;
    }
}

void RunFolder::remove(std::string_view id) const { removeRecordFile(file(id)); }

std::int64_t RunFolder::thin(const RecordLimits& limits) const {
    std::int64_t removed = 0, bytes = 0, ofRuns = 0, ofRegisters = 0;
    const std::vector<std::string> all = this->ids();
    const bool many = std::cmp_greater(all.size(), limits.number);
    for (const std::string& id : all) {
        const fs::path record = path_ / (id + std::string(kRecordEnding));
        const std::int64_t size = bytesOf(record);
        std::int64_t& number = many && isOfRegister(record) ? ofRegisters : ofRuns;
        ++number;
        bytes += size;
        if (id == all.front() || (number <= limits.number && bytes <= limits.bytes) || mayBeUnderWay(record)) continue;
        removeRecordFile(record);
        ++removed;
        --number;
        bytes -= size;
    }
    return removed;
}

}  // namespace kolmera
