#include "platform/replacement.h"

#include <fcntl.h>
#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "platform/error.h"
#include "platform/lettercase.h"
#include "platform/privatename.h"

namespace kolmera {

namespace fs = std::filesystem;

namespace {

constexpr const char* kJournal = "KOLMERA.JNL";
constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kPrefix = "KOLMERA-", kSuffix = ".TMP";
constexpr std::size_t kDigits = 16;

bool isNewName(std::string_view name) {
    return name.size() == kPrefix.size() + kDigits + kSuffix.size() && name.starts_with(kPrefix) &&
           name.ends_with(kSuffix);
}

void moveFile(const fs::path& from, const fs::path& to) {
    if (std::rename(from.c_str(), to.c_str()) != 0) throwSystemError(errno);
}

bool isFile(const fs::path& file) {
    std::error_code missing;
    return fs::is_regular_file(fs::symlink_status(file, missing));
}

struct Step {
    std::string temporary, name;
};

/// One file: "KOLMERA-number.TMP NAME". Names lead to no other folder.
Step stepOf(const std::string& line) {
    const std::size_t blank = line.find(' ');
    Step step{line.substr(0, blank), blank == std::string::npos ? std::string() : line.substr(blank + 1)};
    if (!isNewName(step.temporary) || step.name.empty() || step.name.find('/') != std::string::npos) {
        throw PlatformError(errors::kDamaged, "not a line of a journal");
    }
    return step;
}

std::vector<Step> journal(const fs::path& folder) {
    std::error_code missing;
    if (fs::is_symlink(fs::symlink_status(folder / kJournal, missing))) {
        throw PlatformError(errors::kInvalidPath, "a symbolic link is no journal");
    }
    const Descriptor file(folder / kJournal, O_RDONLY | O_NOFOLLOW);
    std::string content(file.size(), '\0');
    content.resize(file.readAt(0, content.data(), content.size()));
    std::vector<std::string> lines = split(content, kLineEnd);
    lines.pop_back();
    std::vector<Step> steps;
    steps.reserve(lines.size());
    for (const std::string& line : lines) steps.push_back(stepOf(line));
    return steps;
}

/// Carries out what the journal says.
void carryOut(const fs::path& folder) {
    for (const Step& step : journal(folder)) {
        // One that is gone is in its place already.
        if (isFile(folder / step.temporary)) moveFile(folder / step.temporary, folder / step.name);
    }
    syncFolder(folder);
    std::error_code error;
    if (fs::remove(folder / kJournal, error); error) throwSystemError(error.value());
    syncFolder(folder);
}

void removeLeftFiles(const fs::path& folder) {
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        std::error_code ignored;
        if (isNewName(entry->path().filename().native())) fs::remove(entry->path(), ignored);
    }
}

}  // namespace

Replacement::~Replacement() {
    std::error_code ignored;
    for (const NewFile& file : files_) fs::remove(file.temporary, ignored);
}

void Replacement::write(const std::string& name, std::string_view content, const Descriptor& old, unsigned mode) {
    const fs::path temporary = folder_ / fmt::format("{}{}{}", kPrefix, privateDigits(), kSuffix);
    const Descriptor file(temporary, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, old.isOpen() ? 0600 : mode);
    files_.push_back({temporary, name});
    file.writeAt(0, content);
    if (old.isOpen()) file.copyRights(old);
    file.sync();
}

void Replacement::add(const std::string& name, std::string_view content, const Descriptor& old, unsigned mode) {
    try {
        write(name, content, old, mode);
    } catch (const PlatformError& error) {
        throw error.about(name);
    }
}

void Replacement::moveLast() {
    moveFile(files_.back().temporary, folder_ / files_.back().name);
    files_.pop_back();
    syncFolder(folder_);
}

void Replacement::writeJournal() {
    std::string lines;
    for (const NewFile& file : files_) {
        lines.append(file.temporary.filename().native()).append(" ").append(file.name).append(kLineEnd);
    }
    write(kJournal, lines, {}, 0666);
    moveLast();
    files_.clear();  // theirs now
}

void Replacement::commit() {
    if (files_.empty()) return;
    if (files_.size() == 1) return moveLast();
    writeJournal();
    complete(folder_);
}

bool Replacement::isPending(const fs::path& folder) {
    std::error_code missing;
    return fs::exists(fs::symlink_status(folder / kJournal, missing));
}

void Replacement::complete(const fs::path& folder) {
    try {
        if (isPending(folder)) carryOut(folder);
    } catch (const PlatformError& error) {
        throw error.about(kJournal);
    }
    removeLeftFiles(folder);
}

}  // namespace kolmera
