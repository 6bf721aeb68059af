#pragma once

#include "base/Error.h"
#include "base/async/Completion.h"
#include "base/async/Sleep.h"
#include "speech/SpeechInput.h"

#include <string>
#include <vector>

namespace dorix {

/// Speech that the test makes up: what stop() gives is `transcript`.
class FakeSpeechInput final : public SpeechInput {
 public:
    std::string transcript;
    std::string startError;  // not empty: start fails with these words
    bool holdStart = false;  // start waits for `started`
    Completion<void> started;
    std::vector<std::string> log;

    Task<void> start(std::string language) override {
        log.push_back("start " + language);
        partial.set("");
        level.set(0);
        if (holdStart) co_await started;
        if (!startError.empty()) throw MessageError(startError);
    }
    Task<std::string> stop() override {
        log.emplace_back("stop");
        co_await sleep(0);  // no recogniser answers inside the call
        co_return transcript;
    }
    void cancel() override { log.emplace_back("cancel"); }
};

}  // namespace dorix
