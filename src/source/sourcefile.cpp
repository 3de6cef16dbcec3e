#include "source/sourcefile.h"

#include <fnmatch.h>
#include <unistd.h>

#include <algorithm>
#include <span>
#include <utility>

#include "platform/error.h"
#include "platform/filesample.h"
#include "platform/printable.h"
#include "platform/spreadsheet/archive.h"

namespace kolmera {
namespace {

constexpr std::size_t kBeginning = 512;
constexpr std::string_view kGzip = "\x1F\x8B";

/// What goes wrong with an archive is told of a packed file, not of a workbook.
template <class Action>
auto ofArchive(Action action) {
    try {
        return action();
    } catch (const PlatformError& error) {
        if (error.number() == errors::kUnreadableSpreadsheet)
            throw PlatformError(errors::kUnreadableArchive, error.what());
        if (error.number() == errors::kProtectedSpreadsheet)
            throw PlatformError(errors::kProtectedArchive, error.what());
        throw;
    }
}

class MemberStream final : public ByteStream {
  public:
    MemberStream(std::unique_ptr<Archive> archive, const std::string& name, std::uint64_t most)
        : archive_(std::move(archive)), entry_(ofArchive([&] { return archive_->open(name, most); })) {}

    std::size_t read(char* bytes, std::size_t count) override {
        return ofArchive([&] { return entry_->read(bytes, count); });
    }
    [[nodiscard]] double progress() const override { return entry_->progress(); }

  private:
    std::unique_ptr<Archive> archive_;
    std::unique_ptr<ByteStream> entry_;
};

/// A stream that asks for cancelling with every piece; a file asks itself.
class CancellableStream final : public ByteStream {
  public:
    CancellableStream(std::unique_ptr<ByteStream> stream, std::function<bool()> cancelled)
        : stream_(std::move(stream)), cancelled_(std::move(cancelled)) {}

    std::size_t read(char* bytes, std::size_t count) override {
        stopIfCancelled(cancelled_);
        return stream_->read(bytes, count);
    }
    [[nodiscard]] double progress() const override { return stream_->progress(); }

  private:
    std::unique_ptr<ByteStream> stream_;
    std::function<bool()> cancelled_;
};

bool isZip(std::string_view beginning) { return signatureOf(beginning) == Signature::Zip; }

/// What every workbook in a .zip has, of one or the other maker.
bool isWorkbook(const std::vector<std::string>& names) {
    return std::ranges::any_of(
        names, [](const std::string& name) { return name == "[Content_Types].xml" || name == "mimetype"; });
}

/// Without folders and the notes that some systems add.
std::vector<std::string> filesAmong(std::vector<std::string> names) {
    std::erase_if(names, [](std::string_view name) {
        const std::string_view last = name.substr(name.rfind('/') + 1);
        return last.empty() || last.starts_with('.') || name.starts_with("__MACOSX/") || last == "Thumbs.db";
    });
    return names;
}

bool matches(const std::string& name, const std::string& pattern) {
    if (name == pattern) return true;
    const std::string last = name.substr(name.rfind('/') + 1);
    return fnmatch(pattern.c_str(), name.c_str(), FNM_CASEFOLD) == 0 ||
           fnmatch(pattern.c_str(), last.c_str(), FNM_CASEFOLD) == 0;
}

std::string listed(const std::vector<std::string>& names) {
    constexpr std::size_t kMost = 20;
    constexpr std::size_t kNameCharacters = 60;
    std::string list;
    for (const std::string& name : std::span(names).first(std::min(names.size(), kMost))) {
        list.append(list.empty() ? "" : ", ").append(printable(name, kNameCharacters));
    }
    return names.size() > kMost ? list.append(", ...") : list;
}

std::string chosenMember(const std::vector<std::string>& names, const std::string& pattern) {
    if (std::ranges::find(names, pattern) != names.end()) return pattern;
    std::vector<std::string> found = names;
    if (!pattern.empty()) std::erase_if(found, [&](const std::string& name) { return !matches(name, pattern); });
    if (found.size() == 1) return found.front();
    if (found.empty()) throw PlatformError(errors::kNoSuchMember, "not in the archive").about(pattern);
    throw PlatformError(errors::kSeveralMembers, "several files in the archive").about(listed(found));
}

std::string firstBytes(const Descriptor& file) {
    std::string beginning(kBeginning, '\0');
    beginning.resize(file.readAt(0, beginning.data(), beginning.size()));
    return beginning;
}

std::string firstBytes(ByteStream& stream) {
    std::string beginning(kBeginning, '\0');
    beginning.resize(readFully(stream, beginning.data(), beginning.size()));
    return beginning;
}

bool canSeek(const Descriptor& file) { return lseek(file.get(), 0, SEEK_CUR) >= 0; }

}  // namespace

std::vector<std::string> SourceFile::membersOf(const Descriptor& file) {
    if (!canSeek(file) || !isZip(firstBytes(file))) return {};
    std::vector<std::string> names = ofArchive([&] { return Archive(file).names(); });
    if (isWorkbook(names)) return {};
    return filesAmong(std::move(names));
}

SourceFile SourceFile::ofBytes(std::string bytes) {
    SourceFile source;
    source.beginning_ = bytes.substr(0, kBeginning);
    source.stream_ = std::make_unique<PrefixedStream>(std::move(bytes), nullptr);
    return source;
}

SourceFile SourceFile::of(Descriptor file, const std::string& member, const SourceLimits& limits) {
    SourceFile source;
    source.limits_ = limits;
    if (!canSeek(file)) {
        auto pipe = std::make_unique<FileStream>(std::move(file), limits.cancelled);
        source.beginning_ = firstBytes(*pipe);
        source.stream_ = std::make_unique<PrefixedStream>(source.beginning_, std::move(pipe));
        if (!isZip(source.beginning_)) {
            if (source.beginning_.starts_with(kGzip)) source.unpack();
            return source;
        }
        file = keptInNamelessFile(*source.stream_);
    }
    source.beginning_ = firstBytes(file);
    if (isZip(source.beginning_)) {
        auto archive = ofArchive([&] { return std::make_unique<Archive>(file); });
        const std::vector<std::string> names = archive->names();
        if (!isWorkbook(names)) {
            source.member_ = chosenMember(filesAmong(names), member);
            source.stream_ = std::make_unique<CancellableStream>(
                std::make_unique<MemberStream>(std::move(archive), source.member_, limits.unpackedBytes),
                limits.cancelled);
            source.beginning_ = firstBytes(*source.stream_);
            source.stream_ = std::make_unique<PrefixedStream>(source.beginning_, std::move(source.stream_));
            return source;
        }
    }
    if (lseek(file.get(), 0, SEEK_SET) != 0) throwSystemError(errno);
    if (source.beginning_.starts_with(kGzip)) {
        source.stream_ = std::make_unique<FileStream>(std::move(file), limits.cancelled);
        source.unpack();
    } else {
        source.file_ = std::move(file);
    }
    return source;
}

void SourceFile::unpack() {
    stream_ = std::make_unique<CancellableStream>(
        std::make_unique<GzipStream>(std::move(stream_), limits_.unpackedBytes), limits_.cancelled);
    beginning_ = firstBytes(*stream_);
    stream_ = std::make_unique<PrefixedStream>(beginning_, std::move(stream_));
}

std::unique_ptr<ByteStream> SourceFile::stream() && {
    if (file_) return std::make_unique<FileStream>(std::move(*file_), limits_.cancelled);
    return std::move(stream_);
}

Descriptor SourceFile::file() && {
    if (file_) return std::move(*file_);
    return keptInNamelessFile(*stream_);
}

}  // namespace kolmera
