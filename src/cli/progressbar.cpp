#include "cli/progressbar.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>

#include "platform/encodings.h"

namespace kolmera::cli {
namespace {

constexpr int kBarWidth = 30;
constexpr std::int64_t kPauseMs = 100;

int columnsOf(int descriptor) {
    winsize size{};
    if (ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
    return 80;
}

std::int64_t nowMs() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

void writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written <= 0) return;  // a terminal that went away must not end the run
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

}  // namespace

ProgressBar::ProgressBar(int descriptor) : descriptor_(descriptor), terminal_(isatty(descriptor) == 1) {}

std::string ProgressBar::line(std::uint64_t position, std::uint64_t size, std::string_view text, int width) {
    const double share = size == 0 ? 1.0 : static_cast<double>(std::min(position, size)) / static_cast<double>(size);
    const int percent = static_cast<int>(share * 100.0);
    const int filled = static_cast<int>(share * kBarWidth);
    std::string line;
    if (width >= kBarWidth + 9) {
        line = fmt::format("[{:#<{}}{:.<{}}] ", "", filled, "", kBarWidth - filled);
    }
    line += fmt::format("{:3} %", percent);
    const int room = width - static_cast<int>(characterCount(line)) - 3;
    if (room > 0 && !text.empty()) {
        line += "  ";
        line += firstCharacters(text, static_cast<std::size_t>(room));
    }
    return line;
}

void ProgressBar::draw(std::uint64_t position, std::uint64_t size, std::string_view text) {
    if (!terminal_) return;
    const std::int64_t now = nowMs();
    if (drawn_ && now - lastDrawn_ < kPauseMs) return;
    lastDrawn_ = now;
    drawn_ = true;
    writeAll(descriptor_, "\r\x1b[K" + line(position, size, text, columnsOf(descriptor_)));
}

void ProgressBar::clear() {
    if (!drawn_) return;
    drawn_ = false;
    writeAll(descriptor_, "\r\x1b[K");
}

}  // namespace kolmera::cli
