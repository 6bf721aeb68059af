#include "linux/loop/PollLoop.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <cmath>

namespace dorix {

namespace {

/// As poll takes it, in milliseconds.
int pollTimeout(std::optional<double> seconds) {
    if (!seconds) return -1;
    return static_cast<int>(std::min(std::ceil(*seconds * 1000), 86'400'000.0));
}

}  // namespace

PollLoop::PollLoop() : SerialExecutor(AtEnd::drop), wakes_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

PollLoop::~PollLoop() { stop(); }

Subscription PollLoop::watchReadable(int fd, std::function<void()> ready) {
    return watch({fd, POLLIN, std::move(ready)});
}

Subscription PollLoop::watchWritable(int fd, std::function<void()> ready) {
    return watch({fd, POLLOUT, std::move(ready)});
}

Subscription PollLoop::watch(Watch watch) {
    auto watched = std::make_shared<Watch>(std::move(watch));
    watches_.push_back(watched);
    return Subscription(watched);
}

// A full counter refuses, and means that the loop is about to wake anyway.
void PollLoop::wake() { ::eventfd_write(wakes_.get(), 1); }

void PollLoop::wait(std::optional<double> seconds) {
    std::erase_if(watches_, [](const auto& watch) { return watch.expired(); });
    const auto watches = watches_;
    std::vector<pollfd> fds{{wakes_.get(), POLLIN, 0}};
    for (const auto& weak : watches) {
        const auto watch = weak.lock();
        fds.push_back({watch ? watch->fd : -1, watch ? watch->events : short{0}, 0});
    }
    if (::poll(fds.data(), fds.size(), pollTimeout(seconds)) <= 0) return;
    eventfd_t count = 0;
    if (fds[0].revents != 0) ::eventfd_read(wakes_.get(), &count);
    for (std::size_t i = 0; i < watches.size(); ++i) {
        const auto watch = fds[i + 1].revents != 0 ? watches[i].lock() : nullptr;
        if (watch) watch->ready();
    }
}

}  // namespace dorix
