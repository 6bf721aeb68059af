#pragma once

#include "base/Error.h"

#include <span>
#include <string>

namespace dorix::recogniser {

/// Who hears what an engine understands; called inside the engine's calls.
class Results {
 public:
    virtual ~Results() = default;

    /// What is understood since the last final text. Replaces the partial text before it.
    virtual void partial(const std::string& text) = 0;
    /// Text that stands; the next partial text comes behind it.
    virtual void final(const std::string& text) = 0;
};

/// A failure that trying again does not mend, in words for the user: Spanish ones, which the program
/// translates.
class Refusal : public MessageError {
 public:
    using MessageError::MessageError;
};

/// A recogniser with its model loaded: one utterance after another is put through it. One thread; a call
/// takes as long as the computing takes. Any call but abandon may throw a std::exception: the process is
/// given up then.
class Engine {
 public:
    /// Of the sound: mono, this many samples a second, -1 to 1.
    static constexpr int sampleRate = 16000;

    virtual ~Engine() = default;

    /// `results` hears of the utterance until it is finished or abandoned.
    virtual void begin(Results& results) = 0;

    /// More sound, half a second at most, so that nobody waits long for the call. What an engine cannot use
    /// before the end it keeps.
    virtual void accept(std::span<const float> samples) = 0;

    /// That was all. When it returns everything understood has been told as final text.
    virtual void finish() = 0;

    /// Nobody wants the words. Also after a call that threw.
    virtual void abandon() noexcept = 0;
};

}  // namespace dorix::recogniser
