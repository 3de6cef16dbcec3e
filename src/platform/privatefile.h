#pragma once

#include <filesystem>
#include <string_view>

#include "platform/descriptor.h"

namespace kolmera {

/// A new file beside another, open for reading and writing, under a name that nobody else uses or foresees, for what
/// is not finished yet. It is gone when the object is, unless it has been moved to its place before.
class PrivateFile {
  public:
    static constexpr unsigned kForOwner = 0600;  ///< others cannot open it
    static constexpr unsigned kForAll = 0666;    ///< as far as the user shares new files

    /// Throws PlatformError.
    PrivateFile(const std::filesystem::path& beside, std::string_view suffix, unsigned mode = kForOwner);
    PrivateFile(const PrivateFile&) = delete;
    PrivateFile& operator=(const PrivateFile&) = delete;
    ~PrivateFile();

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }
    [[nodiscard]] const Descriptor& descriptor() const { return descriptor_; }
    /// Syncs it and puts it in the place of another file; the last call.
    void moveTo(const std::filesystem::path& target);

  private:
    std::filesystem::path path_;
    Descriptor descriptor_;
};

}  // namespace kolmera
