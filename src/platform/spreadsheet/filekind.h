#pragma once

#include <filesystem>

namespace kolmera {

/// What a file is by its first bytes, whatever its name says.
enum class FileKind {
    Xlsx,       ///< a zip file, which may also be something else
    Xls,        ///< a compound file, which may also be something else
    Encrypted,  ///< a compound file around an .xlsx workbook with a password
    Other,
};

/// Throws kFileNotFound, or kUnreadableSpreadsheet for what is no file and for a damaged compound file.
FileKind kindOf(const std::filesystem::path& file);

}  // namespace kolmera
