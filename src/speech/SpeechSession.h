#pragma once

#include "base/async/AsyncStream.h"
#include "base/async/Completion.h"
#include "base/async/TaskScope.h"
#include "base/async/Timer.h"
#include "platform/AudioEngine.h"
#include "platform/SpeechRecognition.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace dorix {

/// One recording as the recogniser has it, from its first sound to its last word. What is heard waits in it
/// until a recogniser takes it: while one is being made ready, and while it is at the recording before. That
/// wait is bounded by what the recording before may take; see finish. Main executor; it may be destroyed at
/// any time, which cancels it.
class SpeechSession {
 public:
    using Input = AsyncStream<AnalyzerInput>;

    /// `before` is the end of the recording that the recogniser is still at, if there is one. `onText` is
    /// told what has been understood so far whenever that changes, `onFailure` when the recogniser has given
    /// up while the recording still runs; it may finish the session.
    SpeechSession(Executor& main, std::optional<Completion<std::string>> before,
                  std::function<void(const std::string&)> onText, std::function<void()> onFailure);
    ~SpeechSession();
    SpeechSession(const SpeechSession&) = delete;
    SpeechSession& operator=(const SpeechSession&) = delete;

    /// Where the sound goes, and the format that it is in; none before the first.
    const Input& input() const { return input_; }
    std::optional<AudioFormat> soundFormat;
    /// What was heard so far is of no use; more goes to a new input().
    void dropSound();

    /// Begins to take the sound. Throws what the analyzer throws.
    Task<void> transcribe(std::shared_ptr<SpeechAnalyzer> analyzer);

    /// No more sound comes. The words are there when the recogniser is through, which some minutes after the
    /// recording before is through counts as having failed.
    void finish();
    /// What is known now are the words.
    void giveUp();
    /// Nothing of it is wanted; its words are the empty string.
    void cancel();

    /// Whether sound is still wished for.
    bool isListening() const { return !isFinishing_ && !isOver(); }
    bool isOver() const { return words_.isDone(); }
    /// Whether the recogniser still is at the recording before.
    bool isBehind() const { return before_ && !before_->isDone(); }

    /// All that was said, when it is over; fails with RecognitionFailed when the recogniser did.
    Completion<std::string> words() const { return words_; }

 private:
    Task<void> readResults(std::shared_ptr<SpeechAnalyzer> analyzer);
    void takeResult(const TranscriptionResult& result);
    Task<void> runFinish();
    void end(const std::string& words);
    void fail(const std::string& message);
    void settle(bool isNews);
    std::string understood() const;

    Executor& main_;
    const std::optional<Completion<std::string>> before_;
    const std::function<void(const std::string&)> onText_;
    const std::function<void()> onFailure_;
    const double startedAt_ = main_.now();
    Input input_;
    std::shared_ptr<SpeechAnalyzer> analyzer_;  // shared with the tasks that wait in it
    Completion<void> isTranscribing_;
    std::string finalized_;
    std::string volatile_;
    bool isFinishing_ = false;
    std::optional<std::string> failure_;  // of the recogniser
    double recorded_ = 0;                 // seconds
    Timer patience_;
    const Completion<std::string> words_;
    std::optional<TaskHandle<void>> results_;
    std::optional<TaskHandle<void>> finish_;
    TaskScope tasks_;
};

}  // namespace dorix
