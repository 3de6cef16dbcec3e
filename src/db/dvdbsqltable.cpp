#include "db/dvdbsqltable.h"

#include "db/conversions.h"
#include "platform/attempt.h"

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

std::string ClsDVDBSQLTable::selection() const {
    return " SELECT " + (StrSpecKolumner.empty() ? "*" : StrSpecKolumner) + " FROM " + table_ + " WHERE ";
}

void ClsDVDBSQLTable::SQLSeek(std::string_view StrComparison, Keys keys) {
    if (!sql_.ÄrSQLFöretag) {
        recordset().seek(StrComparison, keys);
        BoolNoMatch = Rs->noMatch();
        return;
    }
    Rs = sql_.SQLÖppnaRs(selection() + sql_.SQLVillkor(table_, StrComparison, sortColumns_, keys),
                         RecordsetType::Dynaset, options_);
    BoolNoMatch = Rs->recordCount() == 0;
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

}  // namespace kolmera
