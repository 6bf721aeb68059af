#pragma once

#include <sys/types.h>

#include <cstdint>
#include <vector>

namespace dorix {

/// A socket of this computer that waits for connections.
struct Listener {
    int port = 0;
    uid_t owner = 0;
    std::uint64_t number = 0;  // the socket's own
};

/// All of them. What listens over IPv6 may be reached over IPv4 as well. Any thread; takes far less than a
/// millisecond, but some twenty where the kernel has to be asked by its files.
std::vector<Listener> listeners();

}  // namespace dorix
