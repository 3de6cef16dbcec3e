#include "cli/printablelines.h"

#include <limits>
#include <string_view>

#include "platform/printable.h"

namespace kolmera::cli {

namespace {

std::string printableLines(std::string_view text) {
    std::string shown;
    while (!text.empty()) {
        const std::size_t end = text.find_first_of("\n\t");
        shown += printable(text.substr(0, end), std::numeric_limits<std::size_t>::max());
        if (end == std::string_view::npos) break;
        shown += text[end];
        text.remove_prefix(end + 1);
    }
    return shown;
}

}  // namespace

PrintableLines::~PrintableLines() { pass(); }

PrintableLines::int_type PrintableLines::overflow(int_type character) {
    if (traits_type::eq_int_type(character, traits_type::eof())) return traits_type::not_eof(character);
    line_ += traits_type::to_char_type(character);
    if (line_.back() == '\n') pass();
    return target_.good() ? character : traits_type::eof();
}

int PrintableLines::sync() {
    pass();
    return target_.flush().good() ? 0 : -1;
}

void PrintableLines::pass() {
    target_ << printableLines(line_);
    line_.clear();
}

}  // namespace kolmera::cli
