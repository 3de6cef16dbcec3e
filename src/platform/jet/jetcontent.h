#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

/// What an Access-format file (Jet 3, Jet 4) holds, as its reader tells it. The reader is another process
/// (`jet/main.cpp`), because its library may be led astray by a damaged file.
namespace kolmera::jet {

enum class ColumnType : std::uint8_t {
    Boolean = 1,
    Byte = 2,
    Integer = 3,
    Long = 4,
    Currency = 5,
    Single = 6,
    Double = 7,
    Moment = 8,
    Binary = 9,
    Text = 10,
    Ole = 11,
    Memo = 12,
    Guid = 15,
    Decimal = 16,
    Other = 0,  ///< of later formats
};

struct Column {
    std::string name;
    ColumnType type = ColumnType::Other;
    std::uint32_t size = 0;  ///< characters of a text
    bool counter = false;
    std::string standard = {};    ///< the expression of the value that new rows get; empty without one
    std::string rule = {};        ///< the condition that values have to meet; empty without one
    bool required = false;        ///< no row may leave it empty
    std::string properties = {};  ///< names of others that it has: its caption, its form, its choices
};

struct Index {
    std::string name;
    bool unique = false;
    std::vector<std::pair<std::uint32_t, bool>> columns;  ///< which column of the table, and whether it descends
};

struct Table {
    std::string name;
    std::uint32_t rows = 0;  ///< as the file says
    std::vector<Column> columns;
    std::vector<Index> indexes;
    std::string rule = {};        ///< the condition that rows have to meet
    std::string properties = {};  ///< names of others that it has
};

/// What is in a file besides tables that can be read.
enum class OtherObject : std::uint8_t { UnreadableTable, LinkedTable, Query, Relationship, Other, Password };
inline constexpr std::uint8_t kOtherObjects = 6;

struct Nothing {};
struct TenThousandths {
    std::int64_t count = 0;  ///< of a currency
};
struct Moment {
    double days = 0;  ///< since 1899-12-30, the time of the day behind the point
};
struct BinaryValue {};      ///< is there, but is not told
struct UnreadableValue {};  ///< is damaged
struct DamagedText {
    std::string text;  ///< with U+FFFD where a character could not be read
};
using Cell = std::variant<Nothing, bool, std::int64_t, TenThousandths, double, Moment, std::string, DamagedText,
                          BinaryValue, UnreadableValue>;
using Row = std::vector<Cell>;

/// Who hears a file: all tables and other objects first, then the rows, table by table.
class ContentListener {
  public:
    virtual ~ContentListener() = default;
    virtual void table(Table table) = 0;
    virtual void other(OtherObject kind, std::string name) = 0;
    /// The rows of that table follow; they come in the order of the tables.
    virtual void rowsOf(std::size_t table) = 0;
    virtual void row(const Row& row) = 0;
};

}  // namespace kolmera::jet
