#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "history/runfolder.h"
#include "registers/register.h"
#include "registers/registerfile.h"

namespace kolmera {

/// The logic of the window of registers: the rows of one register of the open company as texts, changed one by one or
/// by a file. What is written is kept as a run. Throws PlatformError; knows no window.
class RegisterEditor {
  public:
    static constexpr std::size_t kMostRows = 5000;

    /// `company` is the database that `sql` has open.
    RegisterEditor(SqlLayer& sql, LanguageTexts& texts, const std::filesystem::path& dataFolder, std::string company);

    void open(const RegisterDefinition& definition);
    [[nodiscard]] Register& opened() { return *register_; }
    [[nodiscard]] bool isOpen() const { return register_.has_value(); }
    /// Reads the rows that have all these words, up to `kMostRows`.
    void read(std::string_view words);
    /// There are more rows than were read.
    [[nodiscard]] bool more() const { return more_; }
    [[nodiscard]] std::size_t count() const { return rows_.size(); }
    /// The columns that lists show.
    [[nodiscard]] const std::vector<int>& shown() const { return shown_; }
    [[nodiscard]] const RegisterRow& row(std::size_t row) const { return rows_.at(row); }
    [[nodiscard]] std::string cell(std::size_t row, int column) const {
        return register_->textOf(rows_.at(row), column);
    }

    /// Whether a form offers a column of a row: not what the program keeps, and keys of new rows only.
    [[nodiscard]] bool canEdit(const RegisterRow& row, int column, bool isNew) const;
    /// What is wrong with a row: of a column (as `fieldText` has it), or of the whole row (-1).
    struct Fault {
        int column;
        std::string text;
    };
    /// What is wrong with a text in a field, without looking at the others; empty: nothing. A text that is right is
    /// put as the program writes it.
    [[nodiscard]] std::string check(const RegisterRow& row, int column, std::string& text);
    /// Writes a new row, or what has changed of one; texts by columns. Says all that is wrong with it, and writes
    /// nothing then.
    std::vector<Fault> save(const RegisterRow& shown, bool isNew, const std::map<int, std::string>& texts);
    std::vector<std::string> remove(const RegisterRow& shown);

    /// What an import would do, or has done, in the user's words.
    struct Told {
        struct Refused {
            std::uint64_t row;  ///< of the file
            std::string column, text, reason;
        };
        bool done = false;  ///< some row would be written, or has been
        std::string text;   ///< what was counted, or why the file does not fit
        std::vector<Refused> refused;
    };
    [[nodiscard]] FileColumns columnsOf(const std::filesystem::path& file) {
        return RegisterReader::columnsOf(*register_, sql_, file);
    }
    /// `columns` says for each of the file's which one of the register it is, -1 for none.
    Told import(const std::filesystem::path& file, const std::vector<int>& columns, bool tryOut,
                const std::function<bool()>& cancelled = {});
    std::string exportTo(const std::filesystem::path& file);

  private:
    std::vector<RegisterProblem> write(const std::function<std::vector<RegisterProblem>()>& write,
                                       const WritingCounts& counts);
    [[nodiscard]] std::vector<Fault> faults(const RegisterRow& row, const std::vector<RegisterProblem>& problems);
    [[nodiscard]] Told told(const RegisterImport& import);

    SqlLayer& sql_;
    LanguageTexts& texts_;
    RunFolder folder_;
    std::string company_;
    std::optional<Register> register_;
    std::vector<int> shown_;
    std::vector<RegisterRow> rows_;
    bool more_ = false;
};

}  // namespace kolmera
