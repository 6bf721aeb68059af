#pragma once

#include "base/Error.h"
#include "base/async/Completion.h"
#include "base/async/Sleep.h"
#include "speech/SpeechInput.h"

#include <string>
#include <vector>

namespace dorix {

/// Speech that the test makes up: what stop() gives is `transcript`, unless another recording, or cancel(),
/// comes between.
class FakeSpeechInput final : public SpeechInput {
 public:
    std::string transcript;
    std::string startError;  // not empty: start fails with these words
    bool holdStart = false;  // start waits for `started`
    Completion<void> started;
    double lastWords = 0;  // seconds that the recogniser takes to stop
    bool isOn = false;     // the microphone
    std::vector<std::string> log;

    Task<void> start(std::string language) override {
        log.push_back("start " + language);
        ++recording_;
        isOn = true;
        partial.set("");
        level.set(0);
        if (holdStart) co_await started;
        if (startError.empty()) co_return;
        isOn = false;
        throw MessageError(startError);
    }
    Task<std::string> stop() override {
        log.emplace_back("stop");
        isOn = false;
        const int recording = recording_;
        co_await sleep(lastWords);  // not even a fast recogniser answers inside the call
        co_return recording == recording_ ? transcript : "";
    }
    void cancel() override {
        log.emplace_back("cancel");
        ++recording_;
        isOn = false;
    }

 private:
    int recording_ = 0;
};

}  // namespace dorix
