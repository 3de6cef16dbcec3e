#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/recordfile.h"

namespace kolmera {

/// One import job (inläsning): a record of KOLMERA.TXT.
struct Job {
    int number = 0;  ///< JobbNr: record number, 0 for a new job
    std::string name;
    std::string priceFile;  ///< path as written by the user
    std::string mask;       ///< mask name, empty for trade formats
    std::string company;    ///< database name, up to 60 characters
    std::string supplier;
    std::string command;    ///< expansion command, empty when the file is not compressed
    std::string kind;       ///< "E", "R", "F" for trade formats, else empty
    std::string fromGroup;  ///< FINFO: lowest product group
    std::string toGroup;    ///< FINFO: highest product group
    int heading1 = 0;       ///< FINFO: heading of the Micronic number, 0 none
    int heading2 = 0;       ///< FINFO: heading of the EAN code, 0 none
};

/// True for exactly "(EIO)", "(RSK)" and "(FINFO)".
bool ÄrStandardFormat(std::string_view name);

/// The job list in KOLMERA.TXT of the data folder. The file is opened and closed within each operation.
class JobFile {
  public:
    explicit JobFile(std::filesystem::path dataFolder) : folder_(std::move(dataFolder)) {}

    [[nodiscard]] std::vector<Job> all() const;
    [[nodiscard]] std::optional<Job> read(int number) const;
    [[nodiscard]] std::optional<Job> find(std::string_view name) const;  ///< the first job of that name
    /// Writes the job over its record, or appends it (number 0). Reserved bytes stay. Returns the number.
    int save(const Job& job);
    /// Removes every job of that name; later jobs move down. Returns how many were removed.
    int remove(std::string_view name);

  private:
    std::filesystem::path folder_;
};

}  // namespace kolmera
