#include "speech/SpeechEngine.h"

#include "base/Log.h"
#include "base/Uuid.h"
#include "localdata/Language.h"
#include "speech/Join.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace dorix {

namespace {
// A recogniser at work tells something every now and then. The second bound is for one that talks without
// end: it leaves a slow one the time that the recording took once more.
constexpr double resultPatience = 10;

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
      patience_(main),
      scope_(main) {}

SpeechEngine::~SpeechEngine() { cancel(); }

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
    if (isRunning_) cancel();
    const auto session = makeUuid();
    beginSession(session);
    try {
        // Known to work: listening begins before the rest is ready, and no word is lost.
        if (prepared_ && prepared_->id == language) openAudio(prepared_->format, *continuation_);
        const auto locale = localeFor(language);
        co_await installAssets(locale);
        if (session_ != session) co_return;
        const auto format = co_await usableFormat(locale);
        if (session_ != session) co_return;
        if (!tapTarget_ || tapTarget_->format != format) {
            closeAudio(KeepHealth::no);
            continuation_.emplace();  // what was heard so far is in the wrong format
            openAudio(format, *continuation_);
        }
        prepared_ = Prepared{language, format};
        co_await startAnalyzer(locale, session);
    } catch (...) {
        if (session_ == session) cancel();
        throw;
    }
}

void SpeechEngine::beginSession(const std::string& session) {
    session_ = session;
    isRunning_ = true;
    startedAt_ = main_.now();
    audioLost_ = false;
    finalized_.clear();
    volatile_.clear();
    continuation_.emplace();
    partial.set("");
    level.set(0);
}

std::string SpeechEngine::localeFor(const std::string& language) const {
    auto locale = recognition_.supportedLocale(language);
    if (!locale) throw EngineError::unsupportedLocale(language);
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

Task<void> SpeechEngine::startAnalyzer(std::string locale, std::string session) {
    const std::shared_ptr<SpeechAnalyzer> analyzer = recognition_.makeAnalyzer(locale);
    if (!analyzer) throw EngineError::noAudioFormat();
    analyzer_ = analyzer;
    resultsTask_ = scope_.spawn(readResults(analyzer, std::move(session)));
    co_await analyzer->start(*continuation_);
}

Task<void> SpeechEngine::readResults(std::shared_ptr<SpeechAnalyzer> analyzer, std::string session) {
    const auto results = analyzer->results();
    try {
        while (const auto result = co_await results.next()) {
            if (session_ != session) co_return;
            takeResult(*result);
        }
    } catch (const Cancelled&) {
        throw;
    } catch (...) {
        if (session_ != session) co_return;
        logLine("error de transcripción: " + localizedDescription(std::current_exception()));
    }
}

void SpeechEngine::takeResult(const TranscriptionResult& result) {
    if (result.isFinal) {
        finalized_ = join(finalized_, result.text);
        volatile_.clear();
    } else {
        volatile_ = result.text;
    }
    if (stopping_) awaitNextResult();
    partial.set(transcript());
}

Task<std::string> SpeechEngine::stop() {
    if (!isRunning_) co_return transcript();
    if (!stopping_) beginStop();
    // Without anything to wait for it is over already.
    if (!stopping_) co_return transcript();
    const auto transcript = stopping_->transcript;
    co_return co_await transcript;
}

void SpeechEngine::beginStop() {
    closeAudio(KeepHealth::no);
    finishInput();
    const double recorded = main_.now() - startedAt_;
    stopping_ = Stopping{.transcript = {}, .deadline = main_.now() + recorded + resultPatience, .task = {}};
    awaitNextResult();
    const auto task = scope_.spawn(finish(analyzer_, resultsTask_, *session_));
    if (stopping_) stopping_->task = task;
}

Task<void> SpeechEngine::finish(std::shared_ptr<SpeechAnalyzer> analyzer,
                                std::optional<TaskHandle<void>> results, std::string session) {
    try {
        if (analyzer) co_await analyzer->finalizeAndFinishThroughEndOfInput();
    } catch (const Cancelled&) {
        throw;
    } catch (...) {  // NOLINT(bugprone-empty-catch)
        // Nothing to do about it: what was recognised until here is the transcript.
    }
    if (results) co_await *results;
    if (session_ == session) endStop();
}

void SpeechEngine::awaitNextResult() {
    const double left = stopping_->deadline - main_.now();
    patience_.once(std::min(resultPatience, left), [this] { endStop(); });
}

void SpeechEngine::endStop() {
    const auto stopped = std::exchange(stopping_, std::nullopt);
    patience_.stop();
    if (stopped->task) stopped->task->cancel();
    if (resultsTask_) resultsTask_->cancel();
    clear();
    stopped->transcript.complete(transcript());
}

void SpeechEngine::cancel() {
    closeAudio(KeepHealth::no);
    finishInput();
    if (resultsTask_) resultsTask_->cancel();
    patience_.stop();
    const auto stopped = std::exchange(stopping_, std::nullopt);
    if (stopped && stopped->task) stopped->task->cancel();
    clear();
    if (stopped) stopped->transcript.complete();
}

void SpeechEngine::finishInput() {
    if (auto input = std::exchange(continuation_, std::nullopt)) input->finish();
}

void SpeechEngine::clear() {
    analyzer_.reset();
    resultsTask_.reset();
    session_.reset();
    isRunning_ = false;
}

std::string SpeechEngine::transcript() const { return join(finalized_, volatile_); }

}  // namespace dorix
