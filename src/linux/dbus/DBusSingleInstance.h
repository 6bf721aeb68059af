#pragma once

#include "linux/dbus/BusConnection.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace dorix {

/// That the program runs once in a session: the one owner of its name on the session bus, where it can be
/// asked what desktops ask of an application (org.freedesktop.Application). Main executor.
class DBusSingleInstance {
 public:
    /// What others ask of the running program.
    struct Requests {
        /// It was launched again.
        std::function<void()> reopen;
        /// One of its actions, by name.
        std::function<void(const std::string& action)> action;
    };

    /// Both must outlive it.
    DBusSingleInstance(Executor& main, FdWatcher& watcher);

    /// Whether this process is the one instance, from now until it ends. If not, the one that is has been
    /// asked to reopen, and this process should end. Waits for the session's services, a few seconds at most;
    /// a session without them lets the program run. On a bus that comes back the name is taken again. When
    /// the bus itself has started this process in order to ask something of it, the first request to reopen
    /// is the launch, and not reported.
    bool claim();

    /// Requests that come in before this is set are dropped.
    void onRequests(Requests requests) { requests_ = std::move(requests); }

 private:
    friend struct ApplicationInterface;

    bool claimName();
    void claimNameAgain();
    sdbus::Message nameRequest(std::uint32_t flags) const;
    void askToReopen();
    void reopen();

    Executor& main_;
    FdWatcher& watcher_;
    Requests requests_;
    bool startedByBus_;
    std::unique_ptr<BusConnection> bus_;
    Subscription joins_;
};

}  // namespace dorix
