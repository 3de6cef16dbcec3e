#include "import/run/preparation.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <tuple>

#include "platform/lettercase.h"

namespace kolmera {
namespace fs = std::filesystem;
namespace {

bool namesFilerItself(std::string_view command) { return upperCase(command).find("\\FILER") != std::string::npos; }

/// Tried with a file of a name of its own: rights alone do not tell it of every file system.
bool canBeWritten(const fs::path& folder) {
    std::error_code failed;
    fs::create_directories(folder, failed);
    std::string name = (folder / ".kolmera-XXXXXX").string();
    const int file = mkostemp(name.data(), O_CLOEXEC);
    if (file < 0) return false;
    close(file);
    return unlink(name.c_str()) == 0;
}

fs::path workingFolder(const StartState& state, std::string_view command) {
    const bool inBase = namesFilerItself(command);
    const auto below = [inBase](const fs::path& base) { return inBase ? base : findWithoutCase(base, "Filer"); };
    const fs::path folder = below(state.programFolder());
    if (canBeWritten(folder)) return folder;
    const fs::path other = below(state.dataFolder());
    std::error_code told;
    fs::create_directories(other, told);
    return other;
}

auto asTuple(const struct statx& file) {
    const auto time = [](const struct statx_timestamp& stamp) { return std::pair(stamp.tv_sec, stamp.tv_nsec); };
    return std::tuple(file.stx_dev_major, file.stx_dev_minor, file.stx_ino, file.stx_size, time(file.stx_mtime),
                      time(file.stx_ctime));
}

}  // namespace

BatchFile preparationBatch(const StartState& state, std::string_view command) {
    return {workingFolder(state, command), std::string(kPreparationBatch)};
}

FileMark::FileMark(const fs::path& file) {
    struct statx seen {};
    if (statx(AT_FDCWD, file.c_str(), 0, STATX_BASIC_STATS, &seen) == 0 && S_ISREG(seen.stx_mode)) seen_ = seen;
}

bool FileMark::unchangedSince(const FileMark& before) const {
    return seen_ && before.seen_ && asTuple(*seen_) == asTuple(*before.seen_);
}

std::optional<char> disketteDrive(std::string_view text) {
    if (text.empty()) return std::nullopt;
    const char letter = upperCase(text.substr(0, 1))[0];
    const bool drive = letter == text[0] || (text.size() > 1 && text[1] == ':');
    return drive && (letter == 'A' || letter == 'B') ? std::optional(letter) : std::nullopt;
}

}  // namespace kolmera
