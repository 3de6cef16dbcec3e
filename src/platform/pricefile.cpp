#include "platform/pricefile.h"

#include <fcntl.h>
#include <poll.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace kolmera {

namespace {
constexpr std::size_t kBufferSize = 262'144;
constexpr std::size_t kLongestLine = 16'777'216;
constexpr char kEndMark = 0x1A;
}  // namespace

// Opening a pipe must not wait for its writer: waiting is `waitForBytes`.
PriceFile::PriceFile(const std::filesystem::path& file, std::function<bool()> cancelled)
    : PriceFile(Descriptor(file, O_RDONLY | O_NONBLOCK), std::move(cancelled)) {}

PriceFile::PriceFile(Descriptor file, std::function<bool()> cancelled)
    : descriptor_(std::move(file)), cancelled_(std::move(cancelled)), buffer_(kBufferSize) {
    size_ = descriptor_.size();
}

void PriceFile::stopIfCancelled() const {
    if (cancelled_ && cancelled_()) throw ReadingCancelled();
}

void PriceFile::waitForBytes() const {
    constexpr int kPause = 20;  // milliseconds
    pollfd file{.fd = descriptor_.get(), .events = POLLIN, .revents = 0};
    while (poll(&file, 1, kPause) <= 0) stopIfCancelled();
}

bool PriceFile::fill() {
    if (lastBlock_) return false;
    if (begin_ > 0) {
        std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
    }
    if (end_ == buffer_.size()) buffer_.resize(buffer_.size() * 2);
    waitForBytes();
    const std::size_t got = descriptor_.read(buffer_.data() + end_, buffer_.size() - end_);
    if (reader_ && got > 0) reader_({buffer_.data() + end_, got});
    fileRead_ += got;
    end_ += got;
    if (got > 0) return true;
    lastBlock_ = true;
    if (end_ > begin_ && buffer_[end_ - 1] == kEndMark) --end_;
    return false;
}

bool PriceFile::atEnd() {
    // A single byte may be the end mark that is dropped; only the end of the file tells.
    while (end_ - begin_ < 2 && fill()) {
    }
    return begin_ == end_;
}

std::string_view PriceFile::line() {
    std::size_t length = 0;
    for (;;) {
        const char* const start = buffer_.data() + begin_;
        const auto* found = static_cast<const char*>(std::memchr(start + length, '\r', end_ - begin_ - length));
        // The byte behind the CR decides, and it may be in the next block.
        if (found != nullptr && found + 1 < buffer_.data() + end_) {
            length = static_cast<std::size_t>(found - start);
            break;
        }
        length = found != nullptr ? static_cast<std::size_t>(found - start) : end_ - begin_;
        if (found == nullptr && length > kLongestLine) {
            length = kLongestLine;
            end_ = begin_ + length;
            stopIfCancelled();
        }
        if (!fill()) {
            length = std::min(length, end_ - begin_);  // without the end mark
            break;
        }
    }
    const std::string_view result(buffer_.data() + begin_, std::min(length, kLongestLine));
    begin_ += length;
    if (begin_ < end_) ++begin_;  // CR
    if (begin_ < end_ && buffer_[begin_] == '\n') ++begin_;
    return result;
}

std::string_view PriceFile::bytes(std::size_t count) {
    while (end_ - begin_ <= count && fill()) {
    }
    const std::string_view result(buffer_.data() + begin_, std::min(count, end_ - begin_));
    begin_ += result.size();
    return result;
}

std::uint64_t PriceFile::position() const { return fileRead_ - (end_ - begin_); }

}  // namespace kolmera
