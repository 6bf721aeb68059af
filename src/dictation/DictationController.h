#pragma once

#include "base/async/TaskScope.h"
#include "base/async/Timer.h"
#include "dictation/Composer.h"
#include "dictation/DictationEnvironment.h"
#include "dictation/HUDFlash.h"
#include "dictation/Recording.h"
#include "dictation/UtteranceRoads.h"
#include "dictation/WrittenText.h"

#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace dorix {

/// The heart of a dictation: from the signals of the keys through a recording to the text at the cursor, with
/// all that is timed, shown and saved around it. One recording and one utterance at a time. Main executor.
class DictationController {
 public:
    enum class Mode { write, ask };
    enum class Source { holdKey, shortcut };

    explicit DictationController(const DictationEnvironment& environment);
    ~DictationController();
    DictationController(const DictationController&) = delete;
    DictationController& operator=(const DictationController&) = delete;

    /// Starts a recording, unseen; false when it is refused, with a message where the user can do something.
    bool begin(Source source, Mode mode);
    /// Shows the recording.
    void showListening();
    /// Ends the recording and takes what was said where it belongs.
    void stopAndProcess();
    /// Drops the recording without a word. An utterance that is being processed goes on.
    void cancelRecording();

    /// Held: talk until released. Tapped: talk until silence.
    void shortcutPressed(Mode mode);
    void shortcutReleased();

    /// Shows `phase`, and hides it after `seconds` if it still shows by then; a sticky one stays.
    void flash(const HUDPhase& phase, double seconds, HUDFlash::Sticky sticky = HUDFlash::Sticky::no) {
        hud_.flash(phase, seconds, sticky);
    }

    /// Whether nothing is going on that a message of another subsystem would disturb.
    bool isIdle() const;

    /// Types a history item once more, into the application that was in front when the panel opened. The item
    /// may go with the panel.
    void reinsert(const HistoryItem& item);
    void sendComposer() { composer_.send(panelTarget); }
    void toggleComposerMic();

    bool isRecording() const { return startTask_.has_value(); }
    /// Whose recording runs; absent when none does.
    std::optional<Source> source() const { return source_; }
    /// Whether an utterance is being processed.
    const Observable<bool>& busy() const { return busy_; }

    /// The application that was in front when the panel opened.
    AppContext panelTarget;
    /// Closes the panel's window.
    std::function<void()> closePanel = [] {};
    /// True when a session exists; otherwise it has opened the account window.
    std::function<bool()> accountReady = [] { return true; };
    /// Called when it is decided where an utterance goes.
    std::function<void(Route)> onRoute = [](Route) {};

 private:
    bool mayBegin(Mode mode);
    bool mayUseMicrophone();
    void audioLost();
    void playSound(std::string_view name);

    void startHandsFree();
    void endHandsFree();
    void watchSilence();

    struct Processing;
    Task<void> process(TaskHandle<void> startTask, Mode mode, Recording recording);
    Task<void> carry(std::string transcript, Mode mode, Recording recording);
    void failed(const std::exception_ptr& error, const std::string& transcript, const Recording& recording);

    /// What the hands-free watch remembers between its looks.
    struct Silence {
        std::string partial;
        double lastChange = 0;
        double start = 0;
    };

    const DictationEnvironment env_;
    HUDFlash hud_;
    WrittenText written_;
    UtteranceRoads roads_;
    Composer composer_;
    Recording recording_;
    Mode mode_ = Mode::write;
    std::optional<Source> source_;
    Observable<bool> busy_;
    std::optional<double> shortcutPressedAt_;
    std::optional<TaskHandle<void>> startTask_;
    Timer silenceTimer_;
    Silence silence_;
    TaskScope tasks_;
};

}  // namespace dorix
