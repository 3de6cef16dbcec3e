#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "db/sqllayer.h"

namespace kolmera {

/// One table of the open company database, found by index and keys, whether the company lives in a file or on a server.
/// `OpenRs`, set `StrIndex`, then `SQLSeek` for every row, test `BoolNoMatch` and read. In server mode every seek
/// replaces `Rs`. Has to be gone before the company database closes. What the rest of the suite asks of such a table
/// besides is in `suite/switchedtable`.
class ClsDVDBSQLTable {
  public:
    explicit ClsDVDBSQLTable(SqlLayer& sql) : sql_(sql) {}

    std::unique_ptr<Recordset> Rs;
    bool BoolNoMatch = false;     ///< the last `SQLSeek` found nothing
    bool BoolIniterad = false;    ///< `OpenRs` has run
    std::string StrSpecKolumner;  ///< server mode: columns to select, empty for all

    void OpenRs(std::string_view strName, std::int32_t IntOptions);
    void StrIndex(std::string_view StrNewIndex);
    [[nodiscard]] const std::string& StrIndex() const { return index_; }
    /// Positions on the first record whose index columns compare with the keys. In server mode every column is compared
    /// by itself, in file mode the keys as a whole; "=" is the same in both.
    void SQLSeek(std::string_view StrComparison, Keys keys);

    /// "" also when the field does not exist or there is no current record; the reader by place lets such errors
    /// through.
    [[nodiscard]] std::string TxtFmtRs(std::string_view StrF);
    [[nodiscard]] std::string TxtFmtRsInt(std::int16_t IntPosition);

  protected:
    Recordset& recordset();  ///< Rs, or PlatformError when it is not open
    /// Server mode: what a seek selects, up to its criteria.
    [[nodiscard]] std::string selection() const;

    SqlLayer& sql_;
    std::string table_;
    std::string sortColumns_;
    std::int32_t options_ = 0;

  private:
    std::string index_;
};

}  // namespace kolmera
