#pragma once

#include "base/Error.h"
#include "base/Observable.h"
#include "base/async/AsyncStream.h"
#include "base/async/Completion.h"
#include "base/async/Executor.h"
#include "base/async/TaskScope.h"
#include "base/async/Timer.h"
#include "platform/AudioEngine.h"
#include "platform/SpeechRecognition.h"
#include "speech/BufferClock.h"
#include "speech/SpeechInput.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace dorix {

/// Turns the microphone into text, one recording at a time, and repairs a microphone that dies or changes
/// meanwhile. Main executor only; nothing blocks. It may be destroyed at any time, also while recording:
/// whoever waits in stop gets the empty string, whoever waits in prepare or start gets Cancelled.
class SpeechEngine final : public SpeechInput {
 public:
    class EngineError;

    /// All three must outlive the engine.
    SpeechEngine(Executor& main, AudioEngineFactory& audioFactory, SpeechRecognition& recognition);
    ~SpeechEngine() override;
    SpeechEngine(const SpeechEngine&) = delete;
    SpeechEngine& operator=(const SpeechEngine&) = delete;

    /// Makes everything ready for a language but the microphone, so that a later start opens that at once.
    /// Throws EngineError, or what the installation of the model throws.
    Task<void> prepare(std::string language);

    /// Begins a recording; one that is running is cancelled. Returns when the recogniser listens, or early
    /// and without a word when the recording was cancelled or replaced meanwhile. Throws EngineError, or what
    /// the platform throws; the recording is cancelled then. Cancelling the waiting task cancels the
    /// recording.
    Task<void> start(std::string language) override;

    /// Ends the recording and gives its transcript once the recogniser is through with the sound. A
    /// recogniser that falls silent for 10 s, or needs 10 s more than the recording lasted, is not waited for
    /// any longer: what is known by then is given. The empty string when the recording is cancelled
    /// meanwhile. Never throws but Cancelled, when the waiting task is; the recording ends all the same.
    Task<std::string> stop() override;

    /// Ends the recording and drops it. Nothing to do when none runs.
    void cancel() override;

    bool isRunning() const { return isRunning_; }

    /// 0 to 1 while a model is being downloaded.
    Observable<std::optional<double>> downloadProgress;
    /// True once a language's model was found on this computer and usable; a hint for the views.
    Observable<bool> modelReady;

 private:
    enum class KeepHealth { no, yes };

    using Input = AsyncStream<AnalyzerInput>;

    struct TapTarget {
        AudioFormat format;
        Input continuation;
    };
    struct Prepared {
        std::string id;
        AudioFormat format;
    };
    struct Stopping {
        Completion<std::string> transcript;
        double deadline = 0;
        std::optional<TaskHandle<void>> task;
    };

    // The session: SpeechEngine.cpp
    Task<void> runPrepare(std::string language);
    Task<void> runStart(std::string language);
    void beginSession(const std::string& session);
    std::string localeFor(const std::string& language) const;
    Task<void> installAssets(std::string locale);
    Task<AudioFormat> usableFormat(std::string locale);
    Task<void> startAnalyzer(std::string locale, std::string session);
    Task<void> readResults(std::shared_ptr<SpeechAnalyzer> analyzer, std::string session);
    void takeResult(const TranscriptionResult& result);
    void beginStop();
    Task<void> finish(std::shared_ptr<SpeechAnalyzer> analyzer, std::optional<TaskHandle<void>> results,
                      std::string session);
    void awaitNextResult();
    void endStop();
    void finishInput();
    void clear();
    std::string transcript() const;

    // The microphone: SpeechEngineAudio.cpp
    void openAudio(AudioFormat format, Input continuation);
    void installTap(AudioFormat format, const Input& continuation);
    void closeAudio(KeepHealth keepHealth);
    void reopen(std::string_view reason);
    void checkHealth();

    Executor& main_;
    AudioEngineFactory& audioFactory_;
    SpeechRecognition& recognition_;

    BufferClock clock_;  // outlives the engine, whose tap sets it
    std::unique_ptr<AudioEngine> audio_;
    std::shared_ptr<void> opening_;  // gone when the microphone closes: levels on their way are late then
    std::optional<TapTarget> tapTarget_;
    Timer healthTimer_;
    int restarts_ = 0;
    bool audioLost_ = false;

    std::shared_ptr<SpeechAnalyzer> analyzer_;  // shared with the tasks that wait in it
    std::optional<Input> continuation_;
    std::optional<TaskHandle<void>> resultsTask_;
    std::string finalized_;
    std::string volatile_;
    bool isRunning_ = false;
    std::optional<std::string> session_;
    double startedAt_ = 0;
    std::optional<Prepared> prepared_;
    std::optional<Stopping> stopping_;
    Timer patience_;
    TaskScope scope_;
};

/// Why a recording cannot begin.
class SpeechEngine::EngineError : public Error {
 public:
    enum class Case { unsupportedLocale, noAudioFormat, microphoneUnavailable };

    static EngineError unsupportedLocale(std::string id) { return {Case::unsupportedLocale, std::move(id)}; }
    static EngineError noAudioFormat() { return {Case::noAudioFormat, {}}; }
    static EngineError microphoneUnavailable() { return {Case::microphoneUnavailable, {}}; }

    std::string localizedDescription() const override;
    const char* what() const noexcept override { return "SpeechEngine::EngineError"; }

    bool operator==(const EngineError& other) const { return kind_ == other.kind_ && id_ == other.id_; }

 private:
    EngineError(Case kind, std::string id) : kind_(kind), id_(std::move(id)) {}

    Case kind_;
    std::string id_;
};

}  // namespace dorix
