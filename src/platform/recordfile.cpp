#include "platform/recordfile.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <limits>

#include "platform/encodings.h"
#include "platform/error.h"
#include "platform/lettercase.h"
#include "platform/locale.h"

namespace kolmera {

namespace {

constexpr std::string_view kRecordEnd = "\r\n";

std::size_t lengthOf(const RecordLayout& layout) { return static_cast<std::size_t>(layout.length); }

std::size_t offsetOf(const RecordLayout& layout, int number) {
    return static_cast<std::size_t>(number - 1) * lengthOf(layout);
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
    if (layout.crLf) fill(layout.fields.back(), kRecordEnd);
}

Record::Record(const RecordLayout& layout, std::string bytes) : bytes_(std::move(bytes)) {
    if (bytes_.size() == lengthOf(layout)) return;
    bytes_.resize(lengthOf(layout), ' ');
    if (layout.crLf) bytes_.replace(bytes_.size() - kRecordEnd.size(), kRecordEnd.size(), kRecordEnd);
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
    const std::string text = composed(utf8);
    if (const std::string lacking = lackingCharacters(text, CodePage::Windows1252); !lacking.empty()) {
        throw PlatformError(errors::kWrongType, "Windows-1252 lacks these characters")
            .ofSystem(EILSEQ)
            .about(std::string(field.name) + ": " + lacking);
    }
    if (characterCount(text) > static_cast<std::size_t>(field.width)) {
        // Without the text, which may hold a password.
        throw PlatformError(errors::kTextTooLong, "it has more than " + std::to_string(field.width) + " characters")
            .about(std::string(field.name));
    }
    setCutText(field, text);
}

void Record::setCutText(RecordField field, std::string_view utf8) {
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

namespace {

/// What a last record may lack.
constexpr std::size_t kShort = 2;

}  // namespace

Records::Records(const RecordLayout& layout, std::string bytes) : layout_(&layout), bytes_(std::move(bytes)) {
    const std::size_t beyond = bytes_.size() % lengthOf(layout);
    if (beyond < lengthOf(layout) - kShort) return;
    const Record last(layout, bytes_.substr(bytes_.size() - beyond));
    bytes_.replace(bytes_.size() - beyond, beyond, last.bytes());
}

int Records::count() const {
    constexpr std::size_t kMost = std::numeric_limits<int>::max();
    return static_cast<int>(std::min(bytes_.size() / lengthOf(*layout_), kMost));
}

Record Records::read(int number) const {
    if (number < 1 || number > count()) return Record(*layout_);
    return Record(*layout_, bytes_.substr(offsetOf(*layout_, number), lengthOf(*layout_)));
}

void Records::write(int number, const Record& record) {
    if (number < 1) {
        throw PlatformError(errors::kNoCurrentRecord, "there is no such record")
            .about(std::string(layout_->file) + ": " + std::to_string(number));
    }
    const std::size_t offset = offsetOf(*layout_, number);
    if (bytes_.size() < offset + lengthOf(*layout_)) bytes_.resize(offset + lengthOf(*layout_));
    bytes_.replace(offset, lengthOf(*layout_), record.bytes());
}

int Records::append(const Record& record) {
    const int number = count() + 1;
    write(number, record);
    return number;
}

int Records::keepOnly(const std::function<bool(int number, Record& record)>& keep) {
    std::string kept;
    int removed = 0;
    const int all = count();
    for (int number = 1; number <= all; ++number) {
        Record record = read(number);
        if (keep(number, record)) {
            kept += record.bytes();
        } else {
            ++removed;
        }
    }
    bytes_.replace(0, offsetOf(*layout_, all + 1), kept);
    return removed;
}

}  // namespace kolmera
