#include "overlay/LevelFeed.h"

#include <algorithm>
#include <cmath>

namespace dorix {

namespace {
constexpr double interval = 1.0 / 30;  // seconds
constexpr double rise = 0.6;           // the part of the way to the level that one step takes
constexpr double fall = 0.25;
constexpr double still = 0.01;  // what the eye does not see
}  // namespace

LevelFeed::LevelFeed(Executor& executor, Observable<float>& level)
    : level_(level), beat_(executor), subscription_(level.subscribe([this](float) {
          if (active_ && !beat_.isActive()) step();
      })) {}

void LevelFeed::setActive(bool active) {
    if (active == active_) return;
    active_ = active;
    beat_.stop();
    if (active_) {
        step();
    } else {
        shown.set(0);
    }
}

void LevelFeed::step() {
    const double goal = std::clamp(static_cast<double>(level_.get()), 0.0, 1.0);
    const double way = goal - shown.get();
    if (std::abs(way) < still) return;
    shown.set(shown.get() + way * (way > 0 ? rise : fall));
    beat_.once(interval, [this] { step(); });
}

}  // namespace dorix
