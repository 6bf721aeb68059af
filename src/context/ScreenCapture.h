#pragma once

#include "base/async/TaskScope.h"
#include "platform/Workspace.h"

#include <optional>
#include <string>

namespace dorix {

/// Takes still pictures of what the user is looking at. Main executor.
class ScreenCapture {
 public:
    struct Shot {
        std::string jpeg;

        bool operator==(const Shot&) const = default;
    };

    virtual ~ScreenCapture() = default;

    /// The front window of `app`. Throws an Error when it cannot be had.
    virtual Task<Shot> capture(std::optional<RunningApplication> app) = 0;

    /// The text that can be read in the picture, line by line; empty when there is none, or on any failure.
    virtual Task<std::string> text(Shot shot) = 0;
};

/// The picture that is taken while the user speaks, so that it shows what they were looking at. Copies name
/// the same capture; as it stands it is none. Main executor.
class ShotTask {
 public:
    ShotTask() = default;

    /// Begins a capture as a task of `scope`; `capture` outlives the scope.
    ShotTask(TaskScope& scope, ScreenCapture& capture, std::optional<RunningApplication> app);

    /// The picture is not wanted.
    void cancel() const;

    /// Waits for the picture; nothing when none was begun, or when it failed.
    Task<std::optional<ScreenCapture::Shot>> shot() const;

 private:
    std::optional<TaskHandle<std::optional<ScreenCapture::Shot>>> task_;
};

}  // namespace dorix
