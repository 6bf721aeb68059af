#pragma once

#include "base/async/SerialExecutor.h"
#include "linux/loop/FdWatcher.h"
#include "linux/loop/FileDescriptor.h"

#include <memory>
#include <vector>

namespace dorix {

/// An event loop on a thread of its own, for a connection that must be served also while the main executor is
/// busy. Watches are the thread's own. What has not begun when it stops is dropped.
class PollLoop final : public SerialExecutor, public FdWatcher {
 public:
    PollLoop();
    ~PollLoop() override;

    Subscription watchReadable(int fd, std::function<void()> ready) override;
    Subscription watchWritable(int fd, std::function<void()> ready) override;

 private:
    struct Watch {
        int fd;
        short events;
        std::function<void()> ready;
    };

    Subscription watch(Watch watch);
    void wait(std::optional<double> seconds) override;
    void wake() override;

    const FileDescriptor wakes_;
    std::vector<std::weak_ptr<Watch>> watches_;
};

}  // namespace dorix
