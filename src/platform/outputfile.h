#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platform/descriptor.h"
#include "platform/privatefile.h"

namespace kolmera {

/// A file that is written from front to back and takes its place whole or not at all: until `finish` has put everything
/// on the disk, a file of that name stays as it was. The bytes go to a private file beside it, which is removed when
/// writing fails. A symbolic link stays one, and the rights of a replaced file are kept. What is no ordinary file (a
/// device, a pipe) is written to directly. Errors are PlatformError.
class OutputFile {
  public:
    /// Throws when the file or its folder may not be written.
    explicit OutputFile(const std::filesystem::path& file);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void write(std::string_view bytes);
    /// The last call.
    void finish();

  private:
    void flush();

    std::filesystem::path target_;
    std::optional<PrivateFile> unfinished_;
    Descriptor direct_;  ///< the target, when it is no ordinary file
    std::size_t written_ = 0;
    std::string buffer_;
};

}  // namespace kolmera
