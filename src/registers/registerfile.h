#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "registers/recordedwriting.h"
#include "registers/register.h"
#include "source/rowreader.h"
#include "source/sourceformat.h"

namespace kolmera {

/// Which column of a file is which of a register: "Art.nr" is "Nummer".
struct ColumnBinding {
    std::string heading;  ///< of the file; a number is the place of a column, from 1
    std::string column;   ///< of the register
};

/// A file as it is bound to a register by hand.
struct FileColumns {
    struct Column {
        std::string heading;
        std::vector<std::string> samples;  ///< of the first rows
        int column = -1;                   ///< of the register, as its heading says; -1: none
    };
    static constexpr std::size_t kSamples = 3;
    std::vector<Column> columns;
};

/// What an import did, or would do.
struct RegisterImport {
    struct Rejected {
        std::uint64_t row = 0;  ///< of the file
        RegisterProblem problem;
    };
    static constexpr std::size_t kMostRejected = 1000;  ///< that are named; all are counted

    WritingCounts counts;
    std::int64_t same = 0;      ///< rows that the register had as they are
    std::int64_t rejected = 0;  ///< rows that were not written, for one reason or several
    std::vector<Rejected> reasons;
    std::vector<std::string> columns;  ///< those that were read
    std::vector<std::string> leftOut;  ///< headings that are no column
    bool cancelled = false;
};

/// Why a file is not read into a register at all.
struct UnfitFile {
    enum class What { NoHeadings, NoKey, UnknownColumn, UnknownHeading, TwiceBound } what;
    std::string about;
};

/// Reads rows of any file that the program can read into a register: rows that it has are changed, others are added.
/// Only the columns of the file are written, and of a row only its cells that are not empty. A row with a value that
/// does not fit is left alone as a whole.
class RegisterReader {
  public:
    /// Finds out what the file is. Throws PlatformError; `UnfitFile` when its columns do not fit.
    RegisterReader(Register& to, SqlLayer& sql, const std::filesystem::path& file,
                   const std::vector<ColumnBinding>& bindings = {});

    /// Each column of the file by hand, by its place: a column of the register, or -1 for one that is not read.
    RegisterReader(Register& to, SqlLayer& sql, const std::filesystem::path& file, const std::vector<int>& columns);
    /// The columns of a file, none bound twice.
    static FileColumns columnsOf(Register& to, SqlLayer& sql, const std::filesystem::path& file);

    /// Asked between rows; true ends it behind what was written so far.
    std::function<bool()> cancelled;
    /// In batches. Throws PlatformError.
    RegisterImport read();
    /// What an error has ended; what is counted stands in the company.
    [[nodiscard]] const RegisterImport& soFar() const { return import_; }
    /// The same, of which nothing stays.
    RegisterImport tryOut();

  private:
    struct Bound {
        std::size_t cell;
        int column;
    };

    RegisterReader(Register& to, SqlLayer& sql, const std::filesystem::path& file, std::nullptr_t unbound);

    void lookAt();
    std::vector<std::string> readHeadings(const std::function<void(const Row&)>& sample = {});
    void checkBound(const std::vector<std::string>& headings) const;
    void bind(const std::vector<std::string>& headings, const std::vector<ColumnBinding>& bindings);
    void bindOne(std::size_t cell, int column, const std::string& heading);
    void readAll(const std::function<void()>& nextRow);
    void readRow(const Row& row);
    std::vector<RegisterProblem> writeRow(const Row& row);
    [[nodiscard]] std::optional<RegisterProblem> cellValue(const RegisterRow& row, const Bound& bound, const Cell& cell,
                                                           Value& value) const;

    Register& to_;
    SqlLayer& sql_;
    std::filesystem::path file_;
    SourceFormat format_;
    std::vector<Bound> bound_;
    std::vector<std::string> leftOut_;
    RegisterImport import_;
};

/// Writes a whole register, headings in the user's language: to a workbook (.xlsx), else as text in UTF-8 with
/// semicolons. Either is what the reader reads. Gives the number of rows. Throws PlatformError.
std::int64_t writeRegister(Register& from, const std::filesystem::path& file);

}  // namespace kolmera
