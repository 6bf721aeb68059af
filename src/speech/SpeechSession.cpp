#include "speech/SpeechSession.h"

#include "base/Error.h"
#include "base/Log.h"
#include "localdata/Language.h"
#include "speech/Join.h"
#include "speech/SpeechInput.h"

#include <exception>
#include <utility>

namespace dorix {

namespace {
// A recogniser ends by itself, or is given up by whoever runs it. This is for one that does neither: it
// leaves a slow one the time to hear the recording twice, and a server to be asked twice.
constexpr double patienceAtEnd = 120;
constexpr double patiencePerSecond = 4;

Task<void> endOf(Completion<std::string> words) {
    try {
        co_await words;
    } catch (const SpeechInput::RecognitionFailed&) {  // NOLINT(bugprone-empty-catch)
        // It is over, too.
    }
}
}  // namespace

SpeechSession::SpeechSession(Executor& main, std::optional<Completion<std::string>> before,
                             std::function<void(const std::string&)> onText, std::function<void()> onFailure)
    : main_(main),
      before_(std::move(before)),
      onText_(std::move(onText)),
      onFailure_(std::move(onFailure)),
      patience_(main),
      tasks_(main) {}

SpeechSession::~SpeechSession() { cancel(); }

void SpeechSession::dropSound() {
    input_.finish();
    input_ = Input();
    if (!isListening()) input_.finish();
}

Task<void> SpeechSession::transcribe(std::shared_ptr<SpeechAnalyzer> analyzer) {
    analyzer_ = analyzer;
    results_ = tasks_.spawn(readResults(analyzer));
    co_await analyzer->start(input_);
    isTranscribing_.complete();
}

Task<void> SpeechSession::readResults(std::shared_ptr<SpeechAnalyzer> analyzer) {
    const auto results = analyzer->results();
    try {
        while (const auto result = co_await results.next()) {
            if (isOver()) co_return;
            takeResult(*result);
        }
    } catch (const Cancelled&) {
        throw;
    } catch (...) {
        if (isOver()) co_return;
        failure_ = localizedDescription(std::current_exception());
        logLine("error de transcripción: " + describedIn(LogLanguage::spanish, std::current_exception()));
        if (isListening()) onFailure_();
    }
}

void SpeechSession::takeResult(const TranscriptionResult& result) {
    if (result.isFinal) {
        finalized_ = join(finalized_, result.text);
        volatile_.clear();
    } else {
        volatile_ = result.text;
    }
    onText_(understood());
}

void SpeechSession::finish() {
    if (!isListening()) return;
    isFinishing_ = true;
    recorded_ = main_.now() - startedAt_;
    input_.finish();
    finish_ = tasks_.spawn(runFinish());
}

Task<void> SpeechSession::runFinish() {
    co_await isTranscribing_;
    if (before_) co_await endOf(*before_);
    patience_.once(patienceAtEnd + patiencePerSecond * recorded_,
                   [this] { fail(tr("No se pudo preparar el formato de audio.")); });
    const auto analyzer = analyzer_;
    try {
        co_await analyzer->finalizeAndFinishThroughEndOfInput();
    } catch (const Cancelled&) {
        throw;
    } catch (...) {  // NOLINT(bugprone-empty-catch)
        // Nothing to do about it: what was recognised until here is the transcript.
    }
    const auto results = *results_;
    co_await results;
    failure_ ? fail(*failure_) : end(understood());
}

void SpeechSession::giveUp() {
    input_.finish();
    end(understood());
}

void SpeechSession::cancel() {
    input_.finish();
    end({});
}

void SpeechSession::end(const std::string& words) { settle(words_.complete(words)); }

void SpeechSession::fail(const std::string& message) {
    input_.finish();
    const SpeechInput::RecognitionFailed error(understood(), message);
    settle(words_.fail(std::make_exception_ptr(error)));
}

void SpeechSession::settle(bool isNews) {
    if (!isNews) return;
    patience_.stop();
    if (results_) results_->cancel();
    if (finish_) finish_->cancel();
    analyzer_.reset();
}

std::string SpeechSession::understood() const { return join(finalized_, volatile_); }

}  // namespace dorix
