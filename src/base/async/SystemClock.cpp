#include "base/async/SystemClock.h"

#include <chrono>

namespace dorix {

namespace {
template <typename Clock>
double secondsOf() {
    return std::chrono::duration<double>(Clock::now().time_since_epoch()).count();
}
}  // namespace

double steadySeconds() { return secondsOf<std::chrono::steady_clock>(); }
double wallSeconds() { return secondsOf<std::chrono::system_clock>(); }

}  // namespace dorix
