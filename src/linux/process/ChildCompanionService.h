#pragma once

#include "linux/loop/FdWatcher.h"
#include "linux/process/ChildLog.h"
#include "linux/process/ChildProcesses.h"
#include "platform/CompanionService.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace dorix {

/// Starts dorix-service with a secret of 256 random bits, which it reads from a pipe: so that is in no
/// environment and no list of arguments. The service ends when the pipe's other end, here, is closed. What it
/// logs goes into our log. The thread of `watcher`, which must outlive it.
class ChildCompanionService final : public CompanionService {
 public:
    ChildCompanionService(FdWatcher& watcher, std::filesystem::path executable)
        : watcher_(watcher), executable_(std::move(executable)), children_(watcher) {}
    ~ChildCompanionService() override { ChildCompanionService::end(); }

    std::optional<std::string> start(const std::string& address, std::function<void(End)> onEnd) override;
    void end() override;
    bool listensOn(int port) const override;
    /// By the owner that the kernel tells of the listening socket, over IPv4.
    bool isTrusted(int port) const override;

 private:
    void watch(std::function<void(End)> onEnd);
    void letGo();
    End reap() const;

    FdWatcher& watcher_;
    const std::filesystem::path executable_;
    ReapedChildren children_;  // those that were told to end
    std::optional<pid_t> child_;
    std::optional<ChildLog> log_;
    FileDescriptor lifeline_;
    FileDescriptor process_;
    Subscription ended_;  // goes before the descriptor
};

}  // namespace dorix
