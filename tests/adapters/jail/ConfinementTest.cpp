#include "adapters/harness/OtherProgram.h"
#include "fakes/TemporaryFolder.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace dorix {
namespace {

namespace fs = std::filesystem;

/// A socket of the test's own that listens, where a program that is shut in must not get to.
class Listener {
 public:
    explicit Listener(const std::string& name) : fd_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{.sun_family = AF_UNIX};
        std::memcpy(address.sun_path, name.data(), name.size());
        listen(address, offsetof(sockaddr_un, sun_path) + name.size());
    }
    Listener() : fd_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        listen(sockaddr_in{.sin_family = AF_INET, .sin_addr = {htonl(INADDR_LOOPBACK)}}, sizeof(sockaddr_in));
    }
    ~Listener() { ::close(fd_); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    std::string port() const {
        sockaddr_in address{};
        socklen_t length = sizeof address;
        ::getsockname(fd_, reinterpret_cast<sockaddr*>(&address), &length);
        return std::to_string(ntohs(address.sin_port));
    }

 private:
    template <typename Address>
    void listen(const Address& address, std::size_t length) const {
        if (fd_ < 0) throw std::runtime_error("no socket");
        EXPECT_EQ(::bind(fd_, reinterpret_cast<const sockaddr*>(&address), static_cast<socklen_t>(length)),
                  0);
        EXPECT_EQ(::listen(fd_, 64), 0);
    }

    int fd_;
};

enum class Outcome { gotIt, refused, killed, failed };

class ConfinementTest : public testing::Test {
 protected:
    ConfinementTest() {
        for (const auto* name : {"in", "out", "elsewhere"}) fs::create_directory(folder.path() / name);
        for (const auto* name : {"in/file", "in/empty", "out/unwanted", "elsewhere/file"}) {
            std::ofstream(folder.path() / name) << "x";
        }
        for (const auto* library : {"/lib/x86_64-linux-gnu/libz.so.1", "/lib/aarch64-linux-gnu/libz.so.1"}) {
            if (fs::exists(library)) fs::copy_file(library, folder.path() / "elsewhere/library.so");
        }
    }

    Outcome outcome(const std::string& attempt, const std::string& grants) const {
        // A run under a sanitizer would look for leaks at its end, with a process of its own.
        OtherProgram probe({DORIX_JAIL_PROBE, folder.path(), server.port(), grants, attempt},
                           {{"ASAN_OPTIONS", "detect_leaks=0"}});
        const auto status = probe.wait();
        if (WIFSIGNALED(status)) return WTERMSIG(status) == SIGSYS ? Outcome::killed : Outcome::failed;
        if (WEXITSTATUS(status) > 1) return Outcome::failed;
        return WEXITSTATUS(status) == 0 ? Outcome::gotIt : Outcome::refused;
    }

    void expect(const std::string& grants, const std::map<std::string, Outcome>& outcomes) const {
        for (const auto& [attempt, expected] : outcomes) {
            EXPECT_EQ(outcome(attempt, grants), expected) << attempt << " with " << grants;
        }
    }

    TemporaryFolder folder;
    Listener server;
    Listener service{(folder.path() / "socket").string()};
    Listener abstractService{'\0' + folder.path().string()};
};

// Sanitizers need all the address space there is.
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool isMemoryBounded = false;
#else
constexpr bool isMemoryBounded = true;
#endif

const std::vector<std::string> forbidden{"read the users",
                                         "list the homes",
                                         "read elsewhere",
                                         "write what it reads",
                                         "empty what it reads",
                                         "change rights",
                                         "make a file",
                                         "make a file elsewhere",
                                         "remove a file",
                                         "make a link",
                                         "connect",
                                         "send a datagram",
                                         "listen",
                                         "connect to a service",
                                         "connect to an abstract service",
                                         "fork",
                                         "start a thread",
                                         "signal its parent",
                                         "read its parent",
                                         "be read",
                                         "load a library from elsewhere",
                                         "take memory",
                                         "share memory",
                                         "make memory to run",
                                         "make code of data",
                                         "set limits"};

TEST_F(ConfinementTest, NothingIsLeftButTheWork) {
    expect("-", {{"its work", Outcome::gotIt}, {"load a library", Outcome::gotIt}});
    for (const auto& attempt : forbidden) {
        const bool isBounded = isMemoryBounded || !attempt.ends_with(" memory");
        if (isBounded) expect("-", {{attempt, Outcome::refused}});
    }
    expect("-", {{"run a program", Outcome::killed}, {"be debugged", Outcome::killed}});
}

TEST_F(ConfinementTest, OutsideAllOfItCanBeDone) {
    for (const auto& attempt : forbidden) {
        // Which some systems grant to nobody but the administrator.
        if (attempt != "read its parent") expect("free", {{attempt, Outcome::gotIt}});
    }
    expect(
        "free",
        {{"its work", Outcome::gotIt}, {"run a program", Outcome::gotIt}, {"be debugged", Outcome::gotIt}});
}

TEST_F(ConfinementTest, WhatIsGrantedIsThatAndNoMore) {
    expect("b", {{"its work", Outcome::gotIt},
                 {"run a program", Outcome::gotIt},
                 {"run another program", Outcome::refused},
                 {"fork", Outcome::refused},
                 {"read elsewhere", Outcome::refused},
                 {"connect", Outcome::refused}});
    expect("c", {{"its work", Outcome::gotIt},
                 {"connect", Outcome::gotIt},
                 {"listen", Outcome::refused},
                 {"connect to a service", Outcome::refused},
                 {"connect to an abstract service", Outcome::refused},
                 {"make a file", Outcome::refused}});
    expect("t", {{"its work", Outcome::gotIt},
                 {"start a thread", Outcome::gotIt},
                 {"fork", Outcome::refused},
                 {"connect", Outcome::refused}});
    expect("w", {{"its work", Outcome::gotIt},
                 {"make a file", Outcome::gotIt},
                 {"write a file", Outcome::gotIt},
                 {"write a large file", Outcome::refused},
                 {"load a library", Outcome::refused},
                 {"remove a file", Outcome::gotIt},
                 {"make a link", Outcome::refused},
                 {"make a file elsewhere", Outcome::refused},
                 {"write what it reads", Outcome::refused},
                 {"empty what it reads", Outcome::refused},
                 {"read elsewhere", Outcome::refused}});
}

}  // namespace
}  // namespace dorix
