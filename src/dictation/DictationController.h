#pragma once

#include "base/async/TaskScope.h"
#include "base/async/Timer.h"
#include "dictation/AppState.h"
#include "dictation/Collaborators.h"
#include "dictation/context/AppContext.h"
#include "dictation/context/TextInsertion.h"
#include "localdata/SettingsStore.h"
#include "platform/Accessibility.h"
#include "platform/SystemSounds.h"
#include "platform/Workspace.h"
#include "shell/permissions/Permissions.h"
#include "speech/SpeechInput.h"

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

    /// What it works with; all but the pointers are required, and all must outlive it.
    struct Environment {
        Executor& executor;
        AppState& state;
        SettingsStore& settings;
        Permissions& permissions;
        SpeechInput& speech;
        DictationWriter& writer;
        TextInserter& inserter;
        Workspace& workspace;
        Accessibility& accessibility;
        SystemSounds& sounds;
        DictationHistory* history = nullptr;
        ComposerAssistant* assistant = nullptr;
    };

    explicit DictationController(Environment environment);
    DictationController(const DictationController&) = delete;
    DictationController& operator=(const DictationController&) = delete;

    /// Starts a recording, unseen; false when it is refused, with a message where the user can do something.
    bool begin(Source source, Mode mode);
    /// Shows the recording.
    void showListening();
    /// Ends the recording and takes what was said where it belongs.
    void stopAndProcess();
    /// Drops the recording without a word.
    void cancelRecording();

    /// Held: talk until released. Tapped: talk until silence.
    void shortcutPressed(Mode mode);
    void shortcutReleased();

    /// Shows `phase`, and hides it after `seconds` if it still shows by then; a sticky one stays.
    enum class Sticky { no, yes };
    void flash(const HUDPhase& phase, double seconds, Sticky sticky = Sticky::no);

    /// Whether nothing is going on that a message of another subsystem would disturb.
    bool isIdle() const;

    /// Types a history item once more, into the application that was in front when the panel opened.
    void reinsert(const HistoryItem& item);
    void sendComposer();
    void toggleComposerMic();

    bool isRecording() const { return startTask_.has_value(); }
    /// Whose recording runs; absent when none does.
    std::optional<Source> source() const { return source_; }
    /// Whether an utterance is being processed.
    const Observable<bool>& busy() const { return busy_; }
    Observable<bool>& busy() { return busy_; }

    /// The application that was in front when the panel opened.
    AppContext panelTarget;
    /// Closes the panel's window.
    std::function<void()> closePanel = [] {};
    /// True when a session exists; otherwise it has opened the account window.
    std::function<bool()> accountReady = [] { return true; };

 private:
    bool mayBegin(Mode mode);
    bool mayUseMicrophone();
    void audioLost();
    void playSound(std::string_view name);

    void startHandsFree();
    void endHandsFree();
    void watchSilence();

    PolishRequest makeRequest(std::string transcript) const;
    std::vector<std::string> styleExamples(std::string_view toneLabel) const;

    Task<void> process(TaskHandle<void> startTask, Mode mode);
    Task<void> dictate(std::string transcript);
    Task<void> commit(PolishResult result, std::string transcript);
    Task<void> typeAgain(AppContext target, std::string answer);
    Task<void> startComposerRecording();
    Task<void> finishComposerRecording();

    /// What the hands-free watch remembers between its looks.
    struct Silence {
        std::string partial;
        double lastChange = 0;
        double start = 0;
    };

    const Environment env_;
    AppContext context_;
    Mode mode_ = Mode::write;
    std::optional<Source> source_;
    double startedAt_ = 0;  // seconds since 1970
    Observable<bool> busy_;
    std::optional<double> shortcutPressedAt_;
    std::optional<TaskHandle<void>> startTask_;
    Timer hideWork_;
    Timer silenceTimer_;
    Silence silence_;
    TaskScope tasks_;
};

}  // namespace dorix
