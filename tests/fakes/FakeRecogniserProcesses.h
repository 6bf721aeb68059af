#pragma once

#include "base/async/Executor.h"
#include "platform/HelperProcess.h"
#include "recognition/Frames.h"
#include "recognition/ModelRequest.h"

#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace dorix {

/// Recognisers that hear a number in each tenth of a second of sound: its first sample, times 1000. They fail
/// when a test tells them to.
class FakeRecogniserProcesses final : public HelperProcesses {
 public:
    static constexpr std::size_t wordSamples = 1600;

    enum class Fault { dies, hangs, babbles };

    explicit FakeRecogniserProcesses(Executor& main) : main_(main) {}

    bool isInstalled(const std::string&) const override { return isThere; }
    std::unique_ptr<HelperProcess> launch(const std::string&, Listener listener) override {
        ++launches;
        if (!isThere) return nullptr;
        return std::make_unique<Process>(*this, std::move(listener));
    }

    /// Those that run are killed.
    void dieAll() {
        for (auto* process : std::vector(alive_)) process->die();
    }

    bool isThere = true;
    std::optional<std::string> refusal;
    /// A process fails once it has worked on so many samples; 0: instead of loading.
    std::vector<std::pair<std::uint64_t, Fault>> faults;  // of the processes to come, in their order
    int launches = 0;
    int running = 0;
    std::vector<ModelRequest> opened;

 private:
    class Process final : public HelperProcess {
     public:
        Process(FakeRecogniserProcesses& all, Listener listener) : all_(all), listener_(std::move(listener)) {
            ++all_.running;
            all_.alive_.push_back(this);
            if (all_.faults.empty()) return;
            fault_ = all_.faults.front();
            all_.faults.erase(all_.faults.begin());
        }
        ~Process() override {
            --all_.running;
            std::erase(all_.alive_, this);
        }

        void die() {
            fault_ = {0, Fault::dies};
            fail();
        }

        void send(std::string bytes) override {
            reader_.take(bytes);
            while (const auto frame = reader_.next()) {
                if (!hasFailed_) take(*frame);
            }
        }

     private:
        void take(const Frame& frame) {
            switch (frame.kind) {
                case Frame::Kind::open:
                    all_.opened.push_back(modelRequestIn(frame.body).value());
                    if (fault_ && fault_->first == 0) return fail();
                    return all_.refusal ? say(Frame::Kind::refused, *all_.refusal) : say(Frame::Kind::ready);
                case Frame::Kind::begin:
                    sound_.clear();
                    isOpen_ = true;
                    return;
                case Frame::Kind::audio:
                    return hear(samplesIn(frame.body).value());
                case Frame::Kind::finish:
                    say(Frame::Kind::final, words());
                    [[fallthrough]];
                case Frame::Kind::drop:
                    if (std::exchange(isOpen_, false)) say(Frame::Kind::done);
                    return;
                default:
                    return;
            }
        }

        void hear(const std::vector<float>& samples) {
            sound_.insert(sound_.end(), samples.begin(), samples.end());
            worked_ += samples.size();
            if (fault_ && worked_ >= fault_->first) return fail();
            say(Frame::Kind::heard, encodedCount(sound_.size()));
            say(Frame::Kind::partial, words());
        }

        void fail() {
            hasFailed_ = true;
            if (fault_->second == Fault::dies) later([this] { std::function(listener_.onEnd)("señal 9"); });
            if (fault_->second == Fault::babbles)
                later([this] { std::function(listener_.onBytes)(std::string(100, '\xff')); });
        }

        std::string words() const {
            std::string words;
            for (std::size_t at = 0; at + wordSamples <= sound_.size(); at += wordSamples)
                words += (words.empty() ? "" : " ") + std::to_string(std::lround(sound_[at] * 1000));
            return words;
        }

        void say(Frame::Kind kind, const std::string& body = {}) {
            later([this, bytes = encoded({kind, body})] { std::function(listener_.onBytes)(bytes); });
        }
        void later(std::function<void()> function) {
            all_.main_.post([life = std::weak_ptr(life_), function = std::move(function)] {
                if (!life.expired()) function();
            });
        }

        FakeRecogniserProcesses& all_;
        const Listener listener_;
        std::optional<std::pair<std::uint64_t, Fault>> fault_;
        bool hasFailed_ = false;
        bool isOpen_ = false;  // an utterance
        FrameReader reader_;
        std::vector<float> sound_;
        std::uint64_t worked_ = 0;
        const std::shared_ptr<bool> life_ = std::make_shared<bool>();
    };

    Executor& main_;
    std::vector<Process*> alive_;
};

}  // namespace dorix
