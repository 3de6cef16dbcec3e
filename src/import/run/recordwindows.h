#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "import/run/runmachinery.h"
#include "import/run/windowpace.h"

namespace kolmera {

/// Keeps remarks, until it is known that what they are about has happened.
class HeldRemarks final : public RemarkListener {
  public:
    void at(const RecordPlace& place) { place_ = place; }
    void about(std::string_view product) override;
    void remark(const Remarked& remarked) override;
    void failed(const Remarked& remarked, const PlatformError& error) override;

    void drop() { held_.clear(); }
    /// Tells them as if they were made now.
    void tell(RunMachinery& run, RemarkListener& listener);

  private:
    struct Held {
        RecordPlace place;
        std::string kind, product, column, text;  ///< without a kind: `about`
        std::int64_t record = 0;
        std::optional<PlatformError> error = {};
    };
    void hold(const Remarked& remarked, std::optional<PlatformError> error);

    RecordPlace place_;
    std::vector<Held> held_;
};

/// Takes the records of a run to a server many at a time (`Database::beginWindow`). How they are imported does not
/// change: a window is done over and over from the same state, until the server has been asked for all that its records
/// look up.
class RecordWindows {
  public:
    /// Records of more bytes make a window smaller.
    static constexpr std::int64_t kMostBytes = 4 << 20;

    explicit RecordWindows(RunMachinery& run) : run_(run) {}

    /// How many records the next window should have.
    [[nodiscard]] std::size_t size() const { return pace_.size(); }
    /// `work` imports the records of a window, `restore` brings its own state back to before it. False: nothing of it
    /// has happened, and its records are to be imported one by one.
    /// `look` only looks up what `work` does, for the first time. It throws nothing but WindowBroken.
    [[nodiscard]] bool carryOut(const std::function<void()>& work, const std::function<void()>& restore,
                                const std::function<void()>& look = {});
    /// For `work`: the record at hand. Whether to tell of it, and listen for Cancel: what has been done before has only
    /// been tried.
    [[nodiscard]] bool at(const RecordPlace& place);

  private:
    RunMachinery& run_;
    HeldRemarks remarks_;
    WindowPace pace_;
    bool tried_ = false;
    std::int64_t told_ = 0;
};

}  // namespace kolmera
