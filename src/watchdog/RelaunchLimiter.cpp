#include "watchdog/RelaunchLimiter.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

namespace dorix {

namespace {

constexpr std::string_view key = "watchdogRelaunches";
constexpr double window = 600.0;
constexpr std::size_t most = 3;

/// A value of another shape counts as none.
std::vector<double> storedTimes(const UserDefaults& defaults) {
    const auto stored = defaults.value(key);
    if (!stored || !stored->is_array() ||
        !std::ranges::all_of(*stored, [](const Json& time) { return time.is_number(); })) {
        return {};
    }
    return stored->get<std::vector<double>>();
}

}  // namespace

bool RelaunchLimiter::allow(double date) {
    auto times = storedTimes(defaults_);
    std::erase_if(times, [date](double time) { return date - time >= window; });
    if (times.size() >= most) return false;
    times.push_back(date);
    defaults_.set(key, std::move(times));
    return true;
}

bool RelaunchLimiter::hasCounted(double date) const {
    const auto times = storedTimes(defaults_);
    return std::ranges::find(times, date) != times.end();
}

}  // namespace dorix
