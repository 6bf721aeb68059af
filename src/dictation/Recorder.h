#pragma once

#include "base/Observable.h"
#include "base/async/TaskScope.h"
#include "context/AppContext.h"
#include "context/ScreenCapture.h"

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
    /// The text goes elsewhere than to what is in front.
    void setContext(AppContext context) { recording_.context = std::move(context); }

    /// A recording whose microphone may still be opening.
    struct Ended {
        TaskHandle<void> startTask;
        Recording recording;
    };
    /// No sound is wanted any more; what was said is to be had by transcript(). Only while one runs.
    Ended end();
    /// Waits for the microphone to have opened and then for the last words; throws what kept it from opening.
    Task<std::string> transcript(TaskHandle<void> startTask);

    /// Drops the recording and its picture; false when none runs.
    bool cancel();
    /// Drops what is left of a recording that could not be ended well.
    void abandon();

    /// Called when no sound arrives any more.
    std::function<void()> onAudioLost = [] {};

 private:
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
    TaskScope tasks_;
};

}  // namespace dorix
