#include "platform/privatefile.h"

#include <fcntl.h>

#include <string>
#include <system_error>

#include "platform/privatename.h"

namespace kolmera {

PrivateFile::PrivateFile(const std::filesystem::path& beside, std::string_view suffix, unsigned mode)
    : path_(beside.string().append(suffix).append("-").append(privateDigits())),
      descriptor_(path_, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, mode) {}

PrivateFile::~PrivateFile() {
    std::error_code gone;
    if (!path_.empty()) std::filesystem::remove(path_, gone);
}

void PrivateFile::moveTo(const std::filesystem::path& target) {
    moveOver(descriptor_, path_, target);
    path_.clear();
}

}  // namespace kolmera
