#include "dictation/Recorder.h"

#include "base/text/Text.h"
#include "localdata/SettingsStore.h"
#include "permissions/Permissions.h"
#include "platform/Accessibility.h"
#include "platform/Workspace.h"
#include "speech/SpeechInput.h"

#include <utility>

namespace dorix {

Recorder::Recorder(Executor& executor, SettingsStore& settings, Permissions& permissions, SpeechInput& speech,
                   Workspace& workspace, Accessibility& accessibility, ScreenCapture* screen)
    : executor_(executor),
      settings_(settings),
      permissions_(permissions),
      speech_(speech),
      workspace_(workspace),
      accessibility_(accessibility),
      screen_(screen),
      tasks_(executor) {
    speech_.onAudioLost = [this] { onAudioLost(); };
}

Recorder::~Recorder() { speech_.onAudioLost = nullptr; }

bool Recorder::mayUseMicrophone() {
    permissions_.refresh();
    return permissions_.microphone.get() == AuthorizationStatus::authorized;
}

void Recorder::begin(Source source) {
    source_ = source;
    const double startedAt = executor_.date();
    // The microphone first: an application that is slow to tell of itself must not cost the first word.
    startTask_ = tasks_.spawn(speech_.start(settings_.language.get()));
    recording_ = {
        .context = captureAppContext(workspace_, accessibility_), .startedAt = startedAt, .shot = {}};
    if (screen_ != nullptr && permissions_.screen.get())
        recording_.shot = ShotTask(tasks_, *screen_, recording_.context.app);
}

Recorder::Ended Recorder::end() {
    source_.reset();
    shown_.set(false);
    return {*std::exchange(startTask_, std::nullopt), std::move(recording_)};
}

Task<std::string> Recorder::transcript(TaskHandle<void> startTask) {
    co_await startTask;
    co_return std::string(text::trim(co_await speech_.stop()));
}

bool Recorder::cancel() {
    const auto task = std::exchange(startTask_, std::nullopt);
    if (!task) return false;
    task->cancel();
    recording_.shot.cancel();
    source_.reset();
    shown_.set(false);
    speech_.cancel();
    return true;
}

void Recorder::abandon() { speech_.cancel(); }

}  // namespace dorix
