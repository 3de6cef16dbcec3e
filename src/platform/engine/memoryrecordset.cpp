#include "platform/engine/memoryrecordset.h"

#include <algorithm>
#include <utility>

#include "platform/engine/criteria.h"
#include "platform/engine/fieldlookup.h"
#include "platform/error.h"

namespace kolmera {

MemoryRecordset::MemoryRecordset(std::string_view source, RecordsetType type, std::vector<FieldDef> fields,
                                 std::vector<Record> records, const Locale& locale)
    : name_(source),
      type_(type),
      fields_(std::move(fields)),
      records_(std::move(records)),
      locale_(locale),
      position_(records_.size()) {}

int MemoryRecordset::ordinal(std::string_view field) const { return requiredOrdinal(fields_, field); }

void MemoryRecordset::moveToModified() { throw PlatformError(errors::kNoCurrentRecord, "no record has been saved"); }

void MemoryRecordset::setIndex(std::string_view /*index*/) {
    throw PlatformError(errors::kInternal, "the recordset has no index");
}

void MemoryRecordset::seek(std::string_view /*comparison*/, std::span<const Value> /*keys*/) {
    throw PlatformError(errors::kInternal, "the recordset has no index");
}

void MemoryRecordset::findFirst(std::string_view criteria) {
    noMatch_ = true;
    const Criteria parsed = Criteria::parse(criteria, fields_, locale_);
    const auto found =
        std::find_if(records_.begin(), records_.end(), [&](const Record& record) { return parsed.metBy(record); });
    if (found == records_.end()) return;
    position_.moveTo(static_cast<std::size_t>(found - records_.begin()));
    noMatch_ = false;
}

const Value& MemoryRecordset::value(int ordinal) {
    const Record& record = records_[position_.current()];
    return record[requiredPlace(ordinal, record.size())];
}

void MemoryRecordset::refuseWriting() { throw PlatformError(errors::kInternal, "the recordset is for reading only"); }

}  // namespace kolmera
