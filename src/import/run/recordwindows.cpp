#include "import/run/recordwindows.h"

#include <chrono>
#include <utility>

#include "db/sqllayer.h"

namespace kolmera {
namespace {

constexpr int kMostTimes = 5;

using Clock = std::chrono::steady_clock;

/// The run's counts as they were before a window.
class CountsBefore {
  public:
    explicit CountsBefore(RunSummary& summary) : summary_(summary) {
        SavedProducts products = std::move(summary_.products);
        before_ = summary_;
        summary_.products = std::move(products);
        summary_.products.hold();
    }
    void keep() { summary_.products.keepHeld(); }
    /// `again`: for another time.
    void restore(bool again) {
        SavedProducts products = std::move(summary_.products);
        products.dropHeld();
        summary_ = before_;
        summary_.products = std::move(products);
        if (again) summary_.products.hold();
    }

  private:
    RunSummary& summary_;
    RunSummary before_;
};

}  // namespace

void HeldRemarks::hold(const Remarked& remarked, std::optional<PlatformError> error) {
    held_.push_back({.place = place_,
                     .kind = std::string(remarked.kind),
                     .product = std::string(remarked.product),
                     .column = std::string(remarked.column),
                     .text = std::string(remarked.text),
                     .record = remarked.record,
                     .error = std::move(error)});
}

void HeldRemarks::about(std::string_view product) {
    Remarked about;
    about.product = product;
    hold(about, std::nullopt);
}

void HeldRemarks::remark(const Remarked& remarked) { hold(remarked, std::nullopt); }

void HeldRemarks::failed(const Remarked& remarked, const PlatformError& error) { hold(remarked, error); }

void HeldRemarks::tell(RunMachinery& run, RemarkListener& listener) {
    for (const Held& held : std::exchange(held_, {})) {
        run.at(held.place);
        if (held.kind.empty()) {
            listener.about(held.product);
            continue;
        }
        const Remarked remarked{.kind = held.kind,
                                .record = held.record,
                                .product = held.product,
                                .column = held.column,
                                .text = held.text};
        if (held.error) {
            listener.failed(remarked, *held.error);
        } else {
            listener.remark(remarked);
        }
    }
}

bool RecordWindows::at(const RecordPlace& place) {
    run_.at(place);
    remarks_.at(place);
    if (!tried_ || place.record <= told_) return false;
    told_ = place.record;
    return true;
}

bool RecordWindows::carryOut(const std::function<void()>& work, const std::function<void()>& restore,
                             const std::function<void()>& look) {
    Database& database = *run_.sql().FtgDB;
    RunReport& report = run_.report();
    RemarkListener* const listener = report.listener();
    CountsBefore counts(run_.summary());
    const auto putBack = [&](bool again) {
        counts.restore(again);
        restore();
        remarks_.drop();
        report.tellTo(again && listener != nullptr ? &remarks_ : listener);
    };
    if (listener != nullptr) report.tellTo(&remarks_);
    tried_ = false;
    database.beginWindow();
    Clock::duration waited{};
    auto end = WindowEnd::Again;
    for (int times = 1; end == WindowEnd::Again; ++times) {
        const bool looks = times == 1 && look;
        bool complete = false;
        try {
            if (looks) {
                look();
            } else {
                work();
                complete = true;
            }
        } catch (const WindowBroken&) {
            complete = false;
        } catch (const PlatformError&) {
            // What the records before it have written counts, and is written when it comes again without a window.
            putBack(false);
            end = database.endWindow(false, false);
            pace_.startAnew();
            return false;
        }
        const auto begin = Clock::now();
        try {
            end = database.endWindow(complete, times < kMostTimes);
            if (looks && end == WindowEnd::Alone) {  // they look up nothing, or what cannot be asked together
                database.beginWindow();
                end = WindowEnd::Again;
            }
        } catch (const PlatformError&) {
            putBack(false);  // the connection is lost
            throw;
        }
        waited += Clock::now() - begin;
        if (end != WindowEnd::Kept) putBack(end == WindowEnd::Again);
        tried_ = true;
    }
    const bool kept = end == WindowEnd::Kept;
    if (kept) {
        counts.keep();
        report.tellTo(listener);
        if (listener != nullptr) remarks_.tell(run_, *listener);
        pace_.took(std::chrono::duration<double, std::milli>(waited).count());
    } else {
        pace_.startAnew();
    }
    return kept;
}

}  // namespace kolmera
