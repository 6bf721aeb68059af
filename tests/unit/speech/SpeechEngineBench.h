#pragma once

#include "base/async/ManualExecutor.h"
#include "fakes/FakeAudioEngine.h"
#include "fakes/FakeSpeechRecognition.h"
#include "fakes/Outcome.h"
#include "speech/SpeechEngine.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace dorix {

/// A speech engine with a made-up microphone and recogniser, in virtual time.
class SpeechEngineBench : public testing::Test {
 protected:
    SpeechEngineBench() { makeEngine(); }

    void makeEngine() {
        engine = std::make_unique<SpeechEngine>(executor, audio, recognition);
        engine->onAudioLost = [this] { ++lost; };
    }

    TaskHandle<void> start(const std::string& language = "en") {
        auto handle = scope.spawn(engine->start(language));
        executor.runPosted();
        return handle;
    }
    TaskHandle<std::string> stop() {
        auto handle = scope.spawn(engine->stop());
        executor.runPosted();
        return handle;
    }
    void prepare(const std::string& language = "en") {
        const auto handle = scope.spawn(engine->prepare(language));
        executor.runPosted();
        ASSERT_TRUE(handle.isDone());
    }
    /// What is logged while `function` runs.
    static std::string logOf(auto function) {
        testing::internal::CaptureStderr();
        function();
        return testing::internal::GetCapturedStderr();
    }

    template <typename T>
    std::string outcome(const TaskHandle<T>& task) {
        return dorix::outcome(executor, task);
    }

    /// Lets time pass while the microphone delivers sound ten times a second.
    void hear(double seconds) {
        for (double until = executor.now() + seconds; executor.now() < until;) {
            EXPECT_TRUE(audio.deliver(std::vector<float>(480, 0.5F)));
            executor.advanceBy(0.1);
        }
    }

    ManualExecutor executor;
    FakeAudioEngineFactory audio;
    FakeSpeechRecognition recognition;
    std::unique_ptr<SpeechEngine> engine;
    int lost = 0;
    TaskScope scope{executor};
};

}  // namespace dorix
