#pragma once

#include "base/Log.h"
#include "base/async/ManualExecutor.h"
#include "fakes/FakeAudioEngine.h"
#include "fakes/FakeSpeechRecognition.h"
#include "speech/SpeechEngine.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace dorix {

/// Log lines of one test at a time; the sink itself can be set only once.
inline std::vector<std::string>& loggedLines() {
    static std::vector<std::string> lines;
    static const bool installed = [] {
        setLogSink([](std::string_view line) { lines.emplace_back(line); });
        return true;
    }();
    static_cast<void>(installed);
    return lines;
}

/// A speech engine with a made-up microphone and recogniser, in virtual time.
class SpeechEngineBench : public testing::Test {
 protected:
    SpeechEngineBench() {
        loggedLines().clear();
        makeEngine();
    }

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

    /// What a task gave, "(done)" where that is nothing; "(pending)" when it has not ended.
    template <typename T>
    std::string outcome(const TaskHandle<T>& handle) {
        std::string into = "(pending)";
        TaskScope watching(executor);
        watching.spawn(note(handle, into));
        executor.runPosted();
        return into;
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

 private:
    template <typename T>
    static Task<void> note(TaskHandle<T> handle, std::string& into) {
        try {
            if constexpr (std::is_void_v<T>) {
                co_await handle;
                into = "(done)";
            } else {
                into = co_await handle;
            }
        } catch (const Cancelled&) {
            into = "(cancelled)";
        } catch (...) {
            into = localizedDescription(std::current_exception());
        }
    }
};

}  // namespace dorix
