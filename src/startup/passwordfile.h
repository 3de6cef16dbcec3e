#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace kolmera {

/// DVDefLog.bin of the data folder, the passwords of the company files. It is made for its owner alone; rights that
/// somebody has given it stay.
class PasswordFile {
  public:
    explicit PasswordFile(const std::filesystem::path& dataFolder);

    /// The password of a company file (letter case and what follows 20 characters do not count); empty when the file or
    /// the name is missing.
    [[nodiscard]] std::string find(std::string_view name) const;
    /// Sets the password of a company file. Throws PlatformError: kTextTooLong beyond 10 characters.
    void save(std::string_view name, std::string_view password) const;

  private:
    std::filesystem::path file_;
};

}  // namespace kolmera
