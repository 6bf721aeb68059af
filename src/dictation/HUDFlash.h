#pragma once

#include "base/async/Timer.h"
#include "dictation/AppState.h"

#include <optional>

namespace dorix {

/// Who has the HUD: the recording that is shown, before any message, before the utterance that is being
/// processed. All that the HUD shows goes through here. Main executor; the state outlives it.
class HUDFlash {
 public:
    enum class Sticky { no, yes };

    HUDFlash(Executor& executor, AppState& state) : executor_(executor), state_(state), hideWork_(executor) {}

    /// Shows `phase`, and lets it go after `seconds` if it still shows by then; a sticky one stays. While a
    /// recording shows it waits until that is over: an error for as long as that takes, anything else only
    /// until its time has passed.
    void flash(const HUDPhase& phase, double seconds, Sticky sticky = Sticky::no);

    /// Tells that the microphone gives no sound any more.
    void flashNoSound();

    /// A recording shows from now on, whatever showed before.
    void showListening(bool asking);
    /// It is over. Nothing happens when none shows.
    void hideListening();
    bool isListening() const { return isListening_; }

    /// The recording, or what showed before, gives way to an utterance that is being processed.
    void showProcessing();
    /// Whether one is processed from now on; what shows gives way to it by itself.
    void setProcessing(bool processing);
    /// The utterance that is processed is a question after all.
    void setAsking();

 private:
    struct Message {
        HUDPhase phase;
        double seconds;
        Sticky sticky;
        double since;  // by the executor's clock
    };

    void present(const HUDPhase& phase, double seconds, Sticky sticky);
    bool presentWaiting();
    HUDPhase background() const;

    Executor& executor_;
    AppState& state_;
    Timer hideWork_;
    bool isListening_ = false;
    bool isProcessing_ = false;
    std::optional<Message> waiting_;  // for the recording that shows
};

}  // namespace dorix
