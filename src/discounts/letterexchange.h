#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "db/batchtransaction.h"
#include "db/sqllayer.h"
#include "discounts/letterrows.h"
#include "platform/attempt.h"

namespace kolmera {

/// Whether a letter's file is a spreadsheet: its extension, turned to upper case, contains "XL". Any other file is a
/// text file: a discount group a line, the code and the discounts separated by tabs, numbers in the user's locale,
/// Windows-1252, lines ending in CR LF.
bool isSpreadsheet(const std::filesystem::path& file);

/// Discount groups that something was noted about: how many, and the codes of the first of them.
struct NotedGroups {
    std::int64_t count = 0;
    std::vector<std::string> codes;

    void note(std::string_view code);
    /// "3 (A1, B2, C3)" for the user; "..." stands for codes that are not kept.
    [[nodiscard]] std::string text() const;
};

/// What became of the old letter and of the lines of a file.
struct LetterRead {
    std::int64_t deleted = 0;
    std::int64_t lines = 0;
    std::int64_t added = 0;
    NotedGroups passedOver;   ///< lines that could not be saved: a code twice, or too long
    NotedGroups withoutCode;  ///< lines left out, because they name no group; noted by their discounts
    NotedGroups notNumbers;   ///< values left empty, because they are no numbers
    NotedGroups beyond;       ///< discounts of more than 100 per cent, read as they stand
    bool cancelled = false;
    std::optional<PlatformError> stopped;  ///< why the database ended it
    bool restored = false;                 ///< cancelled or stopped, and the old letter is back
};

struct LetterWritten {
    std::int64_t groups = 0;
    NotedGroups questionMarks;  ///< codes with characters that the text file's code page lacks, written as "?"
};

/// One supplier's discount letter in the open company, on its way from and to files. Rows are deleted and added in
/// transactions of 50, which a company file joins into one: whatever happens, it has the old letter or the new one. On
/// a server each is committed by itself. Everything throws PlatformError; a row that cannot be deleted or saved is
/// noted and passed over.
class LetterExchange {
  public:
    LetterExchange(SqlLayer& sql, std::string supplier, PassedOver& passedOver);

    /// Asked behind every transaction of reading, and when a lock was not waited for to its end; true keeps the old
    /// letter.
    std::function<bool()> cancelled;

    [[nodiscard]] bool hasLetter();
    /// The lines of a file that can become groups, without reading any of them in: to be asked before a letter is
    /// deleted. The whole file is read, so that one that is no letter, or damaged at its end, costs nothing. 0 for a
    /// text file with NUL in it: it is no text.
    [[nodiscard]] std::int64_t usableLines(const std::filesystem::path& file);
    /// Deletes the letter, and adds a group for every line (or row of the first sheet) that is not empty. Pieces beyond
    /// the table's columns are left out, columns without a piece stay empty. When that is cancelled or the database
    /// ends it (a full disk), the old letter is kept; on a server it is put back as far as the database lets us.
    LetterRead replaceFrom(const std::filesystem::path& file);
    /// Writes the letter in the order of the database: a text file is replaced, a workbook gets a new sheet
    /// "Rabattbrev" and a number. A file that cannot be written whole stays as it was.
    LetterWritten writeTo(const std::filesystem::path& file);

  private:
    std::int64_t deleteLetter(BatchTransaction& batch, LetterRows* deleted);
    void readLetter(const std::filesystem::path& file, BatchTransaction& batch, LetterRead& report);
    [[nodiscard]] bool restore(const LetterRows& old, bool wasDeleted);
    [[nodiscard]] std::unique_ptr<Recordset> open(RecordsetType type = RecordsetType::Dynaset);
    LetterWritten writeText(Recordset& letter, const std::filesystem::path& file);
    static LetterWritten writeSheet(Recordset& letter, const std::filesystem::path& file);

    SqlLayer& sql_;
    std::string supplier_;
    PassedOver& passedOver_;
};

}  // namespace kolmera
