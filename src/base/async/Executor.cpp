#include "base/async/Executor.h"

#include <chrono>

namespace dorix {

namespace {
template <typename Clock>
double secondsOf() {
    return std::chrono::duration<double>(Clock::now().time_since_epoch()).count();
}
}  // namespace

double Executor::now() const { return secondsOf<std::chrono::steady_clock>(); }
double Executor::date() const { return secondsOf<std::chrono::system_clock>(); }

}  // namespace dorix
