#include "cli/terminalstream.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace kolmera::cli {

TerminalStream::TerminalStream(int descriptor, const std::atomic<bool>& cancel)
    : descriptor_(descriptor), cancel_(cancel) {
    setp(buffer_.data(), buffer_.data() + buffer_.size());
}

TerminalStream::int_type TerminalStream::overflow(int_type c) {
    if (sync() != 0) return traits_type::eof();
    return traits_type::eq_int_type(c, traits_type::eof()) ? traits_type::not_eof(c)
                                                           : sputc(traits_type::to_char_type(c));
}

bool TerminalStream::waitForRoom() const {
    constexpr int kPause = 200;  // milliseconds; a reader that is only slow has this time also behind a Ctrl-C
    pollfd output{.fd = descriptor_, .events = POLLOUT, .revents = 0};
    while (poll(&output, 1, kPause) <= 0) {
        if (cancel_.load(std::memory_order_relaxed)) return false;
    }
    return true;
}

int TerminalStream::sync() {
    const char* next = pbase();
    while (next < pptr()) {
        if (!waitForRoom()) return -1;
        const ssize_t written = write(descriptor_, next, static_cast<std::size_t>(pptr() - next));
        if (written < 0 && errno != EINTR && errno != EAGAIN) return -1;
        if (written > 0) next += written;
    }
    setp(buffer_.data(), buffer_.data() + buffer_.size());
    return 0;
}

}  // namespace kolmera::cli
