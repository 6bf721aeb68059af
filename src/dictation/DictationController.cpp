#include "dictation/DictationController.h"

#include "base/Error.h"
#include "base/Log.h"
#include "base/async/Timeout.h"
#include "base/text/Text.h"
#include "dictation/Composer.h"
#include "dictation/UtteranceRoads.h"
#include "dictation/WrittenText.h"
#include "localdata/Language.h"
#include "localdata/SettingsStore.h"
#include "permissions/Permissions.h"
#include "platform/SessionState.h"
#include "platform/SystemSounds.h"
#include "speech/SpeechInput.h"

#include <utility>

namespace dorix {

namespace {
constexpr double soundVolume = 0.25;
constexpr double tapLimit = 0.4;

/// How many utterances may be in the works when another recording begins: one is processed, two wait. Nobody
/// speaks further ahead than that without looking.
constexpr int mostInWorks = 3;

// Seconds that the program's end waits for the utterances, then for those that were told to hurry, and for an
// insertion.
constexpr double endPatience = 3.0;
constexpr double hurryPatience = 0.5;
constexpr double insertionPatience = 2.0;
}  // namespace

DictationController::DictationController(Executor& executor, AppState& state, SettingsStore& settings,
                                         Permissions& permissions, SpeechInput& speech, SystemSounds& sounds,
                                         Recorder& recorder, UtteranceRoads& roads, WrittenText& written,
                                         Composer& composer, HUDFlash& hud, const SessionState& session)
    : executor_(executor),
      state_(state),
      settings_(settings),
      permissions_(permissions),
      speech_(speech),
      sounds_(sounds),
      recorder_(recorder),
      roads_(roads),
      written_(written),
      composer_(composer),
      hud_(hud),
      handsFree_(executor, state, speech,
                 {.nothingHeard = [this] { nothingHeard(); }, .finished = [this] { stopAndProcess(); }}),
      session_(session),
      lockObserver_(session.locked.subscribe([this](bool locked) { lockedChanged(locked); })),
      tasks_(executor) {
    recorder_.onAudioLost = [this] { audioLost(); };
    recorder_.onRecognitionFailed = [this] { recognitionFailed(); };
    recorder_.onFailure = [this] { startFailed(); };
}

DictationController::~DictationController() {
    if (isRecording()) {
        const auto ended = recorder_.end();
        if (!ended.partial.empty()) written_.keep(ended.partial, ended.recording);
    }
    recorder_.onAudioLost = [] {};
    recorder_.onRecognitionFailed = [] {};
    recorder_.onFailure = [] {};
}

bool DictationController::isIdle() const {
    return !busy_.get() && !isRecording() && state_.hud.get() == HUDPhase::hidden() &&
           !state_.composerRecording.get() && !state_.showFirstRunHint.get();
}

// Recording

bool DictationController::begin(Source source, Mode mode) {
    if (!mayBegin(mode)) return false;
    takeMicrophone();
    mode_ = mode;
    recorder_.begin(source);
    if (mode == Mode::write) roads_.announce(recorder_.context());
    return true;
}

bool DictationController::mayBegin(Mode mode) {
    if (isRecording() || isEnding_ || session_.locked.get() || settings_.paused.get()) return false;
    if (inWorks_ >= mostInWorks) {
        flash(HUDPhase::info(tr("Aún estoy con lo que has dicho antes. Espera un momento y repítelo.")), 2.4);
        return false;
    }
    return accountReady() && hasGrants(mode);
}

bool DictationController::hasGrants(Mode mode) {
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

void DictationController::showListening() {
    if (recorder_.failure()) return tellFailure();
    // Another application may have come in front of the panel meanwhile.
    const bool isOurs = !recorder_.context().app;
    if (state_.panelOpen.get()) {
        if (isOurs) goTo(panelTarget);
        closePanel();
    } else if (isOurs) {
        if (auto behind = leaveOwnWindow()) goTo(*std::move(behind));
    }
    recorder_.show();
    state_.hidesWords.set(recorder_.context().hasSecretFocus);
    hud_.showListening(mode_ == Mode::ask);
    if (mode_ == Mode::write) written_.prepare();
    playSound("Tink");
}

void DictationController::goTo(AppContext place) {
    if (mode_ == Mode::write) roads_.announce(place);
    recorder_.setContext(std::move(place));
}

/// What might still be a tap has not been shown, and neither is what went wrong with it.
void DictationController::startFailed() {
    if (hud_.isListening()) tellFailure();
}

/// Nobody is left talking to a microphone that never opened.
void DictationController::tellFailure() {
    const auto failure = recorder_.failure();
    cancelRecording();
    flash(HUDPhase::error(localizedDescription(failure)), 3.5);
}

void DictationController::audioLost() {
    if (!isRecording()) return;
    auto ended = endRecording();
    hud_.hideListening();
    hud_.flashNoSound();
    process(std::move(ended), Fate::keepHalf);
}

/// What went wrong comes with the words.
void DictationController::recognitionFailed() {
    if (!isRecording()) return;
    auto ended = endRecording();
    hud_.hideListening();
    process(std::move(ended), Fate::keepHalf);
}

void DictationController::cancelRecording() {
    handsFree_.end();
    // Without a recording, what the speech engine may be busy with is the composer's or already said.
    if (recorder_.cancel()) written_.forgetPrepared();
    hud_.hideListening();
}

void DictationController::stopAndProcess() {
    if (!isRecording()) return;
    auto ended = endRecording();
    hud_.showProcessing();
    playSound("Pop");
    const auto fate = ended.isWhole ? Fate::carry : Fate::keepHalf;
    process(std::move(ended), fate);
}

Recorder::Ended DictationController::endRecording() {
    handsFree_.end();
    auto ended = recorder_.end();
    ++inWorks_;
    busy_.set(true);
    return ended;
}

void DictationController::nothingHeard() {
    cancelRecording();
    flash(HUDPhase::info(namingKeys(tr("No te he oído. Pulsa ⌥ Espacio y habla."), state_.keys.get())), 2.4);
}

/// Whoever speaks before a locked screen may not be the user, and keys would go to the one who locked it.
void DictationController::lockedChanged(bool locked) {
    if (locked) {
        cancelRecording();
        takeMicrophone();
        shortcutPressedAt_.reset();  // its release goes to the lock
    } else if (std::exchange(keptWhileLocked_, false)) {
        flash(HUDPhase::info(
                  tr("Con la pantalla bloqueada no escribo: lo que has dictado está en el historial.")),
              4.0);
    }
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

/// An utterance on its way. However that ends, also when the whole flow does, words that have not arrived are
/// in the history, and the next ones have their turn.
struct DictationController::Processing {
    DictationController& flow;
    Recording recording;
    std::string words;  // that have not arrived, as far as they are known

    ~Processing() {
        if (!words.empty()) flow.written_.keep(words, recording);
        recording.shot.cancel();
        // What is prepared by now may be for the recording that runs.
        if (!flow.isRecording()) flow.written_.forgetPrepared();
        const bool more = --flow.inWorks_ > 0;
        flow.hud_.setProcessing(more);
        flow.busy_.set(more);
    }
};

void DictationController::process(Recorder::Ended ended, Fate fate) {
    std::erase_if(utterances_, [](const auto& utterance) { return utterance.isDone(); });
    std::optional<TaskHandle<void>> before;
    if (!utterances_.empty()) before = utterances_.back();
    utterances_.push_back(tasks_.spawn(carryThrough(std::move(ended), mode_, fate, before)));
}

Task<void> DictationController::carryThrough(Recorder::Ended ended, Mode mode, Fate fate,
                                             std::optional<TaskHandle<void>> before) {
    Processing utterance{*this, ended.recording, ended.partial};
    try {
        co_await ended.startTask;
        utterance.words = text::trim(co_await std::move(ended.words));
        if (before) co_await *before;
        if (co_await carry(utterance.words, mode, fate, ended.recording)) utterance.words.clear();
    } catch (const Cancelled&) {  // NOLINT(bugprone-empty-catch)
        // Whoever cancelled what this waited for has told the user what there is to tell.
    } catch (const SpeechInput::RecognitionFailed& error) {
        // No half of a sentence is typed.
        if (!error.heard().empty()) utterance.words = error.heard();
        failed(std::current_exception(), false);
    } catch (...) {
        failed(std::current_exception(), !utterance.words.empty());
    }
}

/// False when the words did not get anywhere.
Task<bool> DictationController::carry(std::string transcript, Mode mode, Fate fate, Recording recording) {
    if (fate == Fate::keep) co_return false;
    const bool isSecret = recording.context.hasSecretFocus;  // and kept nowhere
    if (fate == Fate::keepHalf) {
        if (transcript.empty() || isSecret) {
            hud_.flashNoSound();
        } else {
            flash(
                HUDPhase::error(tr("Me he quedado sin micrófono a mitad de frase. Lo que he oído está en el "
                                   "historial.")),
                4.0);
        }
        co_return false;
    }
    if (transcript.empty()) {
        flash(HUDPhase::info(namingKeys(tr("No te he oído. Mantén pulsado ⌥ Espacio mientras hablas."),
                                        state_.keys.get())),
              2.4);
        co_return true;
    }
    if (session_.locked.get() && !isSecret) keptWhileLocked_ = true;
    if (session_.locked.get() || isLate_) co_return false;
    if (mode == Mode::write) {
        co_await roads_.write(std::move(transcript), std::move(recording));
    } else {
        co_await roads_.ask(std::move(transcript), std::move(recording));
    }
    co_return true;
}

void DictationController::failed(const std::exception_ptr& error, bool hasWords) {
    const std::string description = localizedDescription(error);
    flash(HUDPhase::error(description), 3.5);
    // None of the collaborators may fail with the words; when one does all the same, they are kept.
    if (hasWords)
        logLine("a dictation was not carried to its end: " + describedIn(LogLanguage::english, error));
}

// The end

Task<void> DictationController::idle() {
    // Each waits for the one before, so that the last to begin is the last to end.
    while (!utterances_.empty() && !utterances_.back().isDone()) {
        const auto last = utterances_.back();
        co_await last;
    }
}

Task<void> DictationController::settled() {
    isEnding_ = true;
    takeMicrophone();
    if (isRecording()) {
        auto ended = endRecording();
        hud_.hideListening();
        process(std::move(ended), Fate::keep);
    }
    if (!co_await withTimeout(idle(), endPatience)) {
        isLate_ = true;
        speech_.hurry();
        for (const auto& utterance : utterances_) utterance.cancel();
        co_await withTimeout(idle(), hurryPatience);
    }
    co_await withTimeout(written_.settled(), insertionPatience);
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
    } else if (isMicrophoneFree()) {
        onMicrophoneWanted();
        composer_.startRecording();
    }
}

bool DictationController::isMicrophoneFree() {
    return !settings_.paused.get() && !isRecording() && !state_.composerRecording.get() && !isEnding_ &&
           !session_.locked.get() && recorder_.mayUseMicrophone();
}

void DictationController::takeMicrophone() {
    composer_.yieldMicrophone();
    onMicrophoneWanted();
}

void DictationController::dropComposerRecording() { composer_.dropRecording(); }

}  // namespace dorix
