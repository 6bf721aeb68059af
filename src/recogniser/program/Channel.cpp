#include "recogniser/program/Channel.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <utility>

namespace dorix::recogniser {

namespace {
/// There is nobody to tell, and nothing to save: libraries that work on other people's bytes are not trusted
/// to take themselves down.
[[noreturn]] void leave() { ::_exit(0); }
}  // namespace

Frame Channel::next() {
    while (inbox_.empty()) receive(Wait::yes);
    auto frame = std::move(inbox_.front());
    inbox_.pop_front();
    return frame;
}

bool Channel::isDropped() {
    receive(Wait::no);
    const auto drop = std::ranges::find(inbox_, Frame::Kind::drop, &Frame::kind);
    if (drop == inbox_.end()) return false;
    inbox_.erase(inbox_.begin(), drop + 1);
    return true;
}

void Channel::receive(Wait wait) {
    std::array<char, 65536> bytes{};
    const auto count = ::recv(fd_, bytes.data(), bytes.size(), wait == Wait::no ? MSG_DONTWAIT : 0);
    if (count == 0) leave();
    if (count < 0 && errno != EAGAIN && errno != EINTR) leave();
    if (count < 0) return;
    reader_.take(std::string_view(bytes.data(), static_cast<std::size_t>(count)));
    while (auto frame = reader_.next()) inbox_.push_back(*std::move(frame));
    if (reader_.isBroken()) leave();
}

void Channel::send(const Frame& frame) {
    const auto bytes = encoded(frame);
    for (std::string_view left = bytes; !left.empty();) {
        const auto sent = ::send(fd_, left.data(), left.size(), MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR) continue;
        if (sent < 0) leave();
        left.remove_prefix(static_cast<std::size_t>(sent));
    }
}

}  // namespace dorix::recogniser
