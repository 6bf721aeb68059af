#include "base/Log.h"
#include "base/Version.h"
#include "reader/program/DocumentProcess.h"
#include "reading/Messages.h"

#include <sys/prctl.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

namespace {

using namespace dorix;

// What the program leaves open for a helper.
constexpr int channel = 3;
constexpr std::size_t longestOrder = longestPicture + 64UZ * 1024;

/// False when the program is gone.
bool send(std::string_view bytes) {
    while (!bytes.empty()) {
        const auto sent = ::send(channel, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR) continue;
        if (sent < 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

/// Nothing to what is no order.
std::optional<ReadAnswer> answerTo(std::string_view body) {
    if (const auto order = readOrderIn(body)) return reader::readInProcess(*order);
    if (const auto order = pictureOrderIn(body)) return reader::readInProcess(*order);
    return std::nullopt;
}

/// Reads the documents and pictures that the program wants, one after the other, until it is gone or says
/// what is no order.
int serve() {
    MessageReader orders(longestOrder);
    std::array<char, 65536> bytes{};
    while (!orders.isBroken()) {
        const auto body = orders.next();
        if (!body) {
            const auto count = ::recv(channel, bytes.data(), bytes.size(), 0);
            if (count == 0 || (count < 0 && errno != EINTR)) return 0;
            if (count > 0) orders.take({bytes.data(), static_cast<std::size_t>(count)});
            continue;
        }
        const auto answer = answerTo(*body);
        if (!answer) return 1;
        if (!send(encoded(*answer))) return 0;
    }
    return 1;
}

constexpr const char* purpose = "dorix-reader is started by dorix, and takes no arguments\n";

/// Whoever gives arguments is a person.
int answer(std::string_view argument) {
    if (argument == "--help" || argument == "-h") return std::fputs(purpose, stdout) < 0 ? 1 : 0;
    if (argument != "--version" && argument != "-V") {
        std::fputs(purpose, stderr);
        return 2;
    }
    return std::printf("dorix-reader %s\n", std::string(version()).c_str()) < 0 ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc > 1) return answer(argv[1]);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    setLogName("dorix-reader");
    return serve();
}
