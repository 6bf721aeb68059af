#pragma once

#include "base/Observable.h"
#include "base/Uuid.h"
#include "base/async/TaskScope.h"
#include "context/AppContext.h"
#include "context/ScreenCapture.h"

#include <exception>
#include <functional>
#include <optional>
#include <string>

namespace dorix {

class Accessibility;
class Permissions;
class SettingsStore;
class SpeechInput;
class Workspace;

/// A recording, and what was captured when it began.
struct Recording {
    std::string id = makeUuid();  // of what the history keeps of it
    AppContext context;
    double startedAt = 0;  // seconds since 1970
    ShotTask shot;
};

/// Opens the microphone and looks at what the user is working in. One recording at a time. Main executor;
/// what it is given outlives it.
class Recorder {
 public:
    /// Whose recording it is.
    enum class Source { holdKey, shortcut };

    /// `screen` is null where no pictures can be taken.
    Recorder(Executor& executor, SettingsStore& settings, Permissions& permissions, SpeechInput& speech,
             Workspace& workspace, Accessibility& accessibility, ScreenCapture* screen);
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    /// Whether the microphone may be used, by the grants as they are now.
    bool mayUseMicrophone();

    /// Whether a field of our own takes what is dictated now.
    std::function<bool()> isPractising = [] { return false; };

    /// Begins to listen and captures what is in front. While one runs it must be ended before.
    void begin(Source source);
    bool isRecording() const { return startTask_.has_value(); }
    /// The user is shown the recording that runs.
    void show() { shown_.set(isRecording()); }
    /// Whether one runs that is shown.
    const Observable<bool>& isShown() const { return shown_; }
    /// Absent when none runs.
    std::optional<Source> source() const { return source_; }
    /// Of the recording that runs, or else of the last one.
    const AppContext& context() const { return recording_.context; }
    /// The recording is about something else than what is in front, and so is its picture.
    void setContext(AppContext context);

    /// A recording that is over; its microphone may still have been about to open.
    struct Ended {
        TaskHandle<void> startTask;  // throws what kept the microphone from opening
        Task<std::string> words;     // as SpeechInput::stop() gives them
        std::string partial;         // what was understood by the end
        Recording recording;
        bool isWhole = true;  // no sound was missing from it
    };
    /// Closes the microphone. Only while one runs.
    Ended end();

    /// Drops the recording and its picture; false when none runs.
    bool cancel();

    /// What kept the microphone of the recording that runs from opening; null while nothing did.
    std::exception_ptr failure() const { return failure_; }

    /// Called when the recording that runs gets no sound any more, or cannot begin.
    std::function<void()> onAudioLost = [] {};
    std::function<void()> onFailure = [] {};
    /// Called when nothing more will be understood of the recording that runs.
    std::function<void()> onRecognitionFailed = [] {};

 private:
    void takePicture();
    Task<void> watchStart(TaskHandle<void> startTask, int number);

    Executor& executor_;
    SettingsStore& settings_;
    Permissions& permissions_;
    SpeechInput& speech_;
    Workspace& workspace_;
    Accessibility& accessibility_;
    ScreenCapture* const screen_;
    Recording recording_;
    std::optional<Source> source_;
    std::optional<TaskHandle<void>> startTask_;
    Observable<bool> shown_;
    std::exception_ptr failure_;
    int number_ = 0;  // of the newest recording
    TaskScope tasks_;
};

}  // namespace dorix
