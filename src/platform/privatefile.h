#pragma once

#include <filesystem>
#include <string_view>

namespace kolmera {

/// An empty file beside another, under a name that nobody else uses, for what is not finished yet: others cannot open
/// it. It is gone when the object is, unless it has been moved to its place before.
class PrivateFile {
  public:
    /// Throws PlatformError.
    PrivateFile(const std::filesystem::path& beside, std::string_view suffix);
    PrivateFile(const PrivateFile&) = delete;
    PrivateFile& operator=(const PrivateFile&) = delete;
    ~PrivateFile();

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

}  // namespace kolmera
