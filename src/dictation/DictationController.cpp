#include "dictation/DictationController.h"

#include "base/Error.h"
#include "base/Log.h"
#include "dictation/Composer.h"
#include "dictation/UtteranceRoads.h"
#include "dictation/WrittenText.h"
#include "localdata/Language.h"
#include "localdata/SettingsStore.h"
#include "permissions/Permissions.h"
#include "platform/SystemSounds.h"

#include <utility>

namespace dorix {

namespace {
constexpr double soundVolume = 0.25;
constexpr double tapLimit = 0.4;
}  // namespace

DictationController::DictationController(Executor& executor, AppState& state, SettingsStore& settings,
                                         Permissions& permissions, SpeechInput& speech, SystemSounds& sounds,
                                         Recorder& recorder, UtteranceRoads& roads, WrittenText& written,
                                         Composer& composer, HUDFlash& hud)
    : executor_(executor),
      state_(state),
      settings_(settings),
      permissions_(permissions),
      sounds_(sounds),
      recorder_(recorder),
      roads_(roads),
      written_(written),
      composer_(composer),
      hud_(hud),
      handsFree_(executor, state, speech,
                 {.nothingHeard = [this] { nothingHeard(); }, .finished = [this] { stopAndProcess(); }}),
      tasks_(executor) {
    recorder_.onAudioLost = [this] { audioLost(); };
}

DictationController::~DictationController() {
    recorder_.onAudioLost = [] {};
}

bool DictationController::isIdle() const {
    return !busy_.get() && !isRecording() && state_.hud.get() == HUDPhase::hidden() &&
           !state_.composerRecording.get() && !state_.showFirstRunHint.get();
}

// Recording

bool DictationController::begin(Source source, Mode mode) {
    if (!mayBegin(mode)) return false;
    composer_.yieldMicrophone();
    mode_ = mode;
    recorder_.begin(source);
    if (mode == Mode::write) roads_.announce(recorder_.context());
    return true;
}

bool DictationController::mayBegin(Mode mode) {
    if (busy_.get() || isRecording() || settings_.paused.get() || !accountReady()) return false;
    if (!recorder_.mayUseMicrophone()) {
        flash(HUDPhase::error(tr("DORIX necesita acceso al micrófono. Ábrelo desde Ajustes.")), 3.0);
        return false;
    }
    if (mode == Mode::ask && !permissions_.screen.get()) {
        permissions_.requestScreen();
        permissions_.refresh();
        flash(HUDPhase::error(
                  tr("Para preguntar sobre la pantalla, activa «Grabación de pantalla» para DORIX y "
                     "vuelve a abrir la app.")),
              5.0);
        return false;
    }
    return true;
}

void DictationController::audioLost() {
    if (!isRecording()) return;
    cancelRecording();
    flash(
        HUDPhase::error(tr("No me llega sonido del micrófono. Si acabas de conectar unos auriculares, prueba "
                           "otra vez.")),
        4.0);
}

void DictationController::showListening() {
    if (state_.panelOpen.get()) {
        // Unless another application has come in front of the panel meanwhile.
        if (!recorder_.context().app) recorder_.setContext(panelTarget);
        closePanel();
    }
    recorder_.show();
    hud_.cancel();
    state_.asking.set(mode_ == Mode::ask);
    state_.hidesWords.set(recorder_.context().hasSecretFocus);
    state_.hud.set(HUDPhase::listening());
    if (mode_ == Mode::write) written_.prepare();
    playSound("Tink");
}

void DictationController::cancelRecording() {
    handsFree_.end();
    // Without a recording, what the speech engine may be busy with is the composer's or already said.
    if (recorder_.cancel()) written_.forgetPrepared();
    if (state_.hud.get() == HUDPhase::listening()) state_.hud.set(HUDPhase::hidden());
}

void DictationController::stopAndProcess() {
    if (!isRecording()) return;
    handsFree_.end();
    auto ended = recorder_.end();
    busy_.set(true);
    state_.hud.set(HUDPhase::processing());
    playSound("Pop");
    tasks_.spawn(process(std::move(ended), mode_));
}

void DictationController::nothingHeard() {
    cancelRecording();
    flash(HUDPhase::info(tr("No te he oído. Pulsa ⌥ Espacio y habla.")), 2.4);
}

void DictationController::playSound(std::string_view name) {
    if (settings_.playSounds.get()) sounds_.play(name, soundVolume);
}

// The hot key

void DictationController::shortcutPressed(Mode mode, std::optional<double> at) {
    if (shortcutPressedAt_) return;
    if (state_.handsFree.get()) {
        stopAndProcess();
    } else if (begin(Source::shortcut, mode)) {
        showListening();
        shortcutPressedAt_ = at.value_or(executor_.now());
    }
}

void DictationController::shortcutReleased(std::optional<double> at) {
    const auto pressedAt = std::exchange(shortcutPressedAt_, std::nullopt);
    if (!pressedAt || source() != Source::shortcut) return;
    if (isMoreThan(tapLimit, at.value_or(executor_.now()) - *pressedAt)) {
        handsFree_.start();
    } else {
        stopAndProcess();
    }
}

// From the transcript to the text at the cursor

/// However an utterance ends, the next one must not be refused.
struct DictationController::Processing {
    DictationController& flow;
    ShotTask shot;

    ~Processing() {
        flow.written_.forgetPrepared();
        shot.cancel();
        flow.busy_.set(false);
    }
};

Task<void> DictationController::process(Recorder::Ended ended, Mode mode) {
    const Processing processing{*this, ended.recording.shot};
    std::string transcript;
    try {
        transcript = co_await recorder_.transcript(ended.startTask);
        co_await carry(transcript, mode, ended.recording);
    } catch (const Cancelled&) {
        // Whoever cancelled what this waited for has told the user what there is to tell.
        if (state_.hud.get() == HUDPhase::processing()) state_.hud.set(HUDPhase::hidden());
    } catch (...) {
        failed(std::current_exception(), transcript, ended.recording);
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
        recorder_.abandon();
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

void DictationController::sendComposer() { composer_.send(panelTarget); }

void DictationController::toggleComposerMic() {
    if (state_.composerRecording.get()) {
        composer_.finishRecording();
    } else if (!settings_.paused.get() && !isRecording() && !busy_.get() && recorder_.mayUseMicrophone()) {
        // While busy the recogniser may still owe the last words of the dictation.
        composer_.startRecording();
    }
}

}  // namespace dorix
