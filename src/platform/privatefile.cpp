#include "platform/privatefile.h"

#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "platform/descriptor.h"

namespace kolmera {

PrivateFile::PrivateFile(const std::filesystem::path& beside, std::string_view suffix) {
    std::string name = beside.string().append(suffix).append("-XXXXXX");
    const int descriptor = mkstemp(name.data());
    if (descriptor < 0) throwSystemError(errno);
    close(descriptor);
    path_ = name;
}

PrivateFile::~PrivateFile() {
    std::error_code gone;
    std::filesystem::remove(path_, gone);
}

}  // namespace kolmera
