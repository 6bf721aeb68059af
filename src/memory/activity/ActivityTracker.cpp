#include "memory/activity/ActivityTracker.h"

#include "base/text/Text.h"
#include "base/text/Url.h"
#include "memory/store/MemoryStore.h"
#include "platform/Accessibility.h"
#include "platform/SessionState.h"

#include <utility>

namespace dorix {

namespace {
/// What stands in for the screen on which a session is unlocked.
constexpr std::string_view loginWindow = "com.apple.loginwindow";
// The first question may have an application build up all that it has to tell.
constexpr int slowLooksInARow = 3;
constexpr double restFromSlowOnes = 300;  // seconds
}  // namespace

ActivityTracker::ActivityTracker(const Parts& parts)
    : parts_(parts), timer_(parts.executor), tasks_(parts.executor) {}

void ActivityTracker::startActivity() {
    activations_ = parts_.workspace.observeActivations([this] { sampleActivity(); });
    timer_.repeat(interval, [this] { sampleActivity(); });
    tasks_.spawn(parts_.store.pruneActivity(keptDays));
}

void ActivityTracker::sampleActivity() {
    if (!parts_.trackActivity.get() || parts_.paused.get() || parts_.session.locked.get()) return;
    const auto app = parts_.workspace.frontmostApplication();
    if (!app || isNoneOfOurs(*app)) return;
    auto [title, document] = look(*app);
    auto name = app->localizedName.value_or("App");
    if (isRepeated(name + "|" + title + "|" + document.value_or(""))) return;
    tasks_.spawn(parts_.store.recordActivity(std::move(name), app->bundleIdentifier,
                                             std::string(text::prefix(title, longestTitle)),
                                             std::move(document)));
}

/// This program itself, and the time in front of a locked screen, are no activity.
bool ActivityTracker::isNoneOfOurs(const RunningApplication& app) const {
    const auto identifier = app.bundleIdentifier.value_or("");
    return identifier == parts_.workspace.ownBundleIdentifier() || identifier == loginWindow;
}

ActivityTracker::Sample ActivityTracker::look(const RunningApplication& app) {
    const double budget = budgetFor(app.processIdentifier);
    const double begun = parts_.executor.now();
    const auto window =
        parts_.accessibility.createApplication(app.processIdentifier, budget)->element("AXFocusedWindow");
    Sample sample;
    if (window) {
        sample.title = (*window)->string("AXTitle").value_or("");
        if (const auto url = (*window)->string("AXDocument")) {
            if (const auto path = pathOfFileURL(*url)) sample.document = path->string();
            if (sample.title.empty() && sample.document)
                sample.title = std::filesystem::path(*sample.document).filename().string();
        }
    }
    if (budget > 0) noteSpent(app.processIdentifier, parts_.executor.now() - begun >= budget);
    return sample;
}

/// In seconds.
double ActivityTracker::budgetFor(std::int32_t process) const {
    const bool rests = process == slowProcess_ && parts_.executor.now() < slowUntil_;
    return rests ? 0 : Accessibility::defaultBudget;
}

void ActivityTracker::noteSpent(std::int32_t process, bool isAllSpent) {
    if (process != slowProcess_ && !isAllSpent) return;
    if (process != slowProcess_ || !isAllSpent) slowLooks_ = 0;
    slowProcess_ = isAllSpent ? process : 0;
    if (!isAllSpent || ++slowLooks_ < slowLooksInARow) return;
    slowLooks_ = 0;
    slowUntil_ = parts_.executor.now() + restFromSlowOnes;
}

/// Remembers it if it is not.
bool ActivityTracker::isRepeated(const std::string& key) {
    const double now = parts_.executor.date();
    const double since = now - lastActivityTime_;
    // A clock that was set back must not keep everything out until it is where it was.
    if (key == lastActivity_ && since >= 0 && since <= repetition) return true;
    lastActivity_ = key;
    lastActivityTime_ = now;
    return false;
}

}  // namespace dorix
