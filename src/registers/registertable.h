#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "lang/textkeys.h"

namespace kolmera {

/// How a setting stands in its column of the settings tables.
enum class SettingForm {
    Whole,     ///< it is the column's value
    ListText,  ///< entry `place` of a text such as "1=EUR;3=USD" (`ListSetting`)
    Line,      ///< line `place` of a text, from 0: a number as the user writes it
    BitUnset,  ///< true where bit `place` of a whole number is not set
};

/// A cell of a register that is kept in the settings.
struct SettingCell {
    std::string_view table, column;
    SettingForm form = SettingForm::Whole;
    int place = 0;
    std::string_view standard = {};  ///< ListText: what a list has without an entry
    std::string_view choices = {};   ///< the only texts that it takes, one character each; empty: any
    int size = 0;                    ///< ListText: characters at most
    std::string_view refersTo = {};  ///< ListText: a table by whose key it names a row
};

/// A row of such a register; they are always all there. It is named by its number, or by a column whose caption it has.
struct SettingRow {
    int number = 0;
    std::string_view table = {}, column = {};
    FormKey caption = {"", 0};
    std::vector<SettingCell> cells;
};

struct SettingColumn {
    std::string_view field;  ///< Swedish, as columns of tables are
    FormKey caption;
};

/// A register of the company: rows that are found by a key. It is a table of the company, or a part of its settings.
struct RegisterDefinition {
    std::string_view name, namn;  ///< what the command line calls it, English and Swedish
    FormKey title;
    std::string_view table = {}, index = {};        ///< the table, and the index of its key
    std::span<const std::string_view> listed = {};  ///< the columns that lists show; exports and imports know all
    std::span<const SettingColumn> columns = {};    ///< of a register in the settings; the first is the key
    std::vector<SettingRow> (*rows)() = nullptr;
};

/// All registers, in the order in which a new company is filled.
std::span<const RegisterDefinition> registerDefinitions();
/// The register of that name in either language, letter case apart; nullptr for none.
const RegisterDefinition* registerNamed(std::string_view name);
/// The register that a table is; nullptr for none.
const RegisterDefinition* registerOfTable(std::string_view table);

/// The columns that say in words what a row of a table is, the first that is filled before the others.
std::span<const std::string_view> namingColumns(std::string_view table);
/// The register whose keys a column has as a rule, though others do no harm; empty for none.
std::string_view suggestedRegister(std::string_view column);

/// Columns that the program keeps by itself: shown, never set.
bool isKeptByProgram(std::string_view column);

}  // namespace kolmera
