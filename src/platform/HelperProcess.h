#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace dorix {

/// A program of ours in a process of its own, which works on other people's bytes and is talked to over a
/// stream. Main executor.
class HelperProcess {
 public:
    /// Kills it, whatever it is at, without waiting; nothing is called any more.
    virtual ~HelperProcess() = default;

    /// Never blocks: what the process does not take yet waits in memory.
    virtual void send(std::string bytes) = 0;
};

/// Starts them. They end with the program, however that ends.
class HelperProcesses {
 public:
    /// Both are called on the main executor, never inside another call; they may destroy the process.
    struct Listener {
        std::function<void(std::string_view bytes)> onBytes;
        /// The process has ended, in words for the log; called once, after all its bytes.
        std::function<void(const std::string& how)> onEnd;
    };

    virtual ~HelperProcesses() = default;

    /// Whether there is such a program. Looks at the disk.
    virtual bool isInstalled(const std::string& name) const = 0;

    /// Null when it cannot be started.
    virtual std::unique_ptr<HelperProcess> launch(const std::string& name, Listener listener) = 0;
};

/// Where there are none.
class UnavailableHelperProcesses final : public HelperProcesses {
 public:
    bool isInstalled(const std::string&) const override { return false; }
    std::unique_ptr<HelperProcess> launch(const std::string&, Listener) override { return nullptr; }
};

}  // namespace dorix
