#pragma once

#include "base/Observable.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace dorix {

/// An application that runs, as it was when it was asked for.
struct RunningApplication {
    std::int32_t processIdentifier = 0;
    /// The identity that the tables of applications know it by. Adapters translate their system's own.
    std::optional<std::string> bundleIdentifier;
    std::optional<std::string> localizedName;
    /// The window that was in front; 0 for unknown. Only the adapter knows what the number means.
    std::uint64_t windowNumber = 0;
    /// What this system itself calls it, for what people and other programs read.
    std::optional<std::string> systemIdentifier;

    bool operator==(const RunningApplication&) const = default;
};

/// The applications of the session. Main executor; answers at once.
class Workspace {
 public:
    virtual ~Workspace() = default;

    /// The application that gets the keyboard; none when nothing has the focus or it cannot be known.
    virtual std::optional<RunningApplication> frontmostApplication() const = 0;

    /// Calls `callback` whenever another application has come to the front; where the system does not tell,
    /// never.
    virtual Subscription observeActivations(std::function<void()> callback) = 0;

    /// Whether that window of the application gets the keyboard now; any window of it if none is known.
    virtual bool isFrontmost(const RunningApplication& app) const = 0;

    /// Whether both are the same application, whatever their windows.
    virtual bool isSameApplication(const RunningApplication& one, const RunningApplication& other) const = 0;

    /// The identity that the tables know an application by which this system calls `systemIdentifier`; that
    /// itself where they do not.
    virtual std::string tableIdentifier(const std::string& systemIdentifier) const = 0;

    /// This application's own bundle identifier.
    virtual std::string ownBundleIdentifier() const = 0;

    /// Brings the application, and of its windows the one it was seen with, to the front. Nothing happens if
    /// it has gone.
    virtual void activate(const RunningApplication& app) = 0;
};

class UnavailableWorkspace final : public Workspace {
 public:
    std::optional<RunningApplication> frontmostApplication() const override { return std::nullopt; }
    Subscription observeActivations(std::function<void()>) override { return {}; }
    bool isFrontmost(const RunningApplication&) const override { return false; }
    bool isSameApplication(const RunningApplication&, const RunningApplication&) const override {
        return false;
    }
    std::string tableIdentifier(const std::string& identifier) const override { return identifier; }
    std::string ownBundleIdentifier() const override { return "es.pelmora.dorix"; }
    void activate(const RunningApplication&) override {}
};

}  // namespace dorix
