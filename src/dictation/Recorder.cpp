#include "dictation/Recorder.h"

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
      tasks_(executor) {}

Recorder::~Recorder() {
    speech_.onAudioLost = nullptr;
    speech_.onRecognitionFailed = nullptr;
}

bool Recorder::mayUseMicrophone() {
    permissions_.refresh();
    return permissions_.microphone.get() == AuthorizationStatus::authorized;
}

void Recorder::begin(Source source) {
    source_ = source;
    failure_ = nullptr;
    speech_.onAudioLost = [this] { onAudioLost(); };
    speech_.onRecognitionFailed = [this] { onRecognitionFailed(); };
    const double startedAt = executor_.date();
    // The microphone first: an application that is slow to tell of itself must not cost the first word.
    startTask_ = tasks_.spawn(speech_.start(settings_.language.get()));
    const auto ownField = isPractising() ? OwnField::yes : OwnField::no;
    recording_ = {.context = captureAppContext(workspace_, accessibility_, ownField),
                  .startedAt = startedAt,
                  .shot = {}};
    takePicture();
    tasks_.spawn(watchStart(*startTask_, ++number_));
}

void Recorder::takePicture() {
    if (screen_ != nullptr && permissions_.screen.get())
        recording_.shot = ShotTask(tasks_, *screen_, recording_.context.app);
}

void Recorder::setContext(AppContext context) {
    recording_.context = std::move(context);
    recording_.shot.cancel();
    takePicture();
}

Task<void> Recorder::watchStart(TaskHandle<void> startTask, int number) {
    try {
        co_await startTask;
    } catch (const Cancelled&) {
        throw;
    } catch (...) {
        if (number != number_ || !isRecording()) co_return;
        failure_ = std::current_exception();
        onFailure();
    }
}

Recorder::Ended Recorder::end() {
    source_.reset();
    shown_.set(false);
    const bool isWhole = !speech_.lacksSound();
    return {.startTask = *std::exchange(startTask_, std::nullopt),
            .words = speech_.stop(),
            .partial = speech_.partial.get(),
            .recording = std::move(recording_),
            .isWhole = isWhole};
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

}  // namespace dorix
