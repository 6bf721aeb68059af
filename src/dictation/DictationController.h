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
#include <vector>

namespace dorix {

class Composer;
class SystemSounds;
struct SessionState;
class UtteranceRoads;
class WrittenText;
struct HistoryItem;

/// The heart of a dictation: from the signals of the keys through a recording to the text at the cursor, with
/// all that is timed, shown and saved around it. One recording at a time, and one utterance: while it is
/// processed the next may be recorded, and waits for its turn, so that texts come in the order of speech.
/// Words that are not typed, for whatever reason, are in the history. Main executor; what it is given
/// outlives it.
class DictationController {
 public:
    enum class Mode { write, ask };
    using Source = Recorder::Source;

    DictationController(Executor& executor, AppState& state, SettingsStore& settings,
                        Permissions& permissions, SpeechInput& speech, SystemSounds& sounds,
                        Recorder& recorder, UtteranceRoads& roads, WrittenText& written, Composer& composer,
                        HUDFlash& hud, const SessionState& session);
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

    /// The panel closes.
    void dropComposerRecording();

    /// Nothing begins any more. Returns when all that was said is typed or in the history, and no insertion
    /// is under way; what takes longer than a few seconds goes to the history.
    Task<void> settled();

    bool isRecording() const { return recorder_.isRecording(); }
    /// Whose recording runs; absent when none does.
    std::optional<Source> source() const { return recorder_.source(); }
    /// Whether a recording runs that the user has been shown.
    const Observable<bool>& isShown() const { return recorder_.isShown(); }
    /// Whether an utterance is being processed.
    const Observable<bool>& busy() const { return busy_; }

    /// The application that was in front when the panel opened.
    AppContext panelTarget;
    /// Whether a recording could begin now that is nobody's dictation.
    bool isMicrophoneFree();
    /// Whoever else listens is to let go of the microphone, inside the call: a recording begins, or the
    /// screen is locked.
    std::function<void()> onMicrophoneWanted = [] {};
    /// Closes the panel's window.
    std::function<void()> closePanel = [] {};

    /// Called when a recording shows that no application was in front of. Whoever has a window of the
    /// program's there closes it, and gives what it had come in front of.
    std::function<std::optional<AppContext>()> leaveOwnWindow = [] { return std::nullopt; };
    /// True when a session exists; otherwise it has opened the account window.
    std::function<bool()> accountReady = [] { return true; };

 private:
    /// What becomes of the words of a recording that has ended.
    enum class Fate {
        carry,     // they go where they belong
        keepHalf,  // to the history, since some may be missing
        keep,      // to the history, without a word
    };
    struct Processing;

    bool mayBegin(Mode mode);
    void takeMicrophone();
    bool hasGrants(Mode mode);
    void goTo(AppContext place);
    void startFailed();
    void tellFailure();
    void audioLost();
    void recognitionFailed();
    void nothingHeard();
    void lockedChanged(bool locked);
    void playSound(std::string_view name);

    Recorder::Ended endRecording();
    void process(Recorder::Ended ended, Fate fate);
    Task<void> carryThrough(Recorder::Ended ended, Mode mode, Fate fate,
                            std::optional<TaskHandle<void>> before);
    Task<bool> carry(std::string transcript, Mode mode, Fate fate, Recording recording);
    void failed(const std::exception_ptr& error, bool hasWords);
    Task<void> idle();

    Executor& executor_;
    AppState& state_;
    SettingsStore& settings_;
    Permissions& permissions_;
    SpeechInput& speech_;
    SystemSounds& sounds_;
    Recorder& recorder_;
    UtteranceRoads& roads_;
    WrittenText& written_;
    Composer& composer_;
    HUDFlash& hud_;
    HandsFree handsFree_;
    Mode mode_ = Mode::write;
    Observable<bool> busy_;
    int inWorks_ = 0;                           // utterances that are not through
    std::vector<TaskHandle<void>> utterances_;  // they, in the order of speech, and some that are through
    bool isEnding_ = false;                     // the program ends
    bool isLate_ = false;                       // and cannot wait any longer
    bool keptWhileLocked_ = false;              // words of which nobody has been told where they are
    std::optional<double> shortcutPressedAt_;
    const SessionState& session_;
    const Subscription lockObserver_;
    TaskScope tasks_;
};

}  // namespace dorix
