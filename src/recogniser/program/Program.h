#pragma once

#include "recogniser/Engine.h"
#include "recogniser/program/Channel.h"

#include <span>

namespace dorix::recogniser {

/// Puts the utterances that come over the channel through an engine, for ever. One thread.
class Program final : Results {
 public:
    /// Both outlive it.
    Program(Channel& channel, Engine& engine) : channel_(channel), engine_(engine) {}

    /// Throws what the engine throws.
    [[noreturn]] void run();

 private:
    enum class Outcome { finished, dropped };

    Outcome transcribe();
    /// False when the utterance was dropped.
    bool accept(std::span<const float> samples);
    void partial(const std::string& text) override { channel_.send({Frame::Kind::partial, text}); }
    void final(const std::string& text) override { channel_.send({Frame::Kind::final, text}); }

    Channel& channel_;
    Engine& engine_;
    std::uint64_t heard_ = 0;  // samples of the utterance
};

}  // namespace dorix::recogniser
