#include "platform/engine/odbc/driversockets.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace kolmera {
namespace {

void set(int socket, int level, int option, int value) { setsockopt(socket, level, option, &value, sizeof value); }

/// Signs of life after 15 seconds of silence, three of them; what was sent has to be acknowledged within 30 seconds.
/// On a socket of the same machine these change nothing.
void keepAlive(int socket) {
    set(socket, SOL_SOCKET, SO_KEEPALIVE, 1);
    set(socket, IPPROTO_TCP, TCP_KEEPIDLE, 15);
    set(socket, IPPROTO_TCP, TCP_KEEPINTVL, 5);
    set(socket, IPPROTO_TCP, TCP_KEEPCNT, 3);
    set(socket, IPPROTO_TCP, TCP_USER_TIMEOUT, 30'000);
}

}  // namespace

DriverSockets::DriverSockets() : before_(openSockets()) {}

std::vector<DriverSockets::Socket> DriverSockets::openSockets() {
    std::vector<Socket> sockets;
    std::error_code error;
    for (std::filesystem::directory_iterator entry("/proc/self/fd", error), end; !error && entry != end;
         entry.increment(error)) {
        const int descriptor = std::atoi(entry->path().filename().c_str());
        struct stat status {};
        if (fstat(descriptor, &status) == 0 && S_ISSOCK(status.st_mode)) sockets.push_back({descriptor, status.st_ino});
    }
    return sockets;
}

std::vector<DriverSockets::Socket> DriverSockets::openedSince() const {
    std::vector<Socket> sockets = openSockets();
    std::erase_if(sockets,
                  [this](const Socket& socket) { return std::ranges::find(before_, socket) != before_.end(); });
    return sockets;
}

void DriverSockets::take() {
    own_ = openedSince();
    taken_ = true;
    for (const Socket& socket : own_) keepAlive(socket.descriptor);
}

void DriverSockets::shutDown() const {
    for (const Socket& socket : openedSince()) {
        const bool own = !taken_ || std::ranges::find(own_, socket) != own_.end();
        if (own) shutdown(socket.descriptor, SHUT_RDWR);
    }
}

}  // namespace kolmera
