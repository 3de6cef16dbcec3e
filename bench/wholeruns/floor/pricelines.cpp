#include "wholeruns/floor/pricelines.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <ctime>
#include <system_error>

namespace kolmera::bench {

PriceLines::PriceLines(const std::filesystem::path& file) : file_(std::fopen(file.c_str(), "rb")) {
    if (!file_) throw std::system_error(errno, std::generic_category(), file.string());
}

PriceLines::~PriceLines() {
    std::free(line_);
    std::fclose(file_);
}

bool PriceLines::next(std::string& line) {
    const auto length = getdelim(&line_, &room_, '\n', file_);
    if (length < 0) return false;
    line.assign(line_, static_cast<std::size_t>(length));
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
    return true;
}

bool PriceLines::next(std::size_t length, std::string& record) {
    record.resize(length);
    record.resize(std::fread(record.data(), 1, length, file_));
    std::getc(file_);
    return !record.empty();
}

std::string_view Decoder::operator()(std::string_view bytes) {
    const auto isAscii = [](char byte) { return static_cast<unsigned char>(byte) < 0x80; };
    if (std::ranges::all_of(bytes, isAscii)) return bytes;
    if (used_ == texts_.size()) texts_.emplace_back();
    std::string& text = texts_[used_++];
    toUtf8(bytes, page_, text);
    return text;
}

std::string_view withoutBlanks(std::string_view text) {
    const auto first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string_view piece(std::string_view bytes, std::size_t first, std::size_t last) {
    return bytes.size() < first ? std::string_view() : withoutBlanks(bytes.substr(first - 1, last - first + 1));
}

double number(std::string_view text) {
    char digits[40];
    if (text.empty() || text.size() > sizeof digits) return 0;
    std::ranges::replace_copy(text, digits, ',', '.');
    double value = 0;
    const auto [end, error] = std::from_chars(digits, digits + text.size(), value);
    return error == std::errc() && end == digits + text.size() ? value : 0;
}

std::string dateText(std::string_view text) {
    if (text.size() != 8) return {};
    return std::string(text.substr(0, 4)) + '-' + std::string(text.substr(4, 2)) + '-' + std::string(text.substr(6));
}

std::string todayText() {
    const std::time_t now = std::time(nullptr);
    std::tm day{};
    localtime_r(&now, &day);
    char text[16];
    return {text, std::strftime(text, sizeof text, "%Y-%m-%d", &day)};
}

}  // namespace kolmera::bench
