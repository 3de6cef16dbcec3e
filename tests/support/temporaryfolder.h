#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace kolmera::test {

/// An empty folder of a test's own, removed with everything in it.
class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }
    [[nodiscard]] std::filesystem::path operator/(std::string_view name) const { return path_ / name; }

    /// The bytes of a file in the folder; empty when there is none.
    [[nodiscard]] std::string read(std::string_view name) const;
    void write(std::string_view name, std::string_view bytes) const;

  private:
    std::filesystem::path path_;
};

}  // namespace kolmera::test
