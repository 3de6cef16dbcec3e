#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "history/blockbytes.h"
#include "history/recordreader.h"
#include "platform/engine/changelistener.h"

namespace kolmera {

// What stands in the blocks of a run's record: places of the price file and changed rows; and, in blocks of their own,
// remarks. The table `block` of a record holds them in the order of the writing.

void writePlace(BlockWriter& block, const RecordPlace& place);
/// `label` is the column that says whose product the row is, by `labelColumn`.
void writeRow(BlockWriter& block, ChangeKind kind, const ChangedRow& row, int label);
/// -1 where there is none.
int labelColumn(const TableDef& table);
void writeRemark(BlockWriter& block, const RecordRemark& remark);

/// Each stops early, and answers false, when `take` does.
bool readRows(std::string_view block, const std::function<bool(const RowChange&)>& take);
bool readPlaces(std::string_view block, const std::function<bool(const RecordPlace&)>& take);
/// `lengths`: the remarks have theirs.
bool readRemarks(std::string_view block, bool lengths, const std::function<bool(const RecordRemark&)>& take);

}  // namespace kolmera
