#pragma once

#include <algorithm>
#include <filesystem>
#include <string>

#include "platform/error.h"
#include "platform/recordfolder.h"

namespace kolmera {

/// What the files of definitions have in common.

/// The records of that layout's file in the data folder.
inline Records readDefinitions(const std::filesystem::path& dataFolder, const RecordLayout& layout) {
    return readRecords(dataFolder / layout.file, layout);
}

/// Refuses a change of what is no longer stored as it was shown.
template <typename Definition>
void expectUnchanged(const Definition& stored, const Definition& shown, const RecordLayout& layout) {
    if (stored == shown) return;
    throw PlatformError(errors::kChangedElsewhere, "another program has changed the record")
        .about(std::string(layout.file));
}

/// A field of one letter; a blank when it was never written.
inline char letter(const Record& record, RecordField field) {
    const std::string text = record.text(field);
    return text.empty() ? ' ' : text.front();
}

inline void setLetter(Record& record, RecordField field, char letter) {
    record.setCutText(field, std::string_view(&letter, 1));
}

/// The nearest number that the digits of a field can hold: a longer one would read back as another number.
inline int fitting(RecordField field, int number) {
    int largest = 0;
    for (int digit = 0; digit < field.width; ++digit) largest = largest * 10 + 9;
    return std::clamp(number, 0, largest);
}

}  // namespace kolmera
