#include "linux/process/Listeners.h"

#include "linux/loop/FileDescriptor.h"

#include <arpa/inet.h>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <optional>
#include <string>

namespace dorix {

namespace {

constexpr unsigned listening = 0x0A;  // TCP_LISTEN, which has no name outside the kernel's own headers

bool ask(const FileDescriptor& socket, int family) {
    struct {
        nlmsghdr head{};
        inet_diag_req_v2 what{};
    } request;
    request.head.nlmsg_len = sizeof request;
    request.head.nlmsg_type = SOCK_DIAG_BY_FAMILY;
    request.head.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    request.what.sdiag_family = static_cast<std::uint8_t>(family);
    request.what.sdiag_protocol = IPPROTO_TCP;
    request.what.idiag_states = 1U << listening;
    return ::send(socket.get(), &request, sizeof request, 0) == static_cast<ssize_t>(sizeof request);
}

template <typename T>
T recordAt(const char* bytes) {
    T record{};
    std::memcpy(&record, bytes, sizeof record);
    return record;
}

enum class Answer { goesOn, ends, fails };

Answer take(const char* bytes, std::size_t size, std::vector<Listener>& found) {
    while (size >= sizeof(nlmsghdr)) {
        const auto head = recordAt<nlmsghdr>(bytes);
        if (head.nlmsg_type == NLMSG_DONE) return Answer::ends;
        if (head.nlmsg_type != SOCK_DIAG_BY_FAMILY || head.nlmsg_len > size ||
            head.nlmsg_len < NLMSG_HDRLEN + sizeof(inet_diag_msg))
            return Answer::fails;
        const auto one = recordAt<inet_diag_msg>(bytes + NLMSG_HDRLEN);
        found.push_back(
            {.port = ntohs(one.id.idiag_sport), .owner = one.idiag_uid, .number = one.idiag_inode});
        const std::size_t next = NLMSG_ALIGN(head.nlmsg_len);
        if (next >= size) break;
        bytes += next;
        size -= next;
    }
    return Answer::goesOn;
}

/// As the kernel tells it when it is asked for listening sockets alone. Nothing where it does not.
std::optional<std::vector<Listener>> told() {
    const FileDescriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_SOCK_DIAG));
    const timeval patience{.tv_sec = 1, .tv_usec = 0};
    if (!socket || ::setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience) != 0)
        return std::nullopt;
    std::vector<Listener> found;
    for (const int family : {AF_INET, AF_INET6}) {
        if (!ask(socket, family)) return std::nullopt;
        std::array<char, 32768> room{};
        auto answer = Answer::goesOn;
        while (answer == Answer::goesOn) {
            const auto size = ::recv(socket.get(), room.data(), room.size(), 0);
            if (size <= 0) return std::nullopt;
            answer = take(room.data(), static_cast<std::size_t>(size), found);
        }
        if (answer == Answer::fails) return std::nullopt;
    }
    return found;
}

/// From files in which every connection is walked over as well.
std::vector<Listener> read() {
    std::vector<Listener> found;
    for (const auto* name : {"/proc/net/tcp", "/proc/net/tcp6"}) {
        // "  0: 0100007F:2253 00000000:0000 0A 00000000:00000000 00:00000000 00000000  1000        0 4026
        // ..."
        std::ifstream table(name);
        std::string line;
        std::getline(table, line);
        while (std::getline(table, line)) {
            unsigned port = 0;
            unsigned state = 0;
            unsigned owner = 0;
            unsigned long number = 0;
            const int got =
                std::sscanf(line.c_str(), " %*d: %*x:%x %*x:%*x %x %*x:%*x %*x:%*x %*x %u %*d %lu", &port,
                            &state, &owner, &number);
            if (got == 4 && state == listening)
                found.push_back({.port = static_cast<int>(port), .owner = owner, .number = number});
        }
    }
    return found;
}

}  // namespace

std::vector<Listener> listeners() {
    const auto found = told();
    return found ? *found : read();
}

}  // namespace dorix
