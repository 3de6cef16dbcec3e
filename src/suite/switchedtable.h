#pragma once

#include "db/dvdbsqltable.h"

namespace kolmera {

/// A ClsDVDBSQLTable with the switches of its server mode, which are set before `OpenRs`, and with its readers of
/// numbers.
class SwitchedTable : public ClsDVDBSQLTable {
  public:
    using ClsDVDBSQLTable::ClsDVDBSQLTable;

    bool BoolUseVarKey1OneString = false;  ///< compare the whole sort-column text with the first key, as text
    bool BoolUseOrderBy = false;           ///< sort what a seek selects
    bool BoolUseSQLPassThrough = false;    ///< hand the seek statement to the server unchanged
    bool BoolUsePopCursor = false;         ///< with pass-through: fill the recordset after a seek that found something

    void SQLSeek(std::string_view StrComparison, Keys keys);
    /// Server mode: closes `Rs`. File mode: leaves it open for the next seek.
    void SQLCloseRs();

    // What is no number is 0; a field that does not exist and a missing record are errors.
    [[nodiscard]] double NumVRs(std::string_view StrF);
    [[nodiscard]] double NumVRsInt(std::int16_t IntPosition);
    [[nodiscard]] float NumSRs(std::string_view StrF);
};

/// A statement that the server gets unchanged.
std::unique_ptr<Recordset> SQLÖppnaDirekt(SqlLayer& sql, std::string_view statement, RecordsetType type,
                                          std::int32_t options = 0);
/// Server mode: visits the last record, so that the record count is true, and goes back to the first.
void SQLFyllRs(const SqlLayer& sql, Recordset& recordset);
/// The true number of records: visits the last record, then goes back to the first. Never fails; after an error the
/// count read so far.
std::int32_t AntalPoster(Recordset& recordset);

/// Closes a recordset that may never have been opened, and clears the reference.
void StängPost(std::unique_ptr<Recordset>& recordset);

}  // namespace kolmera
