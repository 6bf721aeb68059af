#pragma once

#include "base/async/Timer.h"

#include <functional>
#include <string>

namespace dorix {

class SpeechInput;
struct AppState;

/// Listens for the silence that ends a recording of which no key is held. Main executor; what it is given
/// outlives it.
class HandsFree {
 public:
    struct Calls {
        /// Not a word was said.
        std::function<void()> nothingHeard;
        /// The user has finished, or talked for as long as is allowed.
        std::function<void()> finished;
    };

    HandsFree(Executor& executor, AppState& state, SpeechInput& speech, Calls calls);

    void start();
    void end();

 private:
    void watch();

    Executor& executor_;
    AppState& state_;
    SpeechInput& speech_;
    const Calls calls_;
    Timer timer_;
    std::string partial_;    // at the last look
    double lastChange_ = 0;  // when the user was last heard
    double start_ = 0;
};

/// The limits of the flow are told in round numbers of beats; a sum of beats misses them by a rounding error.
inline bool isMoreThan(double seconds, double limit) {
    constexpr double clockRounding = 1e-6;
    return seconds > limit + clockRounding;
}

}  // namespace dorix
