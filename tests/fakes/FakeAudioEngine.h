#pragma once

#include "base/Error.h"
#include "platform/AudioEngine.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace dorix {

/// Sound inputs worked by hand: a test delivers buffers, changes the device and lets starts fail.
class FakeAudioEngineFactory final : public AudioEngineFactory {
 public:
    std::unique_ptr<AudioEngine> makeEngine() override {
        ++opened;
        auto engine = std::make_unique<Engine>(*this);
        newest_ = engine.get();
        return engine;
    }

    const Observable<std::vector<AudioInput>>& inputs() const override { return microphones; }
    void useInput(std::string id) override { used = std::move(id); }

    /// Hands sound to the tap of the engine that runs; false when none runs or none is tapped.
    bool deliver(const std::vector<float>& samples) {
        if (!isRunning() || !newest_->tap) return false;
        newest_->tap({samples, newest_->format});
        return true;
    }

    /// Tells the newest engine's observer; false when nobody observes.
    bool changeConfiguration() {
        if (!newest_ || !newest_->observer) return false;
        const auto observer = newest_->observer;
        observer();
        return true;
    }

    bool isRunning() const { return newest_ && newest_->running; }

    AudioFormat format{48000, 1};           // without channels there is no input
    std::optional<std::string> startError;  // the words that starts fail with
    Observable<std::vector<AudioInput>> microphones;
    std::string used;  // the input that was asked for
    int opened = 0;    // engines made until now

 private:
    struct Engine final : AudioEngine {
        explicit Engine(FakeAudioEngineFactory& maker) : factory(maker), format(maker.format) {}
        ~Engine() override {
            if (factory.newest_ == this) factory.newest_ = nullptr;
        }

        AudioFormat inputFormat() const override { return format; }
        void installTap(std::size_t, AudioFormat, TapBlock block) override { tap = std::move(block); }
        void removeTap() override { tap = nullptr; }
        void onConfigurationChange(std::function<void()> changed) override { observer = std::move(changed); }
        void start() override {
            if (factory.startError) throw MessageError(*factory.startError);
            running = true;
        }
        void stop() override { running = false; }
        bool isRunning() const override { return running; }

        FakeAudioEngineFactory& factory;
        const AudioFormat format;
        TapBlock tap;
        std::function<void()> observer;
        bool running = false;
    };
    Engine* newest_ = nullptr;
};

}  // namespace dorix
