#include "linux/speechd/SpeechdServer.h"

#include "base/async/Completion.h"
#include "base/async/Timeout.h"
#include "linux/xdg/Environment.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace dorix {

namespace {

constexpr double patience = 10;  // seconds, for a server that starts

std::string socketPath() {
    constexpr std::string_view method = "unix_socket:";
    const char* address = std::getenv("SPEECHD_ADDRESS");  // NOLINT(concurrency-mt-unsafe)
    if (address != nullptr && std::string_view(address).starts_with(method)) return address + method.size();
    return xdgRuntimeFolder() / "speech-dispatcher" / "speechd.sock";
}

FileDescriptor connectTo(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof(address.sun_path)) return FileDescriptor();
    std::memcpy(address.sun_path, path.data(), path.size());
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const auto* const place = reinterpret_cast<const sockaddr*>(&address);
    if (!socket || ::connect(socket.get(), place, sizeof(address)) != 0) return FileDescriptor();
    return socket;
}

}  // namespace

Task<FileDescriptor> SpeechdServer::connect() {
    const auto path = socketPath();
    if (auto socket = connectTo(path)) co_return socket;
    co_await start(path);
    co_return connectTo(path);
}

/// Returns when it is ready: its first process ends then.
Task<void> SpeechdServer::start(std::string socket) {
    const auto child = spawn(
        {"speech-dispatcher", "--spawn", "--communication-method", "unix_socket", "--socket-path", socket},
        SpawnAs::detached);
    if (!child) co_return;
    const auto process = openProcess(*child);
    children_.add(*child);
    if (!process) co_return;
    const Completion<void> ended;
    const auto watch = watcher_.watchReadable(process.get(), [ended] { ended.complete(); });
    co_await withTimeout([](Completion<void> end) -> Task<void> { co_await end; }(ended), patience);
}

}  // namespace dorix
