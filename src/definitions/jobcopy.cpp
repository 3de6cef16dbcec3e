#include "definitions/jobcopy.h"

#include <algorithm>

#include "platform/encodings.h"
#include "platform/lettercase.h"

namespace kolmera {

std::string nameOfCopy(std::string_view name, std::string_view word, const std::vector<std::string>& taken,
                       int length) {
    for (int number = 1;; ++number) {
        std::string end = " (";
        end += word;
        if (number > 1) end.append(" ").append(std::to_string(number));
        end += ")";
        const std::size_t room = static_cast<std::size_t>(length) - characterCount(end);
        std::string copy(trimmedRight(firstCharacters(name, room)));
        copy += end;
        const bool isTaken = std::ranges::any_of(taken, [&](const auto& other) { return equalNoCase(other, copy); });
        if (!isTaken) return copy;
    }
}

int copyMask(const std::filesystem::path& dataFolder, const WholeMask& mask, std::string_view word) {
    MaskFile masks(dataFolder);
    std::vector<std::string> taken;
    for (const Mask& other : masks.all()) taken.push_back(other.Namn);
    Mask copy = mask.mask;
    copy.number = 0;
    copy.Namn = nameOfCopy(mask.mask.Namn, word, taken, kMaskNameLength);
    return masks.save(copy, mask.relations, std::nullopt);
}

int copyJob(const std::filesystem::path& dataFolder, const Job& shown, bool withMask, std::string_view word) {
    JobFile jobs(dataFolder);
    std::vector<std::string> taken;
    for (const Job& job : jobs.all()) taken.push_back(job.name);
    const std::string name = nameOfCopy(shown.name, word, taken, kJobTextLength);
    // The mask first: without its job it is a mask like any other.
    std::string mask = shown.mask;
    const auto whole = withMask ? MaskFile(dataFolder).find(mask) : std::nullopt;
    if (whole) mask = MaskFile(dataFolder).read(copyMask(dataFolder, *whole, word)).value().mask.Namn;
    return jobs.copy(shown, name, mask);
}

}  // namespace kolmera
