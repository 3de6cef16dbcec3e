#include "platform/engine/odbc/driverthread.h"

#include <csignal>
#include <optional>
#include <utility>

#include "platform/error.h"

namespace kolmera {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto kUnnoticed = 200ms;  ///< a call that is back by then is waited for without more ado
constexpr auto kTurn = 50ms;
constexpr auto kGrace = 1000ms;  ///< for a call that is slow only, after Cancel

/// Signals are the main thread's.
class NoSignals {
  public:
    NoSignals() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &old_);
    }
    NoSignals(const NoSignals&) = delete;
    NoSignals& operator=(const NoSignals&) = delete;
    ~NoSignals() { pthread_sigmask(SIG_SETMASK, &old_, nullptr); }

  private:
    sigset_t old_{};
};

}  // namespace

DriverThread::DriverThread(std::function<void()> cut) : cut_(std::move(cut)) {
    const NoSignals inherited;
    thread_ = std::thread([this] { work(); });
}

DriverThread::~DriverThread() {
    {
        const std::scoped_lock lock(mutex_);
        ending_ = true;
    }
    called_.notify_one();
    thread_.join();
}

void DriverThread::work() {
    std::unique_lock lock(mutex_);
    for (;;) {
        called_.wait(lock, [this] { return call_ != nullptr || ending_; });
        if (call_ == nullptr) return;
        lock.unlock();
        std::exception_ptr thrown;
        try {
            (*call_)();
        } catch (...) {
            thrown = std::current_exception();
        }
        lock.lock();
        thrown_ = std::move(thrown);
        call_ = nullptr;
        returned_.notify_one();
    }
}

bool DriverThread::done(std::unique_lock<std::mutex>& lock, std::chrono::milliseconds within) {
    return returned_.wait_for(lock, within, [this] { return call_ == nullptr; });
}

DriverThread::End DriverThread::run(const Call& call, std::chrono::milliseconds limit, const Wait& wait) {
    std::unique_lock lock(mutex_);
    if (call_ != nullptr) throw PlatformError(errors::kInternal, "the connection is waiting for its server");
    call_ = &call;
    called_.notify_one();
    const auto begin = Clock::now();
    End end = End::Done;
    std::optional<Clock::time_point> givenUp;
    for (auto turn = kUnnoticed; !done(lock, turn); turn = kTurn) {
        lock.unlock();
        const auto now = Clock::now();
        const auto waited = std::chrono::duration_cast<std::chrono::milliseconds>(now - begin);
        if (!givenUp && wait && !wait(waited)) givenUp = now;
        if (limit > 0ms && waited >= limit) end = End::Late;
        if (givenUp && now - *givenUp >= kGrace) end = End::GivenUp;
        if (end != End::Done) cut_();
        lock.lock();
    }
    const std::exception_ptr thrown = std::exchange(thrown_, nullptr);
    if (thrown && end == End::Done) std::rethrow_exception(thrown);
    return end;
}

}  // namespace kolmera
