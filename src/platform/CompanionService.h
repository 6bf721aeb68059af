#pragma once

#include <functional>
#include <optional>
#include <string>

namespace dorix {

/// The service that ships with the program, run as a child of it for this user alone. It ends with the
/// program, however that ends. Main executor; nothing here waits for it to answer.
class CompanionService {
 public:
    virtual ~CompanionService() = default;

    /// Why it has ended.
    enum class End {
        stopped,      // another start may do better
        badSettings,  // no start will, before somebody has mended what the log tells
    };

    /// Starts it to listen on `address` ("127.0.0.1:8787"), in place of one that was started before. What it
    /// takes as the code of its one account; nothing if it cannot be started. `onEnd` is called once when it
    /// has ended by itself, never inside a call.
    virtual std::optional<std::string> start(const std::string& address, std::function<void(End)> onEnd) = 0;

    /// Ends what was started.
    virtual void end() = 0;

    /// Whether what was started listens on that port of this computer by now.
    virtual bool listensOn(int port) const = 0;

    /// Whether what listens on a port of this computer is a process of this user or of the system, and not of
    /// another user who would hear what is sent there.
    virtual bool isTrusted(int port) const = 0;
};

/// Where none is installed.
class UnavailableCompanionService final : public CompanionService {
 public:
    std::optional<std::string> start(const std::string&, std::function<void(End)>) override {
        return std::nullopt;
    }
    void end() override {}
    bool listensOn(int) const override { return false; }
    bool isTrusted(int) const override { return false; }
};

}  // namespace dorix
