#include "platform/recordfile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "platform/encodings.h"
#include "platform/error.h"
#include "platform/lettercase.h"
#include "platform/locale.h"
#include "platform/paths.h"

namespace kolmera {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kBuffer = "BUFFER.TXT";

/// Names the file in an error of the statement: the system's text does not.
template <typename Statement>
auto naming(std::string_view file, Statement&& statement) {
    try {
        return statement();
    } catch (const PlatformError& error) {
        throw error.about(std::string(file));
    }
}

/// The file itself, found without regard to letter case.
fs::path existingName(const fs::path& file) { return findWithoutCase(file.parent_path(), file.filename().string()); }

std::size_t lengthOf(const RecordLayout& layout) { return static_cast<std::size_t>(layout.length); }

std::size_t offsetOf(const RecordLayout& layout, int number) {
    return static_cast<std::size_t>(number - 1) * lengthOf(layout);
}

/// Opens for reading; nothing when the file is missing and cannot be made in a folder that can only be read.
std::optional<Descriptor> openForReading(const fs::path& file) {
    std::error_code error;
    if (fs::exists(file, error) || error) return Descriptor(file, O_RDONLY);
    try {
        return Descriptor(file, O_RDWR | O_CREAT);
    } catch (const PlatformError&) {
        if (!fs::is_directory(file.parent_path(), error)) throw;
        return std::nullopt;
    }
}

}  // namespace

Record::Record(const RecordLayout& layout) : bytes_(lengthOf(layout), ' ') {
    const auto fill = [this](const RecordField& field, std::string_view with) {
        const auto width = static_cast<std::size_t>(field.width);
        for (std::size_t i = 0; i < width; ++i) {
            bytes_[static_cast<std::size_t>(field.offset) + i] = with[i % with.size()];
        }
    };
    for (const RecordField& field : layout.fields) {
        if (field.name.starts_with("reserved")) fill(field, std::string_view("\0", 1));
    }
    if (layout.crLf) fill(layout.fields.back(), "\r\n");
}

Record::Record(const RecordLayout& layout, std::string bytes) : bytes_(std::move(bytes)) {
    bytes_.resize(lengthOf(layout), ' ');
}

std::string Record::text(RecordField field) const {
    const auto bytes =
        std::string_view(bytes_).substr(static_cast<std::size_t>(field.offset), static_cast<std::size_t>(field.width));
    return toUtf8(trimmed(bytes), CodePage::Windows1252);
}

int Record::number(RecordField field) const {
    constexpr double kLowest = std::numeric_limits<int>::min();
    constexpr double kHighest = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(roundHalfEven(leadingNumber(text(field))), kLowest, kHighest));
}

void Record::setText(RecordField field, std::string_view utf8) {
    std::string bytes = fromUtf8(utf8, CodePage::Windows1252);
    bytes.resize(static_cast<std::size_t>(field.width), ' ');
    bytes_.replace(static_cast<std::size_t>(field.offset), bytes.size(), bytes);
}

void Record::setNumber(RecordField field, int number) {
    const auto width = static_cast<std::size_t>(field.width);
    const std::string digits = std::to_string(number);
    if (number < 0 || digits.size() > width) {
        throw PlatformError(errors::kTextTooLong, "the number has too many digits")
            .about(std::string(field.name) + ": " + digits);
    }
    setText(field, std::string(width - digits.size(), '0') + digits);
}

RecordFile::RecordFile(const fs::path& file, const RecordLayout& layout, Mode mode) : layout_(layout) {
    const fs::path existing = existingName(file);
    if (mode == Mode::ReadWrite) {
        descriptor_ = naming(layout.file, [&] { return Descriptor(existing, O_RDWR | O_CREAT); });
    } else if (auto opened = naming(layout.file, [&] { return openForReading(existing); })) {
        descriptor_ = std::move(*opened);
    }
}

int RecordFile::count() const {
    if (!descriptor_.isOpen()) return 0;
    constexpr std::size_t kMost = std::numeric_limits<int>::max();
    return static_cast<int>(std::min(descriptor_.size() / lengthOf(layout_), kMost));
}

Record RecordFile::read(int number) const {
    if (number < 1 || number > count()) return Record(layout_);
    std::string bytes(lengthOf(layout_), ' ');
    const std::size_t offset = offsetOf(layout_, number);
    bytes.resize(naming(layout_.file, [&] { return descriptor_.readAt(offset, bytes.data(), bytes.size()); }));
    return Record(layout_, std::move(bytes));
}

void RecordFile::write(int number, const Record& record) {
    if (number < 1)
        throw PlatformError(errors::kNoCurrentRecord, "there is no such record")
            .about(std::string(layout_.file) + ": " + std::to_string(number));
    naming(layout_.file, [&] { descriptor_.writeAt(offsetOf(layout_, number), record.bytes()); });
}

int RecordFile::append(const Record& record) {
    const int number = count() + 1;
    write(number, record);
    return number;
}

namespace {

/// Copies what is kept to the end of `buffer`, then the bytes of a partial record as they are. Returns the number of
/// records left out.
int copyKept(const Descriptor& old, const Descriptor& buffer, const RecordLayout& layout,
             const std::function<bool(int number, Record& record)>& keep) {
    std::string bytes(lengthOf(layout), '\0');
    std::size_t end = 0;
    int removed = 0;
    for (int number = 1;; ++number) {
        const std::size_t got =
            naming(layout.file, [&] { return old.readAt(offsetOf(layout, number), bytes.data(), bytes.size()); });
        if (got < bytes.size()) {
            naming(kBuffer, [&] { buffer.writeAt(end, std::string_view(bytes).substr(0, got)); });
            return removed;
        }
        Record record(layout, bytes);
        if (!keep(number, record)) {
            ++removed;
            continue;
        }
        naming(kBuffer, [&] { buffer.writeAt(end, record.bytes()); });
        end += bytes.size();
    }
}

}  // namespace

int rewriteRecords(const fs::path& file, const RecordLayout& layout,
                   const std::function<bool(int number, Record& record)>& keep) {
    const fs::path existing = existingName(file);
    const fs::path bufferName = findWithoutCase(file.parent_path(), std::string(kBuffer));
    const Descriptor old = naming(layout.file, [&] { return Descriptor(existing, O_RDWR | O_CREAT); });
    try {
        const Descriptor buffer = naming(kBuffer, [&] { return Descriptor(bufferName, O_RDWR | O_CREAT | O_TRUNC); });
        const int removed = copyKept(old, buffer, layout, keep);
        naming(layout.file, [&] {
            buffer.copyRights(old);
            moveOver(buffer, bufferName, existing);
        });
        return removed;
    } catch (...) {
        std::error_code ignored;
        fs::remove(bufferName, ignored);
        throw;
    }
}

}  // namespace kolmera
