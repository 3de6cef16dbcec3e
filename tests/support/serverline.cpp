#include "support/serverline.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <odbcinst.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <vector>

#include "support/testserver.h"

namespace kolmera::test {
namespace {

int serverPort() {
    const std::string& source = TestServer::ofProcess().connectString();
    const std::string name = source.substr(source.find('=') + 1, source.find(';') - source.find('=') - 1);
    std::array<char, 16> port{};
    SQLGetPrivateProfileString(name.c_str(), "Port", "", port.data(), static_cast<int>(port.size()), "odbc.ini");
    return std::atoi(port.data());
}

template <typename Call>
int onLoopback(Call call, int port) {
    const int made = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (call(made, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) throw std::runtime_error("line");
    return made;
}

}  // namespace

ServerLine::ServerLine() : listener_(onLoopback(bind, 0)) {
    sockaddr_in address{};
    socklen_t length = sizeof address;
    if (listen(listener_, 8) != 0 || getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length) != 0)
        throw std::runtime_error("line");
    port_ = ntohs(address.sin_port);
    thread_ = std::jthread([this](const std::stop_token& stop) { work(stop); });
}

ServerLine::~ServerLine() {
    thread_.request_stop();
    thread_.join();
    for (const Ends& connection : connections_) end(connection);
    close(listener_);
}

void ServerLine::fallSilent(int pieces, std::function<void()> then) {
    then_ = std::move(then);
    silentAt_ = pieces_ + pieces;
}

void ServerLine::speakAnew() {
    speak();
    renewed_ = true;
    while (renewed_) std::this_thread::yield();
}

void ServerLine::end(const Ends& connection) {
    close(connection.first);
    close(connection.second);
}

void ServerLine::accept() {
    const int client = ::accept(listener_, nullptr, nullptr);
    const int server = onLoopback(connect, serverPort());
    const int on = 1;
    for (const int one : {client, server}) setsockopt(one, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    connections_.emplace_back(client, server);
}

bool ServerLine::passOn(int from, int to, bool toServer) {
    std::array<char, 65536> buffer{};
    const ssize_t count = recv(from, buffer.data(), buffer.size(), MSG_PEEK);
    if (count <= 0) return false;
    if (toServer && silentAt_ >= 0 && pieces_ >= silentAt_) return true;  // stays where it is
    if (toServer) ++pieces_;
    recv(from, buffer.data(), static_cast<std::size_t>(count), 0);
    return send(to, buffer.data(), static_cast<std::size_t>(count), MSG_NOSIGNAL) == count;
}

void ServerLine::work(const std::stop_token& stop) {
    while (!stop.stop_requested()) {
        if (renewed_) {
            for (const Ends& connection : connections_) end(connection);
            connections_.clear();
            renewed_ = false;
        }
        const bool silent = silentAt_ >= 0 && pieces_ >= silentAt_;
        if (silent && then_) std::exchange(then_, {})();
        std::vector<pollfd> waiting = {{listener_, POLLIN, 0}};
        if (!silent) {
            for (const auto& [client, server] : connections_)
                waiting.insert(waiting.end(), {{client, POLLIN, 0}, {server, POLLIN, 0}});
        }
        if (poll(waiting.data(), waiting.size(), 20) <= 0) continue;
        std::size_t place = 1;
        for (auto at = connections_.begin(); !silent && at != connections_.end();) {
            const auto [client, server] = *at;
            bool open = true;
            if (waiting[place++].revents != 0) open = passOn(client, server, true);
            if (waiting[place++].revents != 0) open = open && passOn(server, client, false);
            if (!open) end(*at);
            at = open ? std::next(at) : connections_.erase(at);
        }
        if (waiting.front().revents != 0) accept();
    }
}

}  // namespace kolmera::test
