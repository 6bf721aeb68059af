#include "linux/process/ChildCompanionService.h"

#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <system_error>
#include <utility>

namespace dorix {

namespace fs = std::filesystem;

namespace {

/// 256 bits in hexadecimal digits; nothing where the system has no randomness to give.
std::optional<std::string> makeSecret() {
    std::array<unsigned char, 32> bytes{};
    if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) return std::nullopt;
    static constexpr std::string_view digits = "0123456789abcdef";
    std::string secret;
    for (const auto byte : bytes) {
        secret += digits[byte >> 4U];
        secret += digits[byte & 0xFU];
    }
    return secret;
}

struct Pipe {
    FileDescriptor reading;
    FileDescriptor writing;
};

/// A pipe that holds a line.
std::optional<Pipe> pipeWith(const std::string& line) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) return std::nullopt;
    Pipe pipe{FileDescriptor(ends[0]), FileDescriptor(ends[1])};
    const std::string text = line + "\n";
    // It is far shorter than what a pipe takes at once.
    if (::write(pipe.writing.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size()))
        return std::nullopt;
    return pipe;
}

}  // namespace

std::optional<std::string> ChildCompanionService::start(const std::string& address,
                                                        std::function<void()> onEnd) {
    end();
    auto secret = makeSecret();
    auto pipe = secret ? pipeWith(*secret) : std::nullopt;
    if (!pipe || executable_.empty()) return std::nullopt;
    // What else the user has set for a service holds for this one too.
    const auto child = spawn({"env", "-u", "DORIX_SERVICE_TLS_CERTIFICATE", "-u", "DORIX_SERVICE_TLS_KEY",
                              "DORIX_SERVICE_LISTEN=" + address, executable_.string(), "--local-secret-fd",
                              std::to_string(inheritedDescriptor)},
                             SpawnAs::helper, pipe->reading.get());
    if (!child) return std::nullopt;
    process_ = openProcess(*child);
    children_.add(*child);
    lifeline_ = std::move(pipe->writing);
    ended_ = watcher_.watchReadable(process_.get(), [this, onEnd = std::move(onEnd)] {
        const auto told = onEnd;
        end();
        told();
    });
    return secret;
}

void ChildCompanionService::end() {
    ended_.reset();
    process_ = FileDescriptor();
    lifeline_ = FileDescriptor();
}

bool ChildCompanionService::isTrusted(int port) const {
    constexpr int listening = 0x0A;
    constexpr uid_t firstUser = 1000;
    // "  0: 0100007F:2253 00000000:0000 0A 00000000:00000000 00:00000000 00000000  1000 ..."
    std::ifstream table("/proc/net/tcp");
    std::string line;
    std::getline(table, line);
    bool isThere = false;
    while (std::getline(table, line)) {
        unsigned local = 0;
        unsigned state = 0;
        uid_t owner = 0;
        const int read = std::sscanf(line.c_str(), " %*d: %*x:%x %*x:%*x %x %*x:%*x %*x:%*x %*x %u", &local,
                                     &state, &owner);
        if (read != 3 || state != listening || static_cast<int>(local) != port) continue;
        if (owner != ::getuid() && owner >= firstUser) return false;
        isThere = true;
    }
    return isThere;
}

fs::path companionServiceBeside(const fs::path& executable) {
    const auto folder = executable.parent_path();
    for (const auto& place : {folder / "dorix-service", folder.parent_path() / "service" / "dorix-service"}) {
        std::error_code error;
        if (fs::is_regular_file(place, error)) return place;
    }
    return {};
}

}  // namespace dorix
