#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace dorix {

/// A process that was started here. Letting go of it lets it run on.
class ChildProcess {
 public:
    virtual ~ChildProcess() = default;

    /// Asks it to end. Nothing happens if it has ended.
    virtual void terminate() = 0;
};

/// Starts this program once more. Main executor; returns as soon as the new process is there. What is started
/// gets our environment, none of our open files, and the null device for input and output.
class ProgramLauncher {
 public:
    virtual ~ProgramLauncher() = default;

    virtual std::int32_t ownProcessIdentifier() const = 0;

    /// What `open` knows this application by: as it is installed, or its executable.
    virtual std::string bundlePath() const = 0;

    /// The same executable with these arguments, as a helper of this process. Null when it cannot be started.
    virtual std::unique_ptr<ChildProcess> launchSelf(const std::vector<std::string>& arguments) = 0;

    /// Starts the application at `bundlePath`, on its own: it outlives this process. Whether it could be
    /// started.
    virtual bool open(const std::string& bundlePath) = 0;
};

class UnavailableProgramLauncher final : public ProgramLauncher {
 public:
    std::int32_t ownProcessIdentifier() const override { return 0; }
    std::string bundlePath() const override { return {}; }
    std::unique_ptr<ChildProcess> launchSelf(const std::vector<std::string>&) override { return nullptr; }
    bool open(const std::string&) override { return false; }
};

}  // namespace dorix
