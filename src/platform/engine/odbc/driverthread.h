#pragma once

#include <chrono>
#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>

namespace kolmera {

/// Calls a driver on a thread of its own, one call after the other, so that the program stays alive while the driver
/// waits for its server, and can end that.
class DriverThread {
  public:
    using Call = std::function<void()>;
    /// Asked again and again while a call lasts; false gives up.
    using Wait = std::function<bool(std::chrono::milliseconds waited)>;
    enum class End { Done, Late, GivenUp };

    /// `cut` ends the connection that a call waits for; it may be called again until the call has returned.
    explicit DriverThread(std::function<void()> cut);
    DriverThread(const DriverThread&) = delete;
    DriverThread& operator=(const DriverThread&) = delete;
    ~DriverThread();

    /// Returns when the call has returned, and throws what it threw unless it was cut off. A call that lasts longer
    /// than `limit` (0: no limit), or that is still at it a second after `wait` gave up, is cut off.
    End run(const Call& call, std::chrono::milliseconds limit, const Wait& wait);

  private:
    void work();
    [[nodiscard]] bool done(std::unique_lock<std::mutex>& lock, std::chrono::milliseconds within);

    std::function<void()> cut_;
    std::mutex mutex_;
    std::condition_variable called_, returned_;
    const Call* call_ = nullptr;
    std::exception_ptr thrown_;
    bool ending_ = false;
    std::thread thread_;  ///< begins when everything else is there
};

}  // namespace kolmera
