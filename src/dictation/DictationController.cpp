#include "dictation/DictationController.h"

#include "base/Error.h"
#include "base/Log.h"
#include "base/async/Cancelled.h"
#include "base/text/Text.h"
#include "context/TextInsertion.h"
#include "localdata/Language.h"
#include "localdata/SettingsStore.h"
#include "permissions/Permissions.h"
#include "platform/Accessibility.h"
#include "platform/SystemSounds.h"
#include "platform/Workspace.h"
#include "speech/SpeechInput.h"
#include "writing/Writer.h"

#include <utility>

namespace dorix {

namespace {

constexpr double soundVolume = 0.25;
constexpr double tapLimit = 0.4;

constexpr double silenceInterval = 0.15;
constexpr float audibleLevel = 0.35F;
constexpr double silenceBeforeWords = 8.0;
constexpr double silenceAfterWords = 1.8;
constexpr double longestHandsFree = 120.0;

/// The limits are told in round numbers of beats; a sum of beats misses them by a rounding error.
constexpr double clockRounding = 1e-6;

bool isMoreThan(double seconds, double limit) { return seconds > limit + clockRounding; }

}  // namespace

DictationController::DictationController(const DictationEnvironment& environment)
    : env_(environment),
      hud_(environment.executor, environment.state),
      written_(env_, hud_),
      roads_(env_, hud_),
      composer_(env_, hud_),
      silenceTimer_(environment.executor),
      tasks_(environment.executor) {
    roads_.onRoute = [this](Route route) { onRoute(route); };
}

DictationController::~DictationController() { env_.speech.onAudioLost = nullptr; }

bool DictationController::isIdle() const {
    return !busy_.get() && !startTask_ && env_.state.hud.get() == HUDPhase::hidden() &&
           !env_.state.composerRecording.get() && !env_.state.showFirstRunHint.get();
}

// Recording

bool DictationController::begin(Source source, Mode mode) {
    if (!mayBegin(mode)) return false;
    composer_.yieldMicrophone();
    mode_ = mode;
    source_ = source;
    const double startedAt = env_.executor.date();
    // The microphone first: an application that is slow to tell of itself must not cost the first word.
    startTask_ = tasks_.spawn(env_.speech.start(env_.settings.language.get()));
    env_.speech.onAudioLost = [this] { audioLost(); };
    recording_ = {
        .context = captureAppContext(env_.workspace, env_.accessibility), .startedAt = startedAt, .shot = {}};
    if (env_.screen != nullptr && env_.permissions.screen.get())
        recording_.shot = ShotTask(tasks_, *env_.screen, recording_.context.app);
    if (mode == Mode::write && !env_.writer.usesCloudEngine())
        env_.writer.prewarm(makePolishRequest(env_, recording_.context, ""));
    return true;
}

bool DictationController::mayBegin(Mode mode) {
    if (busy_.get() || startTask_ || env_.settings.paused.get() || !accountReady()) return false;
    if (!mayUseMicrophone()) {
        flash(HUDPhase::error(tr("DORIX necesita acceso al micrófono. Ábrelo desde Ajustes.")), 3.0);
        return false;
    }
    if (mode == Mode::ask && !env_.permissions.screen.get()) {
        env_.permissions.requestScreen();
        env_.permissions.refresh();
        flash(HUDPhase::error(
                  tr("Para preguntar sobre la pantalla, activa «Grabación de pantalla» para DORIX y "
                     "vuelve a abrir la app.")),
              5.0);
        return false;
    }
    return true;
}

bool DictationController::mayUseMicrophone() {
    env_.permissions.refresh();
    return env_.permissions.microphone.get() == AuthorizationStatus::authorized;
}

void DictationController::audioLost() {
    if (!startTask_) return;
    cancelRecording();
    flash(
        HUDPhase::error(tr("No me llega sonido del micrófono. Si acabas de conectar unos auriculares, prueba "
                           "otra vez.")),
        4.0);
}

void DictationController::showListening() {
    if (env_.state.panelOpen.get()) {
        recording_.context = panelTarget;
        closePanel();
    }
    hud_.cancel();
    env_.state.asking.set(mode_ == Mode::ask);
    env_.state.hud.set(HUDPhase::listening());
    if (mode_ == Mode::write) env_.inserter.prepare();
    playSound("Tink");
}

void DictationController::cancelRecording() {
    endHandsFree();
    // Without a recording, what the speech engine may be busy with is the composer's or already said.
    if (const auto task = std::exchange(startTask_, std::nullopt)) {
        task->cancel();
        recording_.shot.cancel();
        source_.reset();
        env_.speech.cancel();
        env_.inserter.forgetPrepared();
    }
    if (env_.state.hud.get() == HUDPhase::listening()) env_.state.hud.set(HUDPhase::hidden());
}

void DictationController::stopAndProcess() {
    if (!startTask_) return;
    endHandsFree();
    auto startTask = *std::exchange(startTask_, std::nullopt);
    source_.reset();
    busy_.set(true);
    env_.state.hud.set(HUDPhase::processing());
    playSound("Pop");
    tasks_.spawn(process(std::move(startTask), mode_, std::move(recording_)));
}

void DictationController::playSound(std::string_view name) {
    if (env_.settings.playSounds.get()) env_.sounds.play(name, soundVolume);
}

// The hot key and hands-free

void DictationController::shortcutPressed(Mode mode) {
    if (shortcutPressedAt_) return;
    if (env_.state.handsFree.get()) {
        stopAndProcess();
    } else if (begin(Source::shortcut, mode)) {
        showListening();
        shortcutPressedAt_ = env_.executor.now();
    }
}

void DictationController::shortcutReleased() {
    const auto pressedAt = std::exchange(shortcutPressedAt_, std::nullopt);
    if (!pressedAt || source_ != Source::shortcut) return;
    if (isMoreThan(tapLimit, env_.executor.now() - *pressedAt)) {
        startHandsFree();
    } else {
        stopAndProcess();
    }
}

void DictationController::startHandsFree() {
    env_.state.handsFree.set(true);
    const double now = env_.executor.now();
    silence_ = {.partial = {}, .lastChange = now, .start = now};
    silenceTimer_.repeat(silenceInterval, [this] { watchSilence(); });
}

void DictationController::endHandsFree() {
    silenceTimer_.stop();
    env_.state.handsFree.set(false);
}

void DictationController::watchSilence() {
    if (!env_.state.handsFree.get()) return;
    const double now = env_.executor.now();
    if (env_.speech.partial.get() != silence_.partial) {
        silence_.partial = env_.speech.partial.get();
        silence_.lastChange = now;
    }
    if (env_.speech.level.get() > audibleLevel) silence_.lastChange = now;
    if (silence_.partial.empty()) {
        if (!isMoreThan(now - silence_.start, silenceBeforeWords)) return;
        cancelRecording();
        flash(HUDPhase::info(tr("No te he oído. Pulsa ⌥ Espacio y habla.")), 2.4);
    } else if (isMoreThan(now - silence_.lastChange, silenceAfterWords) ||
               isMoreThan(now - silence_.start, longestHandsFree)) {
        stopAndProcess();
    }
}

// From the transcript to the text at the cursor

/// However an utterance ends, the next one must not be refused.
struct DictationController::Processing {
    DictationController& flow;
    ShotTask shot;

    ~Processing() {
        flow.env_.inserter.forgetPrepared();
        shot.cancel();
        flow.busy_.set(false);
    }
};

Task<void> DictationController::process(TaskHandle<void> startTask, Mode mode, Recording recording) {
    const Processing processing{*this, recording.shot};
    std::string transcript;
    try {
        co_await startTask;
        transcript = text::trim(co_await env_.speech.stop());
        co_await carry(transcript, mode, recording);
    } catch (const Cancelled&) {
        // Whoever cancelled what this waited for has told the user what there is to tell.
        if (env_.state.hud.get() == HUDPhase::processing()) env_.state.hud.set(HUDPhase::hidden());
    } catch (...) {
        failed(std::current_exception(), transcript, recording);
    }
}

Task<void> DictationController::carry(std::string transcript, Mode mode, Recording recording) {
    if (transcript.empty()) {
        flash(HUDPhase::info(tr("No te he oído. Mantén pulsado ⌥ Espacio mientras hablas.")), 2.4);
    } else if (mode == Mode::write) {
        co_await roads_.write(std::move(transcript), std::move(recording));
    } else {
        co_await roads_.ask(std::move(transcript), std::move(recording));
    }
}

void DictationController::failed(const std::exception_ptr& error, const std::string& transcript,
                                 const Recording& recording) {
    const std::string description = localizedDescription(error);
    flash(HUDPhase::error(description), 3.5);
    if (transcript.empty()) {
        env_.speech.cancel();
    } else {
        // None of the collaborators may fail here; when one does all the same, the words are not lost.
        logLine("no se pudo completar lo dictado: " + description);
        written_.keep(transcript, recording);
    }
}

// The panel

void DictationController::reinsert(const HistoryItem& item) {
    auto typing = written_.typeAgain(panelTarget, item.answer);
    closePanel();
    tasks_.spawn(std::move(typing));
}

void DictationController::toggleComposerMic() {
    if (env_.state.composerRecording.get()) {
        composer_.finishRecording();
    } else if (!env_.settings.paused.get() && !startTask_ && !busy_.get() && mayUseMicrophone()) {
        // While busy the recogniser may still owe the last words of the dictation.
        composer_.startRecording();
    }
}

}  // namespace dorix
