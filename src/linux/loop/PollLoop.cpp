#include "linux/loop/PollLoop.h"

#include "base/async/SystemClock.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>

namespace dorix {

PollLoop::PollLoop() : wakeFd_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)), thread_([this] { run(); }) {}

PollLoop::~PollLoop() {
    stop();
    ::close(wakeFd_);
}

void PollLoop::stop() {
    {
        const std::scoped_lock lock(mutex_);
        stopping_ = true;
    }
    wake();
    if (thread_.joinable()) thread_.join();
}

void PollLoop::post(Work work) {
    {
        const std::scoped_lock lock(mutex_);
        posted_.push_back(std::move(work));
    }
    wake();
}

// A full counter refuses, and means that the loop is about to wake anyway.
void PollLoop::wake() const { ::eventfd_write(wakeFd_, 1); }

Executor::TimerId PollLoop::after(double seconds, Work work) {
    return timers_.add(now() + std::max(seconds, 0.0), std::move(work));
}

void PollLoop::cancel(TimerId id) { timers_.remove(id); }

double PollLoop::now() const { return steadySeconds(); }
double PollLoop::date() const { return wallSeconds(); }

FdWatcher::Token PollLoop::watchReadable(int fd, std::function<void()> ready) {
    auto watch = std::make_shared<Watch>(Watch{fd, std::move(ready)});
    watches_.push_back(watch);
    return watch;
}

void PollLoop::run() {
    while (runPosted()) {
        runDueTimers();
        awaitEvents();
    }
}

bool PollLoop::runPosted() {
    std::deque<Work> batch;
    {
        const std::scoped_lock lock(mutex_);
        if (stopping_) return false;
        batch.swap(posted_);
    }
    for (auto& work : batch) work();
    return true;
}

void PollLoop::runDueTimers() {
    const double time = now();
    while (auto work = timers_.takeDue(time)) work();
}

int PollLoop::timeout() const {
    const auto due = timers_.nextDue();
    if (!due) return -1;
    const double wait = std::max(*due - now(), 0.0);
    return static_cast<int>(std::min(std::ceil(wait * 1000), 86'400'000.0));
}

void PollLoop::awaitEvents() {
    std::erase_if(watches_, [](const auto& watch) { return watch.expired(); });
    const auto watches = watches_;
    std::vector<pollfd> fds{{wakeFd_, POLLIN, 0}};
    for (const auto& weak : watches) {
        const auto watch = weak.lock();
        fds.push_back({watch ? watch->fd : -1, POLLIN, 0});
    }
    if (::poll(fds.data(), fds.size(), timeout()) <= 0) return;
    eventfd_t wakes = 0;
    if (fds[0].revents != 0) ::eventfd_read(wakeFd_, &wakes);
    for (std::size_t i = 0; i < watches.size(); ++i) {
        const auto watch = fds[i + 1].revents != 0 ? watches[i].lock() : nullptr;
        if (watch) watch->ready();
    }
}

}  // namespace dorix
