#pragma once

#include "platform/UserDefaults.h"

namespace dorix {

/// Lets a program that keeps dying come back three times in any ten minutes, not more. The times of its
/// returns are kept in the defaults, as each watchdog lives for one of them only.
class RelaunchLimiter {
 public:
    explicit RelaunchLimiter(UserDefaults& defaults) : defaults_(defaults) {}

    /// Whether the program may be started again at `date`, in seconds since 1970; counts it if so.
    bool allow(double date);

    /// Whether a return at `date` has been counted.
    bool hasCounted(double date) const;

 private:
    UserDefaults& defaults_;
};

}  // namespace dorix
