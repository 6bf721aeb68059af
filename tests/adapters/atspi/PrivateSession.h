#pragma once

#include <sys/types.h>

#include <csignal>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace dorix {

/// A program started by a test and killed at its end.
class ChildProcess {
 public:
    ChildProcess(const std::vector<std::string>& command,
                 const std::map<std::string, std::string>& environment, int inheritedFd = -1);
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess();

    pid_t pid() const { return pid_; }
    void signal(int number) const { ::kill(pid_, number); }
    int wait();

 private:
    pid_t pid_ = -1;
};

/// A session bus of the test's own, with an accessibility bus that is started on demand, so that no test
/// touches the session that it runs in. The display is the one of the environment.
class PrivateSession {
 public:
    PrivateSession();
    ~PrivateSession();

    const std::string& address() const { return address_; }
    const std::string& folder() const { return folder_; }
    const ChildProcess& bus() const { return *bus_; }

    /// The environment of an application in this session; asks for the accessibility bus and so starts it.
    std::map<std::string, std::string> applicationEnvironment() const;

    /// The process that is the accessibility bus; started if it does not run.
    pid_t accessibilityBus() const;

 private:
    std::string accessibilityAddress() const;

    std::string folder_;
    std::string address_;
    std::unique_ptr<ChildProcess> bus_;
};

}  // namespace dorix
