#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace kolmera {

/// A table of tab-separated UTF-8 text: a header line with column names, then rows; lines beginning with "#" and empty
/// lines do not count. Rows shorter than the header are filled with empty cells.
struct Tsv {
    std::vector<std::string> columns;
    std::vector<std::vector<std::string>> rows;

    static Tsv parse(std::string_view text);
    /// Throws PlatformError(kFileNotFound) when the file cannot be read.
    static Tsv read(const std::filesystem::path& file);

    /// Place of a column by its exact name, -1 when there is none.
    [[nodiscard]] int column(std::string_view name) const;
};

/// The whole of a file. Throws PlatformError(kFileNotFound) with the system's text when it cannot be read.
std::string readWholeFile(const std::filesystem::path& file);

}  // namespace kolmera
