#include "context/ScreenCapture.h"

#include <utility>

namespace dorix {

namespace {

using Shot = ScreenCapture::Shot;

/// No road depends on the picture: without it there is less to go by, and nothing to tell the user.
Task<std::optional<Shot>> shotIfPossible(ScreenCapture* capture, std::optional<RunningApplication> app) {
    try {
        co_return co_await capture->capture(std::move(app));
    } catch (...) {
        co_return std::nullopt;
    }
}

Task<std::optional<Shot>> resultOf(std::optional<TaskHandle<std::optional<Shot>>> task) {
    if (!task) co_return std::nullopt;
    co_return co_await *task;
}

}  // namespace

ShotTask::ShotTask(TaskScope& scope, ScreenCapture& capture, std::optional<RunningApplication> app)
    : task_(scope.spawn(shotIfPossible(&capture, std::move(app)))) {}

void ShotTask::cancel() const {
    if (task_) task_->cancel();
}

Task<std::optional<Shot>> ShotTask::shot() const { return resultOf(task_); }

}  // namespace dorix
