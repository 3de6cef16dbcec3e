// A network of a given length on one machine: what comes in on the port that it prints goes to a port of 127.0.0.1,
// and back, so many milliseconds later. Ends when its standard input does.
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <exception>
#include <list>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

sockaddr_in loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

const sockaddr* plain(const sockaddr_in& address) { return reinterpret_cast<const sockaddr*>(&address); }

void require(bool good, const char* what) {
    if (!good) throw std::runtime_error(what);
}

void sendAtOnce(int socket) {
    const int on = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

/// Bytes on their way from one socket to another.
class Way {
  public:
    Way(int from, int to) : from_(from), to_(to) {}

    /// False at the end.
    bool take(Clock::duration delay) {
        std::array<char, 65536> buffer{};
        const ssize_t count = read(from_, buffer.data(), buffer.size());
        if (count <= 0) return false;
        pieces_.push_back({Clock::now() + delay, {buffer.data(), static_cast<std::size_t>(count)}});
        return true;
    }
    bool deliver() {
        for (; !pieces_.empty() && pieces_.front().due <= Clock::now(); pieces_.pop_front()) {
            const std::string& bytes = pieces_.front().bytes;
            for (std::size_t sent = 0; sent < bytes.size();) {
                const ssize_t count = send(to_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
                if (count <= 0) return false;
                sent += static_cast<std::size_t>(count);
            }
        }
        return true;
    }
    [[nodiscard]] int from() const { return from_; }
    /// Until the next piece is due, or `none`.
    [[nodiscard]] Clock::duration wait(Clock::duration none) const {
        return pieces_.empty() ? none : std::min(none, pieces_.front().due - Clock::now());
    }

  private:
    struct Piece {
        Clock::time_point due;
        std::string bytes;
    };
    int from_, to_;
    std::deque<Piece> pieces_;
};

struct Connection {
    Connection(int a, int b) : there(a, b), back(b, a) {}
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection() {
        close(there.from());
        close(back.from());
    }
    Way there, back;
};

int listenOnLoopback() {
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = loopback(0);
    socklen_t size = sizeof address;
    require(listener >= 0 && bind(listener, plain(address), size) == 0 && listen(listener, 16) == 0, "listen");
    require(getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) == 0, "getsockname");
    std::printf("%d\n", ntohs(address.sin_port));
    std::fflush(stdout);
    return listener;
}

int connectTo(int port) {
    const int server = socket(AF_INET, SOCK_STREAM, 0);
    const sockaddr_in address = loopback(port);
    require(server >= 0 && connect(server, plain(address), sizeof address) == 0, "connect");
    sendAtOnce(server);
    return server;
}

/// One turn of waiting and passing on; false when the standard input has ended.
bool turn(int listener, int port, Clock::duration delay, std::list<Connection>& connections) {
    Clock::duration wait = std::chrono::seconds(1);
    std::vector<pollfd> polled = {{STDIN_FILENO, POLLIN, 0}, {listener, POLLIN, 0}};
    for (const Connection& connection : connections) {
        for (const Way* way : {&connection.there, &connection.back}) {
            polled.push_back({way->from(), POLLIN, 0});
            wait = way->wait(wait);
        }
    }
    const auto nanoseconds = std::max<std::int64_t>(std::chrono::nanoseconds(wait).count(), 0);
    const timespec time{.tv_sec = nanoseconds / 1'000'000'000, .tv_nsec = nanoseconds % 1'000'000'000};
    ppoll(polled.data(), polled.size(), &time, nullptr);
    if (polled[0].revents != 0) return false;
    std::size_t place = 2;
    for (auto connection = connections.begin(); connection != connections.end();) {
        bool open = true;
        for (Way* way : {&connection->there, &connection->back}) {
            if (polled[place++].revents != 0) open = way->take(delay) && open;
            open = way->deliver() && open;
        }
        connection = open ? std::next(connection) : connections.erase(connection);
    }
    if (polled[1].revents != 0) {
        const int client = accept(listener, nullptr, nullptr);
        require(client >= 0, "accept");
        sendAtOnce(client);
        connections.emplace_back(client, connectTo(port));
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("bench_delay PORT MILLISECONDS\n", stderr);
        return 2;
    }
    try {
        const int port = std::atoi(argv[1]);
        const auto delay = std::chrono::duration_cast<Clock::duration>(
            std::chrono::duration<double, std::milli>(std::strtod(argv[2], nullptr)));
        const int listener = listenOnLoopback();
        std::list<Connection> connections;
        while (turn(listener, port, delay, connections)) {
        }
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_delay: %s\n", error.what());
        return 1;
    }
}
