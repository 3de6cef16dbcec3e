#pragma once

#include <filesystem>

#include "history/recordreader.h"
#include "platform/engine/sqlite/sqliteconnection.h"

namespace kolmera {

// The file of a run's record, a SQLite file:
//   header (key, value): the members of RunHeader by name, and "kept": the number of the last block whose changes the
//     run was going to commit. What stands behind it has been rolled back, or was never committed.
//   block (number, first, last, data): changes, see changeblock.h; first and last record of the price file in it.
//   remark (number, data): remarks.
//   keys (number, data): search keys or product numbers of the records read, each a text.
//   copy (number, data): the price file, compressed, in pieces.

inline constexpr std::string_view kRecordEnding = ".kmr";
inline constexpr int kRecordApplication = 0x4B4D5252;
/// Version 1 has no lengths of remarks, and no numbers as decimals (blockbytes.cpp).
inline constexpr int kRecordVersion = 2;

/// How the record's file in this folder is opened.
ConnectionOptions recordOptions(const std::filesystem::path& file, bool readOnly);

void makeRecordTables(SqliteConnection& connection);
void writeHeader(SqliteConnection& connection, const RunHeader& header);
/// Throws kNotADatabase for a file that is no record.
RunHeader readHeader(SqliteConnection& connection);

/// Removes a record with all that SQLite keeps beside it. Throws PlatformError.
void removeRecordFile(const std::filesystem::path& file);

}  // namespace kolmera
