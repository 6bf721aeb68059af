#include "linux/x11/X11Workspace.h"

#include "linux/apps/LinuxApplications.h"

#include <unistd.h>

#include <filesystem>
#include <system_error>
#include <utility>

namespace dorix {

namespace {

std::string executableName(std::int32_t processIdentifier) {
    std::error_code error;
    const auto link = std::filesystem::path("/proc") / std::to_string(processIdentifier) / "exe";
    return std::filesystem::read_symlink(link, error).filename().string();
}

std::optional<std::string> firstNotEmpty(std::initializer_list<std::string> candidates) {
    for (const auto& candidate : candidates) {
        if (!candidate.empty()) return candidate;
    }
    return std::nullopt;
}

}  // namespace

X11Workspace::X11Workspace(X11Windows& windows, DesktopEntries& entries)
    : windows_(windows), entries_(entries) {}

std::optional<RunningApplication> X11Workspace::frontmostApplication() const {
    const auto window = windows_.frontWindow();
    if (window == XCB_WINDOW_NONE) return std::nullopt;
    RunningApplication app;
    app.windowNumber = window;
    app.processIdentifier = windows_.processIdentifier(window).value_or(0);
    const auto windowClass = windows_.windowClass(window);
    const auto* entry = entries_.find({windowClass.className, windowClass.instance});
    app.localizedName =
        firstNotEmpty({entry != nullptr ? entry->name : "", windowClass.className, windowClass.instance});
    if (app.processIdentifier == ::getpid()) {
        app.bundleIdentifier = ownBundleIdentifier();
        return app;
    }
    const std::string desktopId = entry != nullptr ? entry->id : "";
    const std::string executable = app.processIdentifier > 0 ? executableName(app.processIdentifier) : "";
    app.bundleIdentifier =
        linuxapps::bundleIdentifier({desktopId, windowClass.className, windowClass.instance, executable});
    app.systemIdentifier =
        firstNotEmpty({desktopId, windowClass.className, windowClass.instance, executable});
    if (!app.bundleIdentifier)
        app.bundleIdentifier = firstNotEmpty({desktopId, windowClass.className, windowClass.instance});
    return app;
}

/// Windows of one application may follow each other.
Subscription X11Workspace::observeActivations(std::function<void()> callback) {
    return windows_.observeFrontWindow(
        [this, callback = std::move(callback), last = RunningApplication()] mutable {
            RunningApplication front;
            front.windowNumber = windows_.frontWindow();
            if (front.windowNumber == XCB_WINDOW_NONE) return;
            front.processIdentifier =
                windows_.processIdentifier(static_cast<xcb_window_t>(front.windowNumber)).value_or(0);
            const bool isAnother = !isSameApplication(std::exchange(last, front), front);
            if (isAnother) callback();
        });
}

std::string X11Workspace::tableIdentifier(const std::string& systemIdentifier) const {
    return linuxapps::bundleIdentifier({systemIdentifier}).value_or(systemIdentifier);
}

bool X11Workspace::isFrontmost(const RunningApplication& app) const {
    const auto window = windows_.frontWindow();
    if (window == XCB_WINDOW_NONE) return false;
    if (app.windowNumber != 0) return app.windowNumber == window;
    return app.processIdentifier != 0 && windows_.processIdentifier(window) == app.processIdentifier;
}

bool X11Workspace::isSameApplication(const RunningApplication& one, const RunningApplication& other) const {
    if (one.processIdentifier != 0 && one.processIdentifier == other.processIdentifier) return true;
    // A program on another computer has no process here, but its windows come over one connection.
    return one.windowNumber != 0 && other.windowNumber != 0 &&
           windows_.ofOneClient(static_cast<xcb_window_t>(one.windowNumber),
                                static_cast<xcb_window_t>(other.windowNumber));
}

void X11Workspace::activate(const RunningApplication& app) {
    const auto window = static_cast<xcb_window_t>(app.windowNumber);
    // Window ids are used again; only the same process's window is the one that was seen.
    if (window == XCB_WINDOW_NONE || windows_.processIdentifier(window).value_or(0) != app.processIdentifier)
        return;
    windows_.activate(window);
}

}  // namespace dorix
