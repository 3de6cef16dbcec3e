#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace kolmera {

/// DORVIK.FTG of the data folder, the suite's register of companies. It only grows. A missing file is created empty.
class CompanyFile {
  public:
    explicit CompanyFile(const std::filesystem::path& dataFolder);

    /// Makes the missing file. Throws PlatformError.
    void create() const;
    /// The company name registered for a database file (letter case and what follows 20 characters do not count).
    /// Throws PlatformError when the register can be neither read nor made.
    [[nodiscard]] std::optional<std::string> find(std::string_view databaseFile) const;
    /// Adds a company. Throws PlatformError.
    void append(std::string_view databaseFile, std::string_view company) const;

  private:
    std::filesystem::path file_;
};

}  // namespace kolmera
