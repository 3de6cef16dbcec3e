#include "import/recordreader.h"

namespace kolmera {

void cutLines(PriceFile& file, int lines, EntryList& entries) {
    for (int number = 1; number <= lines && !file.atEnd(); ++number) entries.set(number, file.line());
}

void cutTabs(std::string_view line, EntryList& entries) {
    int number = 1;
    for (auto tab = line.find('\t'); tab != std::string_view::npos; tab = line.find('\t')) {
        entries.set(number++, line.substr(0, tab));
        line.remove_prefix(tab + 1);
    }
    entries.set(entries.size(), line);
}

void cutFixed(std::string_view record, const LoadedMask& mask, EntryList& entries) {
    int number = 0;
    for (const Relation& relation : mask.relations) {
        ++number;
        if (relation.FrånPos < 1) continue;  // no piece: its entry stays empty
        const auto first = static_cast<std::size_t>(relation.FrånPos - 1);
        const auto length = static_cast<std::size_t>(relation.Längd);
        entries.set(number, first < record.size() ? record.substr(first, length) : std::string_view());
    }
}

bool RecordReader::next() {
    if (file_.atEnd()) return false;
    read();
    ++count_;
    return true;
}

void RecordReader::read() {
    switch (mask_.layout) {
        case LoadedMask::Layout::Lines:
            cutLines(file_, mask_.AntalRader, entries_);
            break;
        case LoadedMask::Layout::Tabs:
            cutTabs(file_.line(), entries_);
            break;
        case LoadedMask::Layout::Fixed:
            cutFixed(file_.bytes(static_cast<std::size_t>(mask_.Postlängd)), mask_, entries_);
            // One separator byte is dropped unseen. Files with CR LF therefore drift by one byte a record.
            file_.bytes(1);
            break;
    }
}

}  // namespace kolmera
