#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "db/sqllayer.h"

namespace kolmera {

/// One table of the open company database, found by index and keys, whether the company lives in a file or on a server.
/// Set the switches, `OpenRs`, set `StrIndex`, then `SQLSeek` for every row, test `BoolNoMatch` and read. In server
/// mode every seek replaces `Rs`. Has to be gone before the company database closes.
class ClsDVDBSQLTable {
  public:
    explicit ClsDVDBSQLTable(SqlLayer& sql) : sql_(sql) {}

    std::unique_ptr<Recordset> Rs;
    bool BoolNoMatch = false;   ///< the last `SQLSeek` found nothing
    bool BoolIniterad = false;  ///< `OpenRs` has run
    // Switches of server mode.
    bool BoolUseVarKey1OneString = false;  ///< compare the whole sort-column text with the first key, as text
    std::string StrSpecKolumner;           ///< columns to select, empty for all
    bool BoolUseOrderBy = false;           ///< sort what a seek selects
    bool BoolUseSQLPassThrough = false;    ///< hand the seek statement to the server unchanged
    bool BoolUsePopCursor = false;         ///< with pass-through: fill the recordset after a seek that found something

    void OpenRs(std::string_view strName, std::int32_t IntOptions);
    void StrIndex(std::string_view StrNewIndex);
    [[nodiscard]] const std::string& StrIndex() const { return index_; }
    /// Server mode: closes `Rs`. File mode: leaves it open for the next seek.
    void SQLCloseRs();
    /// Positions on the first record whose index columns compare with the keys. In server mode every column is compared
    /// by itself, in file mode the keys as a whole; "=" is the same in both.
    void SQLSeek(std::string_view StrComparison, Keys keys);

    /// "" also when the field does not exist or there is no current record; the other readers let such errors through.
    [[nodiscard]] std::string TxtFmtRs(std::string_view StrF);
    [[nodiscard]] std::string TxtFmtRsInt(std::int16_t IntPosition);
    [[nodiscard]] double NumVRs(std::string_view StrF);
    [[nodiscard]] double NumVRsInt(std::int16_t IntPosition);
    [[nodiscard]] float NumSRs(std::string_view StrF);

  private:
    std::string seekStatement(std::string_view comparison, Keys keys);
    Recordset& recordset();  ///< Rs, or PlatformError when it is not open

    SqlLayer& sql_;
    std::string table_;
    std::string index_;
    std::string sortColumns_;
    std::int32_t options_ = 0;
};

}  // namespace kolmera
