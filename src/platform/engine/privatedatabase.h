#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>

#include "platform/engine/database.h"

namespace kolmera {

// Databases of this program alone, for what nobody else may see. Their file has no name any more when the functions
// return, so that it is gone with the program however that ends. Nothing is synced.

/// A copy of a company file as it is at one moment. The file itself is only read; others may write it meanwhile (on a
/// network drive, between two portions). `goOn` is asked between portions: false ends the copy, and there is none.
/// Throws what opening throws.
std::unique_ptr<Database> openPrivateCopy(const std::filesystem::path& file, const OpenOptions& options,
                                          const std::filesystem::path& copy, const std::function<bool()>& goOn);

/// A table to be made, and the ID above which its new rows get theirs, whatever rows it has.
struct PrivateTable {
    TableDef definition;
    std::int64_t lastId = 0;
};

/// An empty database with these tables.
std::unique_ptr<Database> makePrivateDatabase(const std::filesystem::path& file, std::span<const PrivateTable> tables,
                                              const Locale& locale);

/// Puts a finished database file, which nobody has open, in a company's place. With `replace` it may take the place of
/// a company that can be opened and that nobody has open (else kLocked); without, there must be no file (kInternal,
/// EEXIST).
void placeFileDatabase(const std::filesystem::path& finished, const std::filesystem::path& company, bool replace,
                       const OpenOptions& options);

}  // namespace kolmera
