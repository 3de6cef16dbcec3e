#include "platform/spreadsheet/archive.h"

#include <fcntl.h>
#include <unistd.h>
#include <zip.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "platform/descriptor.h"
#include "platform/error.h"

namespace kolmera {

namespace {

[[noreturn]] void throwZipError(zip_error_t* error) {
    const int number = zip_error_code_zip(error);
    if (number == ZIP_ER_NOPASSWD || number == ZIP_ER_WRONGPASSWD || number == ZIP_ER_ENCRNOTSUPP) {
        throw PlatformError(errors::kProtectedSpreadsheet, "The workbook is protected by a password.");
    }
    const int systemError = zip_error_code_system(error);
    // EINVAL comes from a position in the file that cannot be: damage, too.
    const bool isSystems = zip_error_system_type(error) == ZIP_ET_SYS && systemError != 0 && systemError != EINVAL;
    if (isSystems) throwSystemError(systemError);
    throw PlatformError(errors::kUnreadableSpreadsheet,
                        std::string("The file is damaged: ") + zip_error_strerror(error) + ".");
}

zip* opened(const std::filesystem::path& file, Archive::Mode mode) {
    const int flags = mode == Archive::Mode::Read   ? ZIP_RDONLY
                      : mode == Archive::Mode::Make ? ZIP_CREATE | ZIP_EXCL
                                                    : 0;
    int number = 0;
    zip* archive = zip_open(file.c_str(), flags, &number);
    if (archive) return archive;
    zip_error_t error;
    zip_error_init_with_code(&error, number);
    throwZipError(&error);
}

struct CloseEntry {
    void operator()(zip_file_t* entry) const { zip_fclose(entry); }
};

class EntryStream final : public ByteStream {
  public:
    EntryStream(zip_file_t* entry, const zip_stat_t& status, std::uint64_t most, const PlatformError& tooLarge)
        : entry_(entry), packed_(status.comp_size), size_(status.size), most_(most), tooLarge_(tooLarge) {}

    std::size_t read(char* bytes, std::size_t count) override {
        const zip_int64_t got = zip_fread(entry_.get(), bytes, count);
        if (got < 0) throwZipError(zip_file_get_error(entry_.get()));
        total_ += static_cast<std::uint64_t>(got);
        // The sizes that the file declares are not believed: what comes out is counted.
        if (total_ > most_ || (total_ > kSmallUnpacked && total_ / kMostUnpackedRatio > packed_)) {
            throw PlatformError(tooLarge_);
        }
        return static_cast<std::size_t>(got);
    }
    [[nodiscard]] double progress() const override {
        return size_ == 0 ? 0 : std::min(1.0, static_cast<double>(total_) / static_cast<double>(size_));
    }

  private:
    std::unique_ptr<zip_file_t, CloseEntry> entry_;
    std::uint64_t packed_;
    std::uint64_t size_;
    std::uint64_t most_;
    PlatformError tooLarge_;
    std::uint64_t total_ = 0;
};

zip* openedForReading(const Descriptor& file) {
    // The archive closes what it is given.
    const int own = fcntl(file.get(), F_DUPFD_CLOEXEC, 0);
    if (own < 0) throwSystemError(errno);
    int number = 0;
    if (zip* archive = zip_fdopen(own, 0, &number)) return archive;
    close(own);
    zip_error_t error;
    zip_error_init_with_code(&error, number);
    throwZipError(&error);
}

}  // namespace

void Archive::Discard::operator()(zip* archive) const { zip_discard(archive); }

Archive::Archive(const std::filesystem::path& file, Mode mode) : zip_(opened(file, mode)) {}

Archive::Archive(const Descriptor& file) : zip_(openedForReading(file)) {}

std::vector<std::string> Archive::names() const {
    std::vector<std::string> names;
    const zip_int64_t count = zip_get_num_entries(zip_.get(), 0);
    for (zip_int64_t i = 0; i < count; ++i) {
        // Where the archive does not say, names are UTF-8 or those of DOS: guessed.
        if (const char* name = zip_get_name(zip_.get(), static_cast<zip_uint64_t>(i), 0)) names.emplace_back(name);
    }
    return names;
}

std::optional<std::uint64_t> Archive::find(const std::string& name) const {
    zip_int64_t index = zip_name_locate(zip_.get(), name.c_str(), 0);
    if (index < 0) index = zip_name_locate(zip_.get(), name.c_str(), ZIP_FL_NOCASE);
    if (index < 0) return std::nullopt;
    return static_cast<std::uint64_t>(index);
}

std::uint64_t Archive::existing(const std::string& name) const {
    if (const auto index = find(name)) return *index;
    throw PlatformError(errors::kUnreadableSpreadsheet, "The workbook lacks its part " + name + ".");
}

std::unique_ptr<ByteStream> Archive::openEntry(const std::string& name, std::uint64_t most,
                                               const PlatformError& tooLarge) const {
    const std::uint64_t index = existing(name);
    zip_stat_t status;
    if (zip_stat_index(zip_.get(), index, 0, &status) != 0) throwZipError(zip_get_error(zip_.get()));
    zip_file_t* entry = zip_fopen_index(zip_.get(), index, 0);
    if (!entry) throwZipError(zip_get_error(zip_.get()));
    return std::make_unique<EntryStream>(entry, status, most, tooLarge);
}

std::unique_ptr<ByteStream> Archive::open(const std::string& name, std::uint64_t most) const {
    return openEntry(name, most, PlatformError(errors::kUnpacksTooLarge, "A packed file is too large."));
}

std::unique_ptr<ByteStream> Archive::openPart(const std::string& name, std::uint64_t most) const {
    return openEntry(
        name, most,
        PlatformError(errors::kUnreadableSpreadsheet, "The part " + name + " of the workbook is too large."));
}

void Archive::stream(const std::string& name, std::uint64_t most,
                     const std::function<void(std::string_view)>& sink) const {
    const std::unique_ptr<ByteStream> entry = openPart(name, most);
    std::string buffer(std::size_t{64} << 10, '\0');
    while (const std::size_t got = entry->read(buffer.data(), buffer.size())) {
        sink(std::string_view(buffer).substr(0, got));
    }
}

std::string Archive::bytes(const std::string& name, std::uint64_t most) const {
    std::string all;
    stream(name, most, [&all](std::string_view piece) { all += piece; });
    return all;
}

void Archive::put(const std::string& name, zip_source* source, bool isNew) {
    if (source) {
        const bool done = isNew ? zip_file_add(zip_.get(), name.c_str(), source, ZIP_FL_ENC_UTF_8) >= 0
                                : zip_file_replace(zip_.get(), existing(name), source, 0) == 0;
        if (done) return;
        zip_source_free(source);
    }
    throwZipError(zip_get_error(zip_.get()));
}

void Archive::putBytes(const std::string& name, std::string bytes, bool isNew) {
    const std::string& kept = pending_.emplace_back(std::move(bytes));
    put(name, zip_source_buffer(zip_.get(), kept.data(), kept.size(), 0), isNew);
}

void Archive::addFile(const std::string& name, const std::filesystem::path& file) {
    put(name, zip_source_file(zip_.get(), file.c_str(), 0, 0), true);
}

void Archive::save() {
    if (zip_close(zip_.get()) != 0) throwZipError(zip_get_error(zip_.get()));
    static_cast<void>(zip_.release());
}

}  // namespace kolmera
