#include "history/lastruns.h"

#include <algorithm>

#include "platform/error.h"

namespace kolmera {

void LastRuns::look() {
    ids_ = folder_.ids();
    std::erase_if(read_, [this](const auto& entry) {
        const auto& [id, run] = entry;
        return !run || run->underWay || !std::ranges::binary_search(ids_, id, std::greater());
    });
}

bool LastRuns::knows(const std::vector<std::string>& jobs) const {
    return std::ranges::all_of(jobs, [this](const std::string& job) { return of(job).has_value(); });
}

bool LastRuns::read(int most, const std::vector<std::string>& jobs) {
    for (const std::string& id : ids_) {
        if (read_.contains(id)) continue;
        if (knows(jobs)) return false;
        if (most-- == 0) return true;
        try {
            RunHeader run = folder_.header(id);
            run.definition.clear();
            read_[id] = std::move(run);
        } catch (const PlatformError&) {
            read_[id] = std::nullopt;
        }
    }
    return false;
}

std::optional<LastRun> LastRuns::of(const std::string& job) const {
    // Whoever takes a run back has a record that is newer than the run's.
    std::vector<std::string> takenBack;
    for (const std::string& id : ids_) {
        const auto found = read_.find(id);
        if (found == read_.end()) return std::nullopt;
        if (!found->second) continue;
        const RunHeader& run = *found->second;
        if (run.kind == RunKind::Undo) takenBack.push_back(run.of);
        if (run.kind != RunKind::Run || run.job != job) continue;
        return LastRun{.run = run, .takenBack = std::ranges::find(takenBack, id) != takenBack.end()};
    }
    return std::nullopt;
}

}  // namespace kolmera
