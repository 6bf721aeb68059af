#pragma once

#include "base/Observable.h"
#include "base/async/Timer.h"

namespace dorix {

/// The loudness as it is drawn: at most 30 values a second, quick to rise and slow to fall, and none at all
/// unless somebody is listened to. Main executor.
class LevelFeed {
 public:
    /// `level`, 0 to 1, must outlive the feed.
    LevelFeed(Executor& executor, Observable<float>& level);

    Observable<double> shown;

    void setActive(bool active);

 private:
    void step();

    Observable<float>& level_;
    Timer beat_;
    bool active_ = false;
    Subscription subscription_;
};

}  // namespace dorix
