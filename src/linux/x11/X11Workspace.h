#pragma once

#include "linux/apps/DesktopEntries.h"
#include "linux/x11/X11Windows.h"
#include "platform/Workspace.h"

#include <functional>
#include <optional>
#include <string>

namespace dorix {

/// The applications of an X11 session, known by their windows. Window numbers are X window ids. A question
/// costs a few round trips to the X server. An application's desktop entry counts once it has been read in
/// the background; until then its window alone tells what it is.
class X11Workspace final : public Workspace {
 public:
    X11Workspace(X11Windows& windows, DesktopEntries& entries);

    std::optional<RunningApplication> frontmostApplication() const override;
    Subscription observeActivations(std::function<void()> callback) override;
    bool isFrontmost(const RunningApplication& app) const override;
    bool isSameApplication(const RunningApplication& one, const RunningApplication& other) const override;
    std::string tableIdentifier(const std::string& systemIdentifier) const override;
    std::string ownBundleIdentifier() const override { return "es.pelmora.dorix"; }
    void activate(const RunningApplication& app) override;

 private:
    X11Windows& windows_;
    DesktopEntries& entries_;
};

}  // namespace dorix
