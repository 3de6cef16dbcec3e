#include "platform/spreadsheet/richtext.h"

#include "platform/error.h"

namespace kolmera {

void RichText::start(std::string_view element) {
    inText_ |= element == "t";
    inReadingAid_ |= element == "rPh";
}

void RichText::end(std::string_view element) {
    if (element == "t") inText_ = false;
    if (element == "rPh") inReadingAid_ = false;
}

void RichText::add(std::string_view piece) {
    if (inText_ && !inReadingAid_) appendLimited(text_, piece);
}

void appendLimited(std::string& text, std::string_view piece) {
    constexpr std::size_t kMost = std::size_t{1} << 20;
    if (text.size() + piece.size() > kMost) {
        throw PlatformError(errors::kUnreadableSpreadsheet, "A text in the workbook is too long.");
    }
    text += piece;
}

}  // namespace kolmera
