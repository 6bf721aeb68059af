#pragma once

#include "base/Observable.h"
#include "base/async/TaskScope.h"
#include "base/async/Timer.h"
#include "platform/AudioEngine.h"
#include "speech/SpeechInput.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace dorix {

/// "Say something": how loud the microphone hears, and what is understood of it. It goes on until the user
/// ends it, somebody else wants the microphone, or nobody has ended it for long. What was said goes nowhere.
/// Main executor.
class MicrophoneTest {
 public:
    static constexpr double longestTest = 60;  // seconds

    /// All must outlive it.
    MicrophoneTest(Executor& executor, SpeechInput& speech, AudioEngineFactory& audio);
    ~MicrophoneTest();
    MicrophoneTest(const MicrophoneTest&) = delete;
    MicrophoneTest& operator=(const MicrophoneTest&) = delete;

    /// Whether a test may begin: nobody else listens.
    std::function<bool()> mayListen = [] { return true; };

    Observable<bool> isRunning;
    Observable<float> level;
    /// What is understood, also for a while after the end.
    Observable<std::string> heard;
    /// Why nothing is understood, for the user.
    Observable<std::string> failure;

    /// Listens in the language with this id. Where nothing understands that, the level shows all the same.
    void start(const std::string& language);
    /// The user has said enough: the last words are still to come.
    void finish();
    /// Lets go of the microphone inside the call, and says no more.
    void end();
    /// The same, and what was heard is forgotten.
    void forget();

 private:
    Task<void> listen(std::string language, int run);
    Task<void> takeWords(Task<std::string> words, int run);
    void openLevel();
    void stopped();

    SpeechInput& speech_;
    AudioEngineFactory& audio_;
    int run_ = 0;  // the newest
    bool isUnderstanding_ = false;
    std::vector<Subscription> following_;
    std::unique_ptr<AudioEngine> engine_;  // where nothing understands the language
    std::shared_ptr<void> opening_;        // gone when that is closed
    Timer limit_;
    TaskScope tasks_;
};

}  // namespace dorix
