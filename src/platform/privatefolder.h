#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "platform/descriptor.h"

namespace kolmera {

/// A new folder of this program alone, for what is made out of sight or lasts no longer than its work: nobody else may
/// look into it, and it is removed with all that is in it. A program that is killed leaves its folder behind, without
/// the lock that says that somebody works in it: `sweep` removes such folders.
class PrivateFolder {
  public:
    /// Makes PREFIX-XXXXXX in a folder. Throws PlatformError.
    PrivateFolder(const std::filesystem::path& in, std::string_view prefix);
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;
    ~PrivateFolder();

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

    /// Removes this user's folders of that prefix in which nobody works any more. What cannot be removed stays.
    static void sweep(const std::filesystem::path& in, std::string_view prefix) noexcept;

  private:
    std::filesystem::path path_;
    Descriptor lock_;  ///< the folder itself, locked; not open where folders cannot be locked, nor swept
};

}  // namespace kolmera
