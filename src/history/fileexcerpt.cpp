#include "history/fileexcerpt.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <ctime>

#include "platform/descriptor.h"
#include "platform/encodings.h"
#include "platform/error.h"

namespace kolmera {
namespace {

constexpr std::int64_t kAround = 2000;     ///< bytes that are shown before and behind the record
constexpr std::int64_t kMost = 64 * 1024;  ///< of the record itself

std::string bytesAt(const Descriptor& file, std::int64_t from, std::int64_t to) {
    std::string bytes(static_cast<std::size_t>(std::max(to - from, std::int64_t{0})), '\0');
    bytes.resize(file.readAt(static_cast<std::size_t>(from), bytes.data(), bytes.size()));
    return bytes;
}

bool isUtf8(std::string_view text) {
    bool beyondAscii = false;
    while (!text.empty()) {
        const FirstCharacter first = firstCharacter(text);
        if (!first.character) return false;
        beyondAscii = beyondAscii || first.length > 1;
        text.remove_prefix(first.length);
    }
    return beyondAscii;
}

/// Line ends as LF, other control characters as a dot.
std::string readable(std::string_view bytes, bool utf8) {
    std::string text;
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        const char c = bytes[at];
        if (c == '\r') {
            text += '\n';
            if (at + 1 < bytes.size() && bytes[at + 1] == '\n') ++at;
        } else {
            text += c == '\n' || c == '\t' || static_cast<unsigned char>(c) >= ' ' ? c : '.';
        }
    }
    return utf8 ? text : toUtf8(text, CodePage::Windows1252);
}

bool isLineEnd(char c) { return c == '\r' || c == '\n'; }

void dropHalfLines(std::string& before, bool fromStart, std::string& after, bool toEnd) {
    const auto first = std::ranges::find_if(before, isLineEnd);
    if (!fromStart && first != before.end())
        before.erase(before.begin(), std::find_if_not(first, before.end(), isLineEnd));
    const auto last = std::find_if(after.rbegin(), after.rend(), isLineEnd);
    if (!toEnd && last != after.rend()) after.erase(last.base(), after.end());
}

bool isAsRecorded(const struct stat& now, const RecordedFile& file) {
    std::tm local{};
    localtime_r(&now.st_mtime, &local);
    const std::string modified =
        fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}", local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
                    local.tm_hour, local.tm_min, local.tm_sec);
    return now.st_size == file.size && modified == file.modified;
}

}  // namespace

FileExcerpt excerptOf(const RecordedFile& recorded, const RecordPlace& place) {
    FileExcerpt excerpt;
    try {
        const Descriptor file(recorded.path, O_RDONLY | O_NONBLOCK);
        struct stat now {};
        if (fstat(file.get(), &now) != 0 || !S_ISREG(now.st_mode)) return excerpt;
        const std::int64_t begin = place.offset;
        const std::int64_t end = begin + std::min(place.length, kMost);
        if (end > now.st_size) {
            excerpt.file = FileExcerpt::File::Shorter;
            return excerpt;
        }
        excerpt.file = isAsRecorded(now, recorded) ? FileExcerpt::File::Same : FileExcerpt::File::Changed;
        const std::int64_t from = std::max(begin - kAround, std::int64_t{0});
        std::string before = bytesAt(file, from, begin);
        const std::string record = bytesAt(file, begin, end);
        std::string after = bytesAt(file, end, end + kAround);
        dropHalfLines(before, from == 0, after, end + kAround >= now.st_size);
        const bool utf8 = isUtf8(before + record + after);
        excerpt.before = readable(before, utf8);
        excerpt.record = readable(record, utf8);
        excerpt.after = readable(after, utf8);
    } catch (const PlatformError&) {
        excerpt.file = FileExcerpt::File::Missing;
    }
    return excerpt;
}

}  // namespace kolmera
