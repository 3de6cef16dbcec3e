#include "import/masks/entrylist.h"

#include <algorithm>

#include "platform/lettercase.h"

namespace kolmera {
namespace {

std::size_t place(int number) { return static_cast<std::size_t>(number - 1); }

}  // namespace

EntryList::EntryList(const LoadedMask& mask)
    : entries_(static_cast<std::size_t>(std::max(mask.entries, 0))), codePage_(mask.codePage) {
    for (const Relation& relation : mask.relations) {
        if (holds(relation.Källa)) entries_[place(relation.Källa)].used = true;
    }
}

void EntryList::set(int number, std::string_view bytes) {
    if (!holds(number)) return;
    Entry& entry = entries_[place(number)];
    if (entry.used) toUtf8(trimmed(bytes), codePage_, entry.text);
}

int EntryList::lastUsed() const {
    const auto last = std::find_if(entries_.rbegin(), entries_.rend(), [](const Entry& entry) { return entry.used; });
    return static_cast<int>(entries_.rend() - last);
}

std::string_view EntryList::text(int number) const {
    return holds(number) ? std::string_view(entries_[place(number)].text) : std::string_view();
}

}  // namespace kolmera
