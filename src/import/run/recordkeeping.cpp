#include "import/run/recordkeeping.h"

#include <algorithm>
#include <charconv>

#include "platform/settings.h"
#include "platform/systemuser.h"
#include "startup/startstate.h"

namespace kolmera {

namespace {

/// What is no whole number of 0 or more counts as not set.
std::int64_t numberOr(const std::string& text, std::int64_t otherwise) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = error == std::errc() && end == text.data() + text.size() && number >= 0;
    return whole ? number : otherwise;
}

}  // namespace

RecordKeeping keptInDataFolder(const StartState& state) {
    constexpr std::int64_t kMegabyte = std::int64_t{1} << 20;
    constexpr std::int64_t kMostMegabytes = 1'000'000'000;
    const char* const kSection = "Körningar";
    const SettingsStore settings(state.dataFolder() / "Korningar.ini");
    RecordLimits limits;
    limits.number = numberOr(settings.get(kSection, "Antal"), limits.number);
    limits.bytes =
        std::min(numberOr(settings.get(kSection, "Megabyte"), limits.bytes / kMegabyte), kMostMegabytes) * kMegabyte;
    return {.folder = RunFolder(state.dataFolder()).path(),
            .user = state.Signatur.empty() ? SystemUser::current().login : state.Signatur,
            .copiesPriceFile = settings.get(kSection, "Prisfil") == "1",
            .limits = limits};
}

}  // namespace kolmera
