#pragma once

#include <atomic>
#include <functional>
#include <list>
#include <string>
#include <thread>
#include <utility>

namespace kolmera::test {

/// A line to the test server that can fall silent: it stays open, and nothing gets through any more.
class ServerLine {
  public:
    ServerLine();
    ServerLine(const ServerLine&) = delete;
    ServerLine& operator=(const ServerLine&) = delete;
    ~ServerLine();

    /// What a connect string needs to go this way.
    [[nodiscard]] std::string words() const { return ";Port=" + std::to_string(port_); }
    /// Pieces that clients have sent so far.
    [[nodiscard]] int pieces() const { return pieces_; }
    /// From now on, or behind so many pieces more; `then` is called on another thread.
    void fallSilent(int pieces = 0, std::function<void()> then = {});
    void speak() { silentAt_ = -1; }
    /// New connections get through again; old ones are lost.
    void speakAnew();

  private:
    using Ends = std::pair<int, int>;
    void work(const std::stop_token& stop);
    void accept();
    bool passOn(int from, int to, bool toServer);
    void end(const Ends& connection);

    int listener_, port_ = 0;
    std::atomic<int> pieces_ = 0, silentAt_ = -1;
    std::atomic<bool> renewed_ = false;
    std::function<void()> then_;
    std::list<Ends> connections_;  ///< client and server
    std::jthread thread_;          ///< begins when everything else is there
};

}  // namespace kolmera::test
