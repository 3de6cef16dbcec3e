#include "import/masks/recordreader.h"

#include <algorithm>

namespace kolmera {

int cutLines(PriceFile& file, int lines, EntryList& entries) {
    int number = 0;
    while (number < lines && !file.atEnd()) entries.set(++number, file.line());
    return number;
}

int cutTabs(std::string_view line, EntryList& entries) {
    int number = 1;
    for (auto tab = line.find('\t'); tab != std::string_view::npos; tab = line.find('\t')) {
        entries.set(number++, line.substr(0, tab));
        line.remove_prefix(tab + 1);
    }
    entries.set(entries.size(), line);
    return number;
}

std::size_t cutFixed(std::string_view record, const LoadedMask& mask, EntryList& entries) {
    int number = 0;
    std::size_t needed = 0;
    for (const Relation& relation : mask.relations) {
        ++number;
        if (relation.FrånPos < 1) continue;  // no piece: its entry stays empty
        const auto first = static_cast<std::size_t>(relation.FrånPos - 1);
        const auto length = static_cast<std::size_t>(relation.Längd);
        entries.set(number, first < record.size() ? record.substr(first, length) : std::string_view());
        needed = std::max(needed, first + length);
    }
    return needed;
}

bool MaskRecordReader::next() {
    if (file_.atEnd()) return false;
    offset_ = static_cast<std::int64_t>(file_.position());
    read();
    ++count_;
    return true;
}

void MaskRecordReader::read() {
    switch (mask_.layout) {
        case LoadedMask::Layout::Lines:
            uneven_ = cutLines(file_, mask_.AntalRader, entries_) < lastUsed_;
            break;
        case LoadedMask::Layout::Tabs:
            uneven_ = readTabs();
            break;
        case LoadedMask::Layout::Fixed:
            uneven_ = readFixed();
            break;
    }
}

bool MaskRecordReader::readTabs() {
    const int texts = cutTabs(file_.line(), entries_);
    const bool lastIsRead = lastUsed_ == entries_.size();
    return texts < entries_.size() ? texts <= lastUsed_ : texts > entries_.size() && lastIsRead;
}

bool MaskRecordReader::readFixed() {
    const std::string_view record = file_.bytes(static_cast<std::size_t>(mask_.Postlängd));
    // The masks' pieces may reach behind the record; only the last record of a file is cut.
    const bool cut = record.size() < static_cast<std::size_t>(mask_.Postlängd);
    const std::size_t needed = cutFixed(record, mask_, entries_);
    const bool uneven = cut && record.size() < needed && record.find_first_not_of(" \r\n") != std::string_view::npos;
    // One separator byte is dropped unseen. Files with CR LF therefore drift by one byte a record.
    file_.bytes(1);
    return uneven;
}

}  // namespace kolmera
