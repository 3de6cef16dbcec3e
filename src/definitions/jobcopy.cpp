#include "definitions/jobcopy.h"

#include <algorithm>

#include "definitions/maskfile.h"
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

namespace {

/// The name of the copy.
std::string copyMask(const std::filesystem::path& dataFolder, const std::string& name, std::string_view word) {
    MaskFile masks(dataFolder);
    auto whole = masks.find(name);
    if (!whole) return name;
    std::vector<std::string> taken;
    for (const Mask& mask : masks.all()) taken.push_back(mask.Namn);
    whole->mask.number = 0;
    whole->mask.Namn = nameOfCopy(name, word, taken, kMaskNameLength);
    masks.save(whole->mask, whole->relations, std::nullopt);
    return whole->mask.Namn;
}

}  // namespace

int copyJob(const std::filesystem::path& dataFolder, const Job& shown, bool withMask, std::string_view word) {
    JobFile jobs(dataFolder);
    std::vector<std::string> taken;
    for (const Job& job : jobs.all()) taken.push_back(job.name);
    const std::string name = nameOfCopy(shown.name, word, taken, kJobTextLength);
    // The mask first: without its job it is a mask like any other.
    const std::string mask = withMask ? copyMask(dataFolder, shown.mask, word) : shown.mask;
    return jobs.copy(shown, name, mask);
}

}  // namespace kolmera
