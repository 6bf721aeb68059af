#include "speech/SpeechEngine.h"

#include "localdata/Language.h"

#include <exception>
#include <utility>

namespace dorix {

namespace {
Task<std::string> wordsOf(Completion<std::string> words) { co_return co_await words; }

/// Stops a task with the frame that waits for it, so that cancelling the one cancels the other.
struct StopTogether {
    TaskHandle<void> task;
    ~StopTogether() {
        if (!task.isDone()) task.cancel();
    }
};
}  // namespace

std::string SpeechEngine::EngineError::localizedDescription() const {
    switch (kind_) {
        case Case::unsupportedLocale:
            return formatText(tr("El idioma %@ no está disponible para el dictado en este Mac."), {id_});
        case Case::noAudioFormat:
            return tr("No se pudo preparar el formato de audio.");
        case Case::microphoneUnavailable:
            return tr("No hay micrófono disponible.");
    }
    return {};
}

SpeechEngine::SpeechEngine(Executor& main, AudioEngineFactory& audioFactory, SpeechRecognition& recognition)
    : main_(main),
      audioFactory_(audioFactory),
      recognition_(recognition),
      clock_(main.now()),
      healthTimer_(main),
      scope_(main) {}

SpeechEngine::~SpeechEngine() { closeAudio(KeepHealth::no); }

// The work runs in the engine's own scope, so that nothing of it is left when the engine goes; the frames
// here, which belong to the callers, do not touch the engine after their wait.

Task<void> SpeechEngine::prepare(std::string language) {
    const StopTogether work{scope_.spawn(runPrepare(std::move(language)))};
    co_await work.task;
}

Task<void> SpeechEngine::start(std::string language) {
    const StopTogether work{scope_.spawn(runStart(std::move(language)))};
    co_await work.task;
}

Task<void> SpeechEngine::runPrepare(std::string language) {
    const auto locale = localeFor(language);
    co_await installAssets(locale);
    const auto format = co_await usableFormat(locale);
    prepared_ = Prepared{language, format};
}

Task<void> SpeechEngine::runStart(std::string language) {
    cancel();
    const auto session = beginSession();
    try {
        // Known to work: listening begins before the rest is ready, and no word is lost.
        if (prepared_ && prepared_->id == language) listen(*session, prepared_->format);
        const auto locale = localeFor(language);
        if (const auto known = recognition_.knownFormat(locale)) listen(*session, *known);
        co_await installAssets(locale);
        if (session->isOver()) co_return;
        const auto format = co_await usableFormat(locale);
        if (session->isOver()) co_return;
        listen(*session, format);
        prepared_ = Prepared{language, format};
        std::shared_ptr<SpeechAnalyzer> analyzer = recognition_.makeAnalyzer(locale);
        if (!analyzer) throw EngineError::noAudioFormat();
        co_await session->transcribe(std::move(analyzer));
    } catch (...) {
        abandon(*session);
        throw;
    }
}

std::shared_ptr<SpeechSession> SpeechEngine::beginSession() {
    std::erase_if(sessions_, [](const auto& session) { return session->isOver(); });
    std::optional<Completion<std::string>> before;
    if (!sessions_.empty()) before = sessions_.back()->words();
    const auto number = ++begun_;
    const auto told = [this, number](const std::string& text) {
        if (number == begun_) partial.set(text);
    };
    const auto failed = [this, number] {
        // A copy: the callback may replace it.
        const auto tell = number == begun_ ? onRecognitionFailed : nullptr;
        if (tell) tell();
    };
    session_ = std::make_shared<SpeechSession>(main_, before, told, failed);
    sessions_.push_back(session_);
    audioLost_ = hasHeard_ = hasGap_ = false;
    openedAt_ = main_.now();
    clock_.set(openedAt_);
    partial.set("");
    level.set(0);
    return session_;
}

void SpeechEngine::abandon(SpeechSession& session) {
    if (&session == session_.get()) cancel();
    session.cancel();
}

std::string SpeechEngine::localeFor(const std::string& language) const {
    auto locale = recognition_.supportedLocale(language);
    if (!locale) {
        onUnsupportedLocale();
        throw EngineError::unsupportedLocale(language);
    }
    return *std::move(locale);
}

Task<void> SpeechEngine::installAssets(std::string locale) {
    const auto status = recognition_.assetStatus(locale);
    // Nothing can be requested for an unsupported one; there is no format for it either.
    if (status == SpeechRecognition::AssetStatus::installed ||
        status == SpeechRecognition::AssetStatus::unsupported) {
        co_return;
    }
    downloadProgress.set(0.0);
    const auto observation = std::make_shared<bool>(true);
    const auto report = [this, watching = std::weak_ptr(observation)](double fraction) {
        if (!watching.expired()) downloadProgress.set(fraction);
    };
    std::exception_ptr failure;
    try {
        co_await recognition_.downloadAndInstall(locale, report);
    } catch (...) {
        failure = std::current_exception();
    }
    downloadProgress.set(std::nullopt);
    if (failure) std::rethrow_exception(failure);
}

Task<AudioFormat> SpeechEngine::usableFormat(std::string locale) {
    const auto format = co_await recognition_.bestAvailableAudioFormat(locale);
    if (!format || format->sampleRate <= 0 || format->channelCount <= 0) throw EngineError::noAudioFormat();
    modelReady.set(true);
    co_return *format;
}

Task<std::string> SpeechEngine::stop() {
    if (!session_) {
        const Completion<std::string> nothing;
        nothing.complete();
        return wordsOf(nothing);
    }
    if (isRunning()) {
        closeAudio(KeepHealth::no);
        session_->finish();
    }
    return wordsOf(session_->words());
}

void SpeechEngine::cancel() {
    if (!isRunning()) return;
    closeAudio(KeepHealth::no);
    session_->cancel();
}

void SpeechEngine::hurry() {
    for (const auto& session : sessions_) {
        if (!session->isListening()) session->giveUp();
    }
}

}  // namespace dorix
