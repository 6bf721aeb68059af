#pragma once

#include "linux/dbus/BusConnection.h"
#include "platform/SingleInstance.h"

#include <memory>
#include <string>

namespace dorix {

/// The one owner of the program's name on the session bus, where it can be asked what desktops ask of an
/// application (org.freedesktop.Application).
class DBusSingleInstance final : public SingleInstance {
 public:
    /// Both must outlive it.
    DBusSingleInstance(WorkQueue& queue, FdWatcher& watcher);

    /// When the bus itself has started this process in order to ask something of it, the first request to
    /// reopen is the launch, and not reported.
    bool claim() override;
    void onRequests(Requests requests) override { requests_ = std::move(requests); }

 private:
    friend struct ApplicationInterface;

    bool claimName();
    void askToReopen();
    void reopen();

    WorkQueue& queue_;
    FdWatcher& watcher_;
    Requests requests_;
    bool startedByBus_;
    std::unique_ptr<BusConnection> bus_;
};

}  // namespace dorix
