#include "db/dvdbsqltable.h"

#include "db/conversions.h"
#include "db/recordsets.h"

namespace kolmera {

Recordset& ClsDVDBSQLTable::recordset() {
    if (!Rs) throw PlatformError(errors::kNoCurrentRecord, "The table " + table_ + " is not open.");
    return *Rs;
}

void ClsDVDBSQLTable::OpenRs(std::string_view strName, std::int32_t IntOptions) {
    table_ = strName;
    options_ = IntOptions;
    Rs = sql_.SQLÖppnaRs(table_, sql_.ÄrSQLFöretag ? RecordsetType::Dynaset : RecordsetType::Table, options_);
    BoolIniterad = true;
}

void ClsDVDBSQLTable::StrIndex(std::string_view StrNewIndex) {
    index_ = StrNewIndex;
    if (sql_.ÄrSQLFöretag) {
        sortColumns_ = sql_.SQLIndexSortering(recordset(), index_);
    } else {
        recordset().setIndex(index_);
    }
}

void ClsDVDBSQLTable::SQLCloseRs() {
    if (sql_.ÄrSQLFöretag) StängPost(Rs);
}

std::string ClsDVDBSQLTable::seekStatement(std::string_view comparison, Keys keys) {
    std::string statement =
        " SELECT " + (StrSpecKolumner.empty() ? "*" : StrSpecKolumner) + " FROM " + table_ + " WHERE ";
    if (BoolUseVarKey1OneString) {
        const std::string key = keys.empty() ? std::string() : TillText(keys.front(), sql_.locale());
        statement += sortColumns_ + " = " + SqlLayer::SQLText(key);
    } else {
        statement += sql_.SQLVillkor(table_, comparison, sortColumns_, keys);
    }
    if (BoolUseOrderBy) statement += " ORDER BY " + sortColumns_;
    return statement;
}

void ClsDVDBSQLTable::SQLSeek(std::string_view StrComparison, Keys keys) {
    if (!sql_.ÄrSQLFöretag) {
        recordset().seek(StrComparison, keys);
        BoolNoMatch = Rs->noMatch();
        return;
    }
    const std::string statement = seekStatement(StrComparison, keys);
    Rs = BoolUseSQLPassThrough ? sql_.SQLÖppnaDirekt(statement, RecordsetType::Dynaset, options_)
                               : sql_.SQLÖppnaRs(statement, RecordsetType::Dynaset, options_);
    BoolNoMatch = Rs->recordCount() == 0;
    if (BoolUseSQLPassThrough && BoolUsePopCursor && !BoolNoMatch) sql_.SQLFyllRs(*Rs);
}

std::string ClsDVDBSQLTable::TxtFmtRs(std::string_view StrF) {
    std::string text;
    PassedOverSilently passedOver;
    attempt(passedOver, "TxtFmtRs", [&] { text = TxtFmtRsInt(static_cast<std::int16_t>(recordset().ordinal(StrF))); });
    return text;
}

std::string ClsDVDBSQLTable::TxtFmtRsInt(std::int16_t IntPosition) {
    const Value& value = recordset().value(IntPosition);
    return TillText(value, Rs->fields()[static_cast<std::size_t>(IntPosition)].type, sql_.locale());
}

double ClsDVDBSQLTable::NumVRs(std::string_view StrF) { return TillDbl(recordset().value(StrF), sql_.locale()); }

double ClsDVDBSQLTable::NumVRsInt(std::int16_t IntPosition) {
    return TillDbl(recordset().value(IntPosition), sql_.locale());
}

float ClsDVDBSQLTable::NumSRs(std::string_view StrF) { return TillSng(recordset().value(StrF), sql_.locale()); }

}  // namespace kolmera
