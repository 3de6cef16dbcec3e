#include "platform/outputfile.h"

#include <fcntl.h>

#include <system_error>
#include <utility>

#include "platform/privatename.h"

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
        descriptor_ = std::move(existing);
        return;
    }
    const fs::path beside = target_.string() + "." + privateDigits();
    descriptor_ = Descriptor(beside, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW);
    temporary_.file = beside;
    if (existing.isOpen()) descriptor_.copyRights(existing);
}

OutputFile::Temporary::~Temporary() {
    std::error_code ignored;
    if (!file.empty()) fs::remove(file, ignored);
}

void OutputFile::write(std::string_view bytes) {
    buffer_ += bytes;
    if (buffer_.size() >= kBufferSize) flush();
}

void OutputFile::flush() {
    if (temporary_.file.empty()) {
        descriptor_.write(buffer_);
    } else {
        descriptor_.writeAt(written_, buffer_);
    }
    written_ += buffer_.size();
    buffer_.clear();
}

void OutputFile::finish() {
    flush();
    if (temporary_.file.empty()) return;
    moveOver(descriptor_, temporary_.file, target_);
    temporary_.file.clear();
}

}  // namespace kolmera
