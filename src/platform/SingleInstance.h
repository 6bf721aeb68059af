#pragma once

#include <functional>
#include <string>

namespace dorix {

/// That the program runs once in a session. Main executor.
class SingleInstance {
 public:
    /// What others ask of the running program.
    struct Requests {
        /// It was launched again.
        std::function<void()> reopen;
        /// One of its actions, by name.
        std::function<void(const std::string& action)> action;
    };

    virtual ~SingleInstance() = default;

    /// Whether this process is the one instance, from now until it ends. If not, the one that is has been
    /// asked to reopen, and this process should end. Waits for the session's services, a few seconds at most;
    /// a session without them lets the program run.
    virtual bool claim() = 0;

    /// Requests that come in before this is set are dropped.
    virtual void onRequests(Requests requests) = 0;
};

class UnavailableSingleInstance final : public SingleInstance {
 public:
    bool claim() override { return true; }
    void onRequests(Requests) override {}
};

}  // namespace dorix
