#pragma once

#include <sys/types.h>

#include <vector>

namespace kolmera {

/// The sockets that a driver opens for a connection, found by comparing what the process has open: no driver hands them
/// out. Through them a silent server is noticed, and a call that waits for one is ended, whatever the driver can do.
class DriverSockets {
  public:
    DriverSockets();  ///< before the driver connects

    /// The driver has connected: the sockets opened since are the connection's. Lets the system ask a silent server for
    /// a sign of life and end the connection within half a minute.
    void take();
    /// Ends the connection; a driver that waits for the server is told so at once. Before `take`, every socket opened
    /// since counts.
    void shutDown() const;

  private:
    struct Socket {
        int descriptor;
        ino_t identity;
        friend bool operator==(const Socket&, const Socket&) = default;
    };
    static std::vector<Socket> openSockets();
    [[nodiscard]] std::vector<Socket> openedSince() const;

    std::vector<Socket> before_, own_;
    bool taken_ = false;
};

}  // namespace kolmera
