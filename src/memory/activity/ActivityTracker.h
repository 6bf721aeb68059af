#pragma once

#include "base/Observable.h"
#include "base/async/TaskScope.h"
#include "base/async/Timer.h"
#include "platform/Workspace.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

namespace dorix {

class Accessibility;
class MemoryStore;
struct SessionState;

/// Notes which application, window and document are in front: names alone, never what is in them. Main
/// executor. Nothing of it fails: what cannot be told is left out, and a row that cannot be written is lost.
class ActivityTracker {
 public:
    /// All of it must outlive the tracker.
    struct Parts {
        Executor& executor;
        Workspace& workspace;
        Accessibility& accessibility;
        const SessionState& session;
        const Observable<bool>& paused;         // the whole program
        const Observable<bool>& trackActivity;  // whether the user wants it
        MemoryStore& store;
    };

    static constexpr double interval = 60;     // seconds between two looks
    static constexpr double repetition = 300;  // what stays in front is noted again after these seconds
    static constexpr int keptDays = 30;
    static constexpr std::size_t longestTitle = 200;  // characters that are kept of one

    explicit ActivityTracker(const Parts& parts);
    ActivityTracker(const ActivityTracker&) = delete;
    ActivityTracker& operator=(const ActivityTracker&) = delete;

    /// Follows the user from now on, and drops rows that are older than they are kept; once.
    void startActivity();

    /// Looks at what is in front, and notes it unless it stands there already. May block for one
    /// accessibility budget; an application that used up some in a row is not asked again for a while.
    void sampleActivity();

 private:
    struct Sample {
        std::string title;
        std::optional<std::string> document;  // path
    };

    bool isNoneOfOurs(const RunningApplication& app) const;
    Sample look(const RunningApplication& app);
    double budgetFor(std::int32_t process) const;
    void noteSpent(std::int32_t process, bool isAllSpent);
    bool isRepeated(const std::string& key);

    const Parts parts_;
    std::string lastActivity_;
    double lastActivityTime_ = -std::numeric_limits<double>::infinity();
    std::int32_t slowProcess_ = 0;
    int slowLooks_ = 0;  // at it, one after the other
    double slowUntil_ = -std::numeric_limits<double>::infinity();
    Timer timer_;
    Subscription activations_;
    TaskScope tasks_;
};

}  // namespace dorix
