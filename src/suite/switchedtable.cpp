#include "suite/switchedtable.h"

#include "db/conversions.h"
#include "platform/attempt.h"

namespace kolmera {

void SwitchedTable::SQLSeek(std::string_view StrComparison, Keys keys) {
    if (!sql_.ÄrSQLFöretag) return ClsDVDBSQLTable::SQLSeek(StrComparison, keys);
    std::string statement = selection();
    if (BoolUseVarKey1OneString) {
        const std::string key = keys.empty() ? std::string() : TillText(keys.front(), sql_.locale());
        statement += sortColumns_ + " = " + SqlLayer::SQLText(key);
    } else {
        statement += sql_.SQLVillkor(table_, StrComparison, sortColumns_, keys);
    }
    if (BoolUseOrderBy) statement += " ORDER BY " + sortColumns_;
    Rs = BoolUseSQLPassThrough ? SQLÖppnaDirekt(sql_, statement, RecordsetType::Dynaset, options_)
                               : sql_.SQLÖppnaRs(statement, RecordsetType::Dynaset, options_);
    BoolNoMatch = Rs->recordCount() == 0;
    if (BoolUseSQLPassThrough && BoolUsePopCursor && !BoolNoMatch) SQLFyllRs(sql_, *Rs);
}

void SwitchedTable::SQLCloseRs() {
    if (sql_.ÄrSQLFöretag) StängPost(Rs);
}

double SwitchedTable::NumVRs(std::string_view StrF) { return TillDbl(recordset().value(StrF), sql_.locale()); }

double SwitchedTable::NumVRsInt(std::int16_t IntPosition) {
    return TillDbl(recordset().value(IntPosition), sql_.locale());
}

float SwitchedTable::NumSRs(std::string_view StrF) { return TillSng(recordset().value(StrF), sql_.locale()); }

std::unique_ptr<Recordset> SQLÖppnaDirekt(SqlLayer& sql, std::string_view statement, RecordsetType type,
                                          std::int32_t options) {
    if (!sql.FtgDB) throw PlatformError(errors::kNoCurrentRecord, "no company is open");
    if (sql.ÄrSQLFöretag) options |= options::kPassThrough;
    return sql.FtgDB->open(statement, type, options);
}

void SQLFyllRs(const SqlLayer& sql, Recordset& recordset) {
    if (!sql.ÄrSQLFöretag || recordset.recordCount() == 0) return;
    recordset.moveLast();
    recordset.moveFirst();
}

std::int32_t AntalPoster(Recordset& recordset) {
    PassedOverSilently passedOver;
    std::int32_t count = 0;
    attempt(passedOver, "AntalPoster", [&] {
        count = recordset.recordCount();
        if (count == 0) return;
        recordset.moveLast();
        recordset.moveFirst();
        count = recordset.recordCount();
    });
    return count;
}

void StängPost(std::unique_ptr<Recordset>& recordset) { recordset.reset(); }

}  // namespace kolmera
