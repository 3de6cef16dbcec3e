#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "db/sqllayer.h"
#include "lang/languagetexts.h"
#include "registers/registertable.h"

namespace kolmera {

/// A column of a register as windows and tables show it.
struct RegisterColumn {
    std::string field;    ///< its name in the company, Swedish
    std::string caption;  ///< in the user's language
    std::string other;    ///< the caption in the other language
    FieldType type = FieldType::Text;
    int size = 0;  ///< characters of a text, 0: any number
    bool key = false;
    bool listed = true;  ///< shown in lists
    bool fixed = false;  ///< kept by the program
    bool mayBeNull = false;
    double low = 0, high = 0;   ///< numbers that it takes, where low is not high
    std::string choices;        ///< the only texts that it takes, one character each; empty: any
    std::string refersToTable;  ///< a table by whose key it names a row; empty: none
    std::string suggests;       ///< a register whose keys it has as a rule; empty: none

    [[nodiscard]] bool required() const { return key; }
    /// The register whose rows it names; nullptr for none.
    [[nodiscard]] const RegisterDefinition* refersTo() const { return registerOfTable(refersToTable); }
};

/// A row as it was read: a value for each column.
struct RegisterRow {
    std::vector<Value> cells;
    int setting = -1;  ///< place of a row in the settings
};

/// New values by columns; what is not named stays, or has its default in a new row.
using RegisterValues = std::map<int, Value>;

/// What a cell can be given, and what that is in words.
struct RegisterChoice {
    std::string key, name;
};
struct RegisterChoices {
    std::vector<RegisterChoice> rows;
    bool more = false;  ///< there are others: ask for those that begin with what is typed
};

/// Why a row was not written, or a value not understood. `registerText` tells it.
struct RegisterProblem {
    enum class What {
        Missing,  ///< the key column is empty
        TooLong,  ///< `about`: how many characters fit
        NoNumber,
        NoWholeNumber,
        OutOfRange,  ///< `about`: "1-63"
        NoDate,
        NoTruth,
        NoChoice,     ///< `about`: the choices
        NoSuchRow,    ///< a row that it names is not there; `about`: the register
        Taken,        ///< there is a row with that key
        NotThere,     ///< no row has that key
        Changed,      ///< another program has written `column` since the row was shown; `about`: what stands there
        Named,        ///< other rows name it; `about`: register and column
        AlwaysThere,  ///< rows of the settings are neither added nor removed
        Fixed,        ///< the program keeps the column
    };
    What what{};
    int column = -1;
    std::string text = {};  ///< what was to be written
    std::string about = {};
};

/// Where the rows of a register lie (a table or the settings): values as they are stored, no checks.
class RegisterStore;

/// A register of the open company. `valueOf` makes values of texts; `add`, `change` and `remove` check a row and write
/// it in a transaction of its own, or in the one that is open. The company has to stay open. Throws PlatformError.
class Register {
  public:
    Register(const RegisterDefinition& definition, SqlLayer& sql, LanguageTexts& texts);
    Register(const Register&) = delete;
    Register& operator=(const Register&) = delete;
    ~Register();

    [[nodiscard]] const RegisterDefinition& definition() const { return definition_; }
    [[nodiscard]] std::string title();
    /// What the command line calls it, in the user's language.
    [[nodiscard]] std::string shortName() const {
        return std::string(texts_.language() == "EN" ? definition_.name : definition_.namn);
    }
    [[nodiscard]] const std::vector<RegisterColumn>& columns() const { return columns_; }
    [[nodiscard]] const RegisterColumn& column(int place) const { return columns_.at(static_cast<std::size_t>(place)); }
    /// The column of that name: as the company calls it, or its caption in either language; letter case apart. -1:
    /// none.
    [[nodiscard]] int columnNamed(std::string_view name) const;
    /// A cell's own type and what it takes: in the settings each row has its own.
    [[nodiscard]] RegisterColumn cell(const RegisterRow& row, int column) const;
    /// How many columns make the key; they are the first ones.
    [[nodiscard]] int keys() const { return keys_; }
    /// Rows can be added and removed.
    [[nodiscard]] bool takesRows() const { return definition_.rows == nullptr; }

    /// All rows in the order of their keys, one after the other, then false. The register has to stay.
    [[nodiscard]] std::function<bool(RegisterRow&)> rows();
    /// The same; false from `take` ends it.
    void forEachRow(const std::function<bool(const RegisterRow&)>& take);
    [[nodiscard]] std::optional<RegisterRow> find(std::span<const std::string> key);
    /// By values that have all of the key.
    [[nodiscard]] std::optional<RegisterRow> findBy(const RegisterValues& values);
    [[nodiscard]] std::vector<std::string> keyOf(const RegisterRow& row) const;
    /// A row that is to be added: its cells empty.
    [[nodiscard]] RegisterRow newRow() const;

    /// As the user writes it; numbers and dates of the locale.
    [[nodiscard]] std::string textOf(const RegisterRow& row, int column) const;
    /// The value that a text of the user means in this cell.
    [[nodiscard]] std::optional<RegisterProblem> valueOf(const RegisterRow& row, int column, std::string_view text,
                                                         Value& value) const;

    static constexpr std::size_t kMostChoices = 2000;
    /// What a cell of this kind can be given, by its key; empty where it takes anything. Of products those only that
    /// begin with `typed`, because they may be hundreds of thousands.
    [[nodiscard]] RegisterChoices choices(const RegisterColumn& cell, std::string_view typed = {});
    /// What is wrong with a text in this cell, without looking at others.
    [[nodiscard]] std::vector<RegisterProblem> problemsOfText(const RegisterRow& row, int column,
                                                              std::string_view text);

    /// All that is wrong with writing a new row, or these columns of one; nothing when it can be done. Nothing is
    /// written.
    [[nodiscard]] std::vector<RegisterProblem> problemsOfAdding(const RegisterValues& values);
    [[nodiscard]] std::vector<RegisterProblem> problemsOfChanging(const RegisterRow& shown,
                                                                  const RegisterValues& values);
    [[nodiscard]] std::vector<RegisterProblem> problemsOfRemoving(const RegisterRow& shown);
    // The same, and does it when nothing is wrong. A change of nothing writes nothing.
    std::vector<RegisterProblem> add(const RegisterValues& values);
    std::vector<RegisterProblem> change(const RegisterRow& shown, const RegisterValues& values);
    std::vector<RegisterProblem> remove(const RegisterRow& shown);

  private:
    using Problems = std::vector<RegisterProblem>;

    void makeCaptions();
    [[nodiscard]] std::string textOf(const RegisterColumn& cell, const Value& value) const;
    void checkValues(const RegisterRow& row, const RegisterValues& values, Problems& problems);
    [[nodiscard]] bool isThere(const std::string& table, const Value& key);
    RegisterStore& storeOf(const RegisterDefinition& named);
    [[nodiscard]] RegisterChoices rowsOf(const RegisterDefinition& named, std::string_view typed);
    [[nodiscard]] std::optional<std::string> namedBy(const RegisterRow& row);
    [[nodiscard]] bool anyRow(const std::string& table, const std::string& column, const Value& value);
    [[nodiscard]] std::vector<Value> keyValues(const RegisterRow& row) const;
    void inTransaction(const std::function<bool()>& write);

    const RegisterDefinition& definition_;
    SqlLayer& sql_;
    LanguageTexts& texts_;
    std::unique_ptr<RegisterStore> store_;
    std::map<const RegisterDefinition*, std::unique_ptr<RegisterStore>> named_;  ///< those that its rows name
    std::vector<RegisterColumn> columns_;
    int keys_ = 1;
};

}  // namespace kolmera
