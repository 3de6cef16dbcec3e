#include "platform/spreadsheet/cellformats.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>

#include "platform/lettercase.h"
#include "platform/spreadsheet/xmlpart.h"

namespace kolmera {

namespace {

int numberOf(std::string_view text) {
    int number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

/// The formats below 164 have no text in the file.
bool isBuiltInDate(int id) {
    constexpr struct { int first, last; } kDates[] = {{14, 17}, {22, 22}, {27, 31}, {34, 36}, {50, 54}, {57, 58}};
    return std::ranges::any_of(kDates, [id](const auto& range) { return range.first <= id && id <= range.last; });
}

/// The letters of a format that stand for something: without quoted and escaped ones, without "[Red]" and "[$-41D]".
/// Only the first of the formats for positive, negative and other values counts.
std::string meaningfulLetters(std::string_view format) {
    std::string letters;
    for (std::size_t i = 0; i < format.size() && format[i] != ';'; ++i) {
        const char c = format[i];
        if (c == '\\' || c == '_' || c == '*') {
            ++i;
        } else if (c == '"' || c == '[') {
            i = std::min(format.find(c == '"' ? '"' : ']', i + 1), format.size());
        } else {
            letters += c;
        }
    }
    return lowerCase(letters);
}

class StylesPart final : public XmlHandler {
  public:
    explicit StylesPart(CellFormats& formats) : formats_(formats) {}

    void start(std::string_view name, const XmlAttributes& attributes) override {
        if (name == "numFmt") {
            formats_.define(numberOf(attributes["numFmtId"]), attributes["formatCode"]);
        } else if (name == "cellXfs") {
            inCells_ = true;
        } else if (name == "xf" && inCells_) {
            formats_.add(numberOf(attributes["numFmtId"]));
        }
    }
    void end(std::string_view name) override {
        if (name == "cellXfs") inCells_ = false;
    }

  private:
    CellFormats& formats_;
    bool inCells_ = false;
};

}  // namespace

bool isDateFormat(std::string_view format) {
    const std::string letters = meaningfulLetters(format);
    const bool time = letters.find_first_of("hs") != std::string::npos;
    return letters.find_first_of(time ? "yd" : "ydm") != std::string::npos;
}

Value dateOfSerial(double serial, bool startsIn1904) {
    constexpr double kFrom1904 = 1462;
    constexpr double kAfterLast = 2958466;  // 10000-01-01
    const double day = std::floor(serial + (startsIn1904 ? kFrom1904 : 0));
    if (!(day >= 1 && day < kAfterLast)) return serial;
    return Date{static_cast<std::int32_t>(day)};
}

void CellFormats::define(int numberFormat, std::string_view text) {
    constexpr std::size_t kMostZeros = 15;
    const bool onlyZeros = text.size() > 1 && text.size() <= kMostZeros && text.find_first_not_of('0') == text.npos;
    defined_[numberFormat] = {isDateFormat(text), static_cast<std::uint8_t>(onlyZeros ? text.size() : 0)};
}

void CellFormats::add(int numberFormat) {
    const auto own = defined_.find(numberFormat);
    const Format format = own == defined_.end() ? Format{isBuiltInDate(numberFormat), 0} : own->second;
    dates_.push_back(format.isDate);
    zeros_.push_back(format.zeros);
}

Value CellFormats::valueOf(double number, std::size_t format, bool startsIn1904, bool leadingZeros) const {
    constexpr double kMostExact = 1e15;
    if (!std::isfinite(number)) return Null();
    if (isDate(format)) return dateOfSerial(number, startsIn1904);
    const std::size_t digits = leadingZeros ? zeros(format) : 0;
    if (digits == 0 || number < 0 || number >= kMostExact || number != std::floor(number)) return number;
    return fmt::format("{:0{}}", static_cast<std::int64_t>(number), digits);
}

CellFormats CellFormats::of(const Archive& archive, const std::string& part) {
    CellFormats formats;
    if (part.empty()) return formats;
    StylesPart handler(formats);
    readXmlPart(archive, part, kMostFrameBytes, handler);
    return formats;
}

}  // namespace kolmera
