#include "platform/outputfile.h"

#include <fcntl.h>

#include <system_error>
#include <utility>

namespace kolmera {
namespace fs = std::filesystem;
namespace {

constexpr std::size_t kBufferSize = 262'144;

fs::path withoutLinks(const fs::path& file) {
    std::error_code missing;
    const fs::path target = fs::canonical(file, missing);
    return target.empty() ? file : target;
}

}  // namespace

OutputFile::OutputFile(const fs::path& file) : target_(withoutLinks(file)) {
    std::error_code missing;
    const fs::file_status status = fs::status(target_, missing);
    Descriptor existing;
    // A file that may not be written must not be replaced either, though its folder would allow that.
    if (fs::exists(status)) existing = Descriptor(target_, O_WRONLY);
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        direct_ = std::move(existing);
        return;
    }
    unfinished_.emplace(target_, "", existing.isOpen() ? PrivateFile::kForOwner : PrivateFile::kForAll);
    if (existing.isOpen()) unfinished_->descriptor().copyRights(existing);
}

void OutputFile::write(std::string_view bytes) {
    buffer_ += bytes;
    if (buffer_.size() >= kBufferSize) flush();
}

void OutputFile::flush() {
    if (unfinished_) {
        unfinished_->descriptor().writeAt(written_, buffer_);
    } else {
        direct_.write(buffer_);
    }
    written_ += buffer_.size();
    buffer_.clear();
}

void OutputFile::finish() {
    flush();
    if (unfinished_) unfinished_->moveTo(target_);
}

}  // namespace kolmera
