#pragma once

#include "base/async/Completion.h"
#include "base/async/Executor.h"
#include "base/async/Task.h"
#include "platform/BackgroundWork.h"

#include <optional>

namespace dorix {

/// When work in the background may go on: not while the user dictates, nor on a battery that is nearly empty.
/// Main executor.
class Pace {
 public:
    /// Batteries are asked on `worker`. All outlive it.
    Pace(Executor& executor, Executor& worker, BackgroundWork& background)
        : executor_(executor), worker_(worker), background_(background) {}

    /// Whether it has to wait because of the user.
    void hold(bool isHeld);

    /// Returns when it may go on.
    Task<void> mayGoOn();

 private:
    Task<bool> isBatteryLow();

    Executor& executor_;
    Executor& worker_;
    BackgroundWork& background_;
    std::optional<Completion<void>> held_;  // completed when nothing holds it any more
    std::optional<double> lookedAt_;        // at the battery, by the executor's clock
    bool isLow_ = false;
};

}  // namespace dorix
