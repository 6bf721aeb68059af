#include "service/LocalSecret.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>

namespace dorix::service {

namespace {
constexpr int longestWait = 5000;     // milliseconds, for each byte
constexpr std::size_t shortest = 32;  // 256 bits take 43 characters in base64, 64 in hex
constexpr std::size_t longest = 1024;
}  // namespace

std::string readLocalSecret(int descriptor) {
    // Nothing that this program starts is to have it.
    if (::fcntl(descriptor, F_SETFD, FD_CLOEXEC) != 0) throw std::runtime_error("the descriptor is not open");
    std::string secret;
    // Byte by byte, as what comes after the line is not ours.
    while (secret.size() <= longest) {
        pollfd waiting{.fd = descriptor, .events = POLLIN, .revents = 0};
        if (::poll(&waiting, 1, longestWait) <= 0) throw std::runtime_error("no secret came");
        char byte = 0;
        const auto count = ::read(descriptor, &byte, 1);
        if (count < 0 && (errno == EINTR || errno == EAGAIN)) continue;
        if (count <= 0) throw std::runtime_error("no secret came");
        if (byte == '\n') break;
        secret += byte;
    }
    if (secret.size() < shortest || secret.size() > longest)
        throw std::runtime_error("that is no secret of 256 bits");
    return secret;
}

}  // namespace dorix::service
