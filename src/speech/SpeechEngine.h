#pragma once

#include "base/Error.h"
#include "base/Observable.h"
#include "base/async/Executor.h"
#include "base/async/TaskScope.h"
#include "base/async/Timer.h"
#include "platform/AudioEngine.h"
#include "platform/SpeechRecognition.h"
#include "speech/BufferClock.h"
#include "speech/SpeechInput.h"
#include "speech/SpeechSession.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

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
    /// recording. The recogniser gets to it when it is through with those before; see SpeechSession.
    Task<void> start(std::string language) override;

    /// Ends the recording and gives its transcript once the recogniser is through with the sound, or has made
    /// one wait too long. Throws RecognitionFailed, and Cancelled when the waiting task is; the recording
    /// ends all the same. Without a recording it gives the transcript of the last one.
    Task<std::string> stop() override;

    void cancel() override;
    void hurry() override;
    bool lacksSound() const override;
    bool isBehind() const override { return isRunning() && session_->isBehind(); }

    bool isRunning() const { return session_ && session_->isListening(); }

    /// Called when nothing recognises the language that was asked for, before that is thrown.
    std::function<void()> onUnsupportedLocale = [] {};

    /// 0 to 1 while a model is being downloaded.
    Observable<std::optional<double>> downloadProgress;
    /// True once a language's model was found on this computer and usable; a hint for the views.
    Observable<bool> modelReady;

 private:
    enum class KeepHealth { no, yes };

    struct TapTarget {
        AudioFormat format;
        SpeechSession::Input continuation;
    };
    struct Prepared {
        std::string id;
        AudioFormat format;
    };

    // The session: SpeechEngine.cpp
    Task<void> runPrepare(std::string language);
    Task<void> runStart(std::string language);
    std::shared_ptr<SpeechSession> beginSession();
    void abandon(SpeechSession& session);
    std::string localeFor(const std::string& language) const;
    Task<void> installAssets(std::string locale);
    Task<AudioFormat> usableFormat(std::string locale);

    // The microphone: SpeechEngineAudio.cpp
    void listen(SpeechSession& session, AudioFormat format);
    void openAudio(AudioFormat format, SpeechSession::Input continuation);
    void installTap(AudioFormat format, const SpeechSession::Input& continuation);
    void closeAudio(KeepHealth keepHealth);
    void reopen(std::string_view reason);
    void checkHealth();
    bool hasMicrophoneCome() const;
    double soundAge() const { return main_.now() - clock_.value(); }
    bool hasHeard() const { return hasHeard_ || clock_.value() > openedAt_; }

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
    double openedAt_ = 0;
    bool hasHeard_ = false;  // sound, in this recording, before the last opening
    bool hasGap_ = false;    // sound had arrived, stayed away and came again

    std::shared_ptr<SpeechSession> session_;  // the newest
    std::vector<std::shared_ptr<SpeechSession>>
        sessions_;  // in their order; those that are over go with the next
    int begun_ = 0;
    std::optional<Prepared> prepared_;
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
