#pragma once

#include "base/Error.h"
#include "base/async/Completion.h"
#include "base/async/Executor.h"
#include "speech/SpeechInput.h"

#include <algorithm>
#include <exception>
#include <functional>
#include <string>
#include <vector>

namespace dorix {

/// Speech that the test makes up: what a recording gives is what `transcript` was when it was stopped.
class FakeSpeechInput final : public SpeechInput {
 public:
    explicit FakeSpeechInput(Executor& executor) : executor_(executor) {}

    std::string transcript;
    std::string startError;  // not empty: start fails with these words
    bool holdStart = false;  // start waits for `started`
    Completion<void> started;
    double lastWords = 0;    // seconds that the recogniser takes for each recording, one after another
    bool isOn = false;       // the microphone
    bool isGivenUp = false;  // the recogniser fails on what it was told
    bool hasGap = false;     // sound is missing from the recording that runs
    std::vector<std::string> log;
    std::function<void()> onStop = [] {};  // before a recording is stopped

    Task<void> start(std::string language) override {
        log.push_back("start " + language);
        const int recording = ++recording_;
        isOn = true;
        hasGap = false;
        partial.set("");
        level.set(0);
        if (holdStart) co_await started;
        if (startError.empty()) co_return;
        if (recording == recording_) isOn = false;
        throw MessageError(startError);
    }
    Task<std::string> stop() override {
        log.emplace_back("stop");
        if (isOn) onStop();
        const std::string said = isOn ? transcript : "";
        isOn = false;
        ++recording_;
        // Not even a fast recogniser answers inside the call.
        idleAt_ = std::max(idleAt_, executor_.now()) + lastWords;
        const Stopped stopped{.known = partial.get(), .words = {}};
        stopped_.push_back(stopped);
        executor_.after(idleAt_ - executor_.now(), [stopped, said, isGivenUp = isGivenUp] {
            if (!isGivenUp) stopped.words.complete(said);
            if (isGivenUp) stopped.words.fail(std::make_exception_ptr(RecognitionFailed(said, "no format")));
        });
        return wordsOf(stopped.words);
    }
    void cancel() override {
        log.emplace_back("cancel");
        ++recording_;
        isOn = false;
    }
    void hurry() override {
        for (const auto& stopped : stopped_) stopped.words.complete(stopped.known);
    }
    bool lacksSound() const override { return isOn && hasGap; }
    bool isBehind() const override { return isOn && executor_.now() < idleAt_; }

 private:
    struct Stopped {
        std::string known;
        Completion<std::string> words;
    };

    static Task<std::string> wordsOf(Completion<std::string> words) { co_return co_await words; }

    Executor& executor_;
    int recording_ = 0;
    double idleAt_ = 0;  // when the recogniser will be
    std::vector<Stopped> stopped_;
};

}  // namespace dorix
