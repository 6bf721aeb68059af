#include "fakes/FakeAudioEngine.h"

#include "base/Error.h"

#include <utility>

namespace dorix {

class FakeAudioEngineFactory::Engine final : public AudioEngine {
 public:
    explicit Engine(FakeAudioEngineFactory& factory) : factory_(factory), format_(factory.format) {}
    ~Engine() override {
        if (factory_.newest_ == this) factory_.newest_ = nullptr;
    }

    AudioFormat inputFormat() const override { return format_; }
    void installTap(std::size_t, AudioFormat, TapBlock block) override { tap_ = std::move(block); }
    void removeTap() override { tap_ = nullptr; }
    void onConfigurationChange(std::function<void()> observer) override { observer_ = std::move(observer); }
    void start() override {
        if (factory_.startError) throw MessageError(*factory_.startError);
        running_ = true;
    }
    void stop() override { running_ = false; }
    bool isRunning() const override { return running_; }

    FakeAudioEngineFactory& factory_;
    const AudioFormat format_;
    TapBlock tap_;
    std::function<void()> observer_;
    bool running_ = false;
};

std::unique_ptr<AudioEngine> FakeAudioEngineFactory::makeEngine() {
    ++opened;
    auto engine = std::make_unique<Engine>(*this);
    newest_ = engine.get();
    return engine;
}

bool FakeAudioEngineFactory::deliver(const std::vector<float>& samples) {
    if (!isRunning() || !newest_->tap_) return false;
    newest_->tap_({samples, newest_->format_});
    return true;
}

bool FakeAudioEngineFactory::changeConfiguration() {
    if (!newest_ || !newest_->observer_) return false;
    const auto observer = newest_->observer_;
    observer();
    return true;
}

bool FakeAudioEngineFactory::isRunning() const { return newest_ && newest_->running_; }

}  // namespace dorix
