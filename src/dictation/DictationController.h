#pragma once

#include "base/async/TaskScope.h"
#include "dictation/AppState.h"
#include "dictation/HUDFlash.h"
#include "dictation/HandsFree.h"
#include "dictation/Recorder.h"

#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace dorix {

class Composer;
class SystemSounds;
class UtteranceRoads;
class WrittenText;
struct HistoryItem;

/// The heart of a dictation: from the signals of the keys through a recording to the text at the cursor, with
/// all that is timed, shown and saved around it. One recording and one utterance at a time. Main executor;
/// what it is given outlives it.
class DictationController {
 public:
    enum class Mode { write, ask };
    using Source = Recorder::Source;

    DictationController(Executor& executor, AppState& state, SettingsStore& settings,
                        Permissions& permissions, SpeechInput& speech, SystemSounds& sounds,
                        Recorder& recorder, UtteranceRoads& roads, WrittenText& written, Composer& composer,
                        HUDFlash& hud);
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

    /// Held: talk until released. Tapped: talk until silence. `at` is when it happened, on the executor's
    /// clock; now, if nothing else is known.
    void shortcutPressed(Mode mode, std::optional<double> at = std::nullopt);
    void shortcutReleased(std::optional<double> at = std::nullopt);

    /// Shows `phase`, and hides it after `seconds` if it still shows by then; a sticky one stays.
    void flash(const HUDPhase& phase, double seconds, HUDFlash::Sticky sticky = HUDFlash::Sticky::no) {
        hud_.flash(phase, seconds, sticky);
    }

    /// Whether nothing is going on that a message of another subsystem would disturb.
    bool isIdle() const;

    /// Types a history item once more, into the application that was in front when the panel opened. The item
    /// may go with the panel.
    void reinsert(const HistoryItem& item);
    void sendComposer();
    void toggleComposerMic();

    bool isRecording() const { return recorder_.isRecording(); }
    /// Whose recording runs; absent when none does.
    std::optional<Source> source() const { return recorder_.source(); }
    /// Whether a recording runs that the user has been shown.
    const Observable<bool>& isShown() const { return recorder_.isShown(); }
    /// Whether an utterance is being processed.
    const Observable<bool>& busy() const { return busy_; }

    /// The application that was in front when the panel opened.
    AppContext panelTarget;
    /// Closes the panel's window.
    std::function<void()> closePanel = [] {};
    /// True when a session exists; otherwise it has opened the account window.
    std::function<bool()> accountReady = [] { return true; };

 private:
    bool mayBegin(Mode mode);
    void audioLost();
    void nothingHeard();
    void playSound(std::string_view name);

    struct Processing;
    Task<void> process(Recorder::Ended ended, Mode mode);
    Task<void> carry(std::string transcript, Mode mode, Recording recording);
    void failed(const std::exception_ptr& error, const std::string& transcript, const Recording& recording);

    Executor& executor_;
    AppState& state_;
    SettingsStore& settings_;
    Permissions& permissions_;
    SystemSounds& sounds_;
    Recorder& recorder_;
    UtteranceRoads& roads_;
    WrittenText& written_;
    Composer& composer_;
    HUDFlash& hud_;
    HandsFree handsFree_;
    Mode mode_ = Mode::write;
    Observable<bool> busy_;
    std::optional<double> shortcutPressedAt_;
    TaskScope tasks_;
};

}  // namespace dorix
