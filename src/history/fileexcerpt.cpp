#include "history/fileexcerpt.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <ctime>

#include "platform/descriptor.h"
#include "platform/encodings.h"
#include "platform/error.h"
#include "platform/sha256.h"
#include "source/readers/opensource.h"

namespace kolmera {
namespace {

constexpr std::int64_t kAround = 2000;     ///< bytes that are shown before and behind the record
constexpr std::int64_t kMost = 64 * 1024;  ///< of the record itself

std::string bytesAt(const Descriptor& file, std::int64_t from, std::int64_t to) {
    std::string bytes(static_cast<std::size_t>(std::max(to - from, std::int64_t{0})), '\0');
    bytes.resize(file.readAt(static_cast<std::size_t>(from), bytes.data(), bytes.size()));
    return bytes;
}

/// Line ends as LF, other control characters as a dot.
std::string readable(std::string_view bytes, CodePage codePage) {
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
    return toUtf8(text, codePage);
}

bool isLineEnd(char c) { return c == '\r' || c == '\n'; }

void dropHalfLines(std::string& before, bool fromStart, std::string& after, bool toEnd) {
    const auto first = std::ranges::find_if(before, isLineEnd);
    if (!fromStart && first != before.end())
        before.erase(before.begin(), std::find_if_not(first, before.end(), isLineEnd));
    const auto last = std::find_if(after.rbegin(), after.rend(), isLineEnd);
    if (!toEnd && last != after.rend()) after.erase(last.base(), after.end());
}

/// A row in a line of its own, in which its cells have no line breaks and tabs.
std::string lineOf(const Row& row) {
    std::string line;
    for (const Cell& cell : row.cells) {
        if (&cell != row.cells.data()) line += '\t';
        const std::size_t begin = line.size();
        line += cell.text;
        std::replace_if(
            line.begin() + static_cast<std::ptrdiff_t>(begin), line.end(),
            [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
    }
    return line += '\n';
}

std::string modifiedText(const struct stat& file) {
    std::tm local{};
    localtime_r(&file.st_mtime, &local);
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}", local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
                       local.tm_hour, local.tm_min, local.tm_sec);
}

std::string digestOf(const Descriptor& file) {
    constexpr std::size_t kPiece = 256 * 1024;
    Sha256 digest;
    std::string piece(kPiece, '\0');
    std::size_t offset = 0;
    while (const std::size_t count = file.readAt(offset, piece.data(), kPiece)) {
        digest.add(std::string_view(piece).substr(0, count));
        offset += count;
    }
    return digest.hexadecimal();
}

}  // namespace

/// Of a run that did not read its file to the end only the time is known.
bool RecordedPriceFile::isAsRecorded(const Descriptor& file, const struct stat& now) {
    if (recorded_.sha256.empty()) return modifiedText(now) == recorded_.modified;
    if (now.st_size != recorded_.size) return false;
    const std::array<std::int64_t, 6> state{static_cast<std::int64_t>(now.st_dev),
                                            static_cast<std::int64_t>(now.st_ino),
                                            now.st_mtim.tv_sec,
                                            now.st_mtim.tv_nsec,
                                            now.st_ctim.tv_sec,
                                            now.st_ctim.tv_nsec};
    if (looked_ != state) {
        same_ = digestOf(file) == recorded_.sha256;
        looked_ = state;
    }
    return same_;
}

/// The record's row, with some rows around it.
void RecordedPriceFile::showRows(std::int64_t record, FileExcerpt& excerpt) const {
    constexpr std::uint64_t kRows = 20;
    const auto wanted = static_cast<std::uint64_t>(record);
    const auto rows = openRows(recorded_.path, *source_);
    for (Row row; rows->next(row) && row.number <= wanted + kRows;) {
        if (row.number + kRows < wanted) continue;
        (row.number < wanted ? excerpt.before : row.number == wanted ? excerpt.record : excerpt.after) += lineOf(row);
    }
    if (excerpt.record.empty()) excerpt = {.file = FileExcerpt::File::Shorter, .before = {}, .record = {}, .after = {}};
}

FileExcerpt RecordedPriceFile::excerpt(const RecordPlace& place) {
    FileExcerpt excerpt;
    try {
        const Descriptor file(recorded_.path, O_RDONLY | O_NONBLOCK);
        struct stat now {};
        if (fstat(file.get(), &now) != 0 || !S_ISREG(now.st_mode)) return excerpt;
        if (source_) {
            excerpt.file = isAsRecorded(file, now) ? FileExcerpt::File::Same : FileExcerpt::File::Changed;
            showRows(place.record, excerpt);
            return excerpt;
        }
        const std::int64_t begin = place.offset;
        const std::int64_t end = begin + std::min(place.length, kMost);
        if (end > now.st_size) {
            excerpt.file = FileExcerpt::File::Shorter;
            return excerpt;
        }
        excerpt.file = isAsRecorded(file, now) ? FileExcerpt::File::Same : FileExcerpt::File::Changed;
        const std::int64_t from = std::max(begin - kAround, std::int64_t{0});
        std::string before = bytesAt(file, from, begin);
        const std::string record = bytesAt(file, begin, end);
        std::string after = bytesAt(file, end, end + kAround);
        dropHalfLines(before, from == 0, after, end + kAround >= now.st_size);
        excerpt.before = readable(before, codePage_);
        excerpt.record = readable(record, codePage_);
        excerpt.after = readable(after, codePage_);
    } catch (const PlatformError&) {
        excerpt.file = FileExcerpt::File::Missing;
    }
    return excerpt;
}

}  // namespace kolmera
