#include "dictation/DictationController.h"

#include "base/Error.h"
#include "base/Uuid.h"
#include "base/async/Sleep.h"
#include "base/text/Text.h"
#include "localdata/Language.h"
#include "speech/Join.h"

#include <memory>
#include <utility>

namespace dorix {

namespace {

constexpr double soundVolume = 0.25;
constexpr double tapLimit = 0.4;
constexpr double activationWait = 0.18;

constexpr double silenceInterval = 0.15;
constexpr float audibleLevel = 0.35F;
constexpr double silenceBeforeWords = 8.0;
constexpr double silenceAfterWords = 1.8;
constexpr double longestHandsFree = 120.0;

constexpr std::size_t styleExampleCount = 3;
constexpr std::size_t shortestStyleExample = 40;

/// The limits are told in round numbers of beats; a sum of beats misses them by a rounding error.
constexpr double clockRounding = 1e-6;

bool isMoreThan(double seconds, double limit) { return seconds > limit + clockRounding; }

std::string writtenIn(std::string_view format, const AppContext& context) {
    return formatText(tr(format), {tr(context.displayName)});
}

}  // namespace

DictationController::DictationController(Environment environment)
    : env_(environment),
      hideWork_(environment.executor),
      silenceTimer_(environment.executor),
      tasks_(environment.executor) {}

void DictationController::flash(const HUDPhase& phase, double seconds, Sticky sticky) {
    hideWork_.stop();
    env_.state.hud.set(phase);
    if (sticky == Sticky::yes) return;
    hideWork_.once(seconds, [this, phase] {
        if (env_.state.hud.get() == phase) env_.state.hud.set(HUDPhase::hidden());
    });
}

bool DictationController::isIdle() const {
    return !busy_.get() && !startTask_ && env_.state.hud.get() == HUDPhase::hidden() &&
           !env_.state.composerRecording.get() && !env_.state.showFirstRunHint.get();
}

// Recording

bool DictationController::begin(Source source, Mode mode) {
    if (!mayBegin(mode)) return false;
    mode_ = mode;
    source_ = source;
    context_ = captureAppContext(env_.workspace, env_.accessibility);
    startedAt_ = env_.executor.date();
    startTask_ = tasks_.spawn(env_.speech.start(env_.settings.language.get()));
    env_.speech.onAudioLost = [this] { audioLost(); };
    if (mode == Mode::write && !env_.writer.usesCloudEngine()) env_.writer.prewarm(makeRequest(""));
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
        context_ = panelTarget;
        closePanel();
    }
    hideWork_.stop();
    env_.state.asking.set(mode_ == Mode::ask);
    env_.state.hud.set(HUDPhase::listening());
    if (mode_ == Mode::write) env_.inserter.prepare();
    playSound("Tink");
}

void DictationController::cancelRecording() {
    endHandsFree();
    if (auto task = std::exchange(startTask_, std::nullopt)) task->cancel();
    source_.reset();
    env_.speech.cancel();
    env_.inserter.forgetPrepared();
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
    tasks_.spawn(process(std::move(startTask), mode_));
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

Task<void> DictationController::process(TaskHandle<void> startTask, Mode mode) {
    // However this ends, the next utterance must not be refused.
    const std::shared_ptr<void> done(nullptr, [this](auto) {
        env_.inserter.forgetPrepared();
        busy_.set(false);
    });
    try {
        co_await startTask;
    } catch (...) {
        env_.speech.cancel();
        flash(HUDPhase::error(localizedDescription(std::current_exception())), 3.5);
        co_return;
    }
    const std::string spoken = co_await env_.speech.stop();
    const std::string transcript(text::trim(spoken));
    if (transcript.empty()) {
        flash(HUDPhase::info(tr("No te he oído. Mantén pulsado ⌥ Espacio mientras hablas.")), 2.4);
    } else if (mode == Mode::write) {
        co_await dictate(transcript);
    } else {
        // Nobody is there yet to answer; a question is not to be typed.
        env_.state.hud.set(HUDPhase::hidden());
    }
}

Task<void> DictationController::dictate(std::string transcript) {
    auto result = co_await env_.writer.polish(makeRequest(transcript));
    co_await commit(std::move(result), std::move(transcript));
}

PolishRequest DictationController::makeRequest(std::string transcript) const {
    const Tone tone = env_.settings.adaptTone.get() ? context_.tone : Tone::neutral;
    return {.transcript = std::move(transcript),
            .appName = context_.displayName,
            .windowTitle = context_.windowTitle,
            .tone = tone,
            .signatureName = env_.settings.signatureName.get(),
            .screenshot = std::nullopt,
            .editableFocus = std::nullopt,
            .styleNotes = env_.settings.styleNotes.get(),
            .styleExamples = styleExamples(historyLabel(tone))};
}

std::vector<std::string> DictationController::styleExamples(std::string_view toneLabel) const {
    std::vector<std::string> examples;
    if (env_.history == nullptr) return examples;
    for (const auto& item : env_.history->items()) {
        if (item.kind == HistoryKind::dictado && item.meta.tone == toneLabel && item.meta.inserted == true &&
            text::length(item.answer) > shortestStyleExample) {
            examples.push_back(item.answer);
            if (examples.size() == styleExampleCount) break;
        }
    }
    return examples;
}

Task<void> DictationController::commit(PolishResult result, std::string transcript) {
    const bool nowhereToType = context_.hasEditableFocus == false;
    co_await env_.inserter.insertText(result.text, !nowhereToType);
    if (nowhereToType) {
        flash(HUDPhase::done(writtenIn("Escrito en %@ · también en el portapapeles (⌘V)", context_)), 2.4);
    } else {
        flash(HUDPhase::done(writtenIn("Escrito en %@", context_)), 1.6);
    }
    if (env_.history == nullptr) co_return;
    const Tone tone = env_.settings.adaptTone.get() ? context_.tone : Tone::neutral;
    env_.history->add(
        {.id = makeUuid(),
         .kind = HistoryKind::dictado,
         .app = context_.displayName,
         .bundleID = context_.bundleID,
         .title = result.title,
         .createdAt = startedAt_,
         .query = std::move(transcript),
         .answer = result.text,
         .meta = {.tone = std::string(historyLabel(tone)),
                  .engine = result.engine,
                  .inserted = true,
                  .durationMs = static_cast<std::int64_t>((env_.executor.date() - startedAt_) * 1000),
                  .source = "voz",
                  .context = std::nullopt,
                  .sources = std::nullopt}});
}

// The panel

void DictationController::reinsert(const HistoryItem& item) {
    const AppContext target = panelTarget;
    closePanel();
    tasks_.spawn(typeAgain(target, item.answer));
}

Task<void> DictationController::typeAgain(AppContext target, std::string answer) {
    if (target.app) {
        env_.workspace.activate(*target.app);
        co_await sleep(activationWait);
    }
    const std::string plain = text::replaceAll(text::replaceAll(answer, "**", ""), "`", "");
    co_await env_.inserter.insertText(plain, true);
    flash(HUDPhase::done(writtenIn("Escrito en %@", target)), 1.6);
}

void DictationController::sendComposer() {
    const std::string text(text::trim(env_.state.composerText.get()));
    if (text.empty() || env_.assistant == nullptr) return;
    if (env_.state.composerRecording.get()) {
        env_.state.composerRecording.set(false);
        env_.speech.cancel();
    }
    if (env_.state.composerScreen.get() && !env_.permissions.screen.get()) {
        env_.permissions.requestScreen();
        env_.permissions.refresh();
        return;
    }
    env_.state.composerText.set("");
    env_.state.section.set(PanelSection::todo);
    env_.state.query.set("");
    env_.state.selectedID.set(
        env_.assistant->askFromComposer(text, panelTarget, env_.state.composerScreen.get()));
}

void DictationController::toggleComposerMic() {
    if (env_.state.composerRecording.get()) {
        env_.state.composerRecording.set(false);
        tasks_.spawn(finishComposerRecording());
        return;
    }
    if (env_.settings.paused.get() || startTask_ || !mayUseMicrophone()) return;
    env_.state.composerRecording.set(true);
    tasks_.spawn(startComposerRecording());
}

Task<void> DictationController::startComposerRecording() {
    try {
        co_await env_.speech.start(env_.settings.language.get());
    } catch (...) {
        env_.state.composerRecording.set(false);
        flash(HUDPhase::error(localizedDescription(std::current_exception())), 3.0);
    }
}

Task<void> DictationController::finishComposerRecording() {
    const std::string transcript = co_await env_.speech.stop();
    if (!transcript.empty()) env_.state.composerText.set(join(env_.state.composerText.get(), transcript));
    env_.state.focusRequest.set(AppState::FocusTarget::composer);
}

}  // namespace dorix
