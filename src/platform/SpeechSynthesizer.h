#pragma once

#include "base/async/Task.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

/// A voice that the system can read aloud with.
struct SpeechSynthesisVoice {
    std::string name;        // for people; also what joke voices are known by
    std::string identifier;  // by which the system finds it again
    std::string language;    // BCP 47, "es-ES"
    int quality = 1;         // the higher the better; 1 where the system does not tell

    bool operator==(const SpeechSynthesisVoice&) const = default;
};

/// The rate that the user's system reads at; twice as much takes half the time.
inline constexpr double defaultSpeechRate = 0.5;

/// Something to be read aloud.
struct SpeechUtterance {
    std::uint64_t number = 0;  // of the caller's own, to tell utterances apart by
    std::string text;          // plain, of any length; nothing in it is a command to the voice
    std::string language;      // BCP 47
    std::optional<SpeechSynthesisVoice> voice;  // the system's choice for the language where it is absent
    double rate = defaultSpeechRate;
};

/// The system's reading voice. Main executor; nothing blocks and nothing throws.
class SpeechSynthesizer {
 public:
    virtual ~SpeechSynthesizer() = default;

    /// The voices, in the order of the system's preference; none where nothing can speak.
    virtual Task<std::vector<SpeechSynthesisVoice>> speechVoices() = 0;

    /// Reads aloud, in place of what is being read.
    virtual void speak(SpeechUtterance utterance) = 0;

    /// At once, in the middle of a word. Nothing is told of the utterance any more.
    virtual void stopSpeaking() = 0;

    /// Told, with its number, when an utterance was read to its end, or came to an end before because nothing
    /// can speak (any more); this may be within `speak`. One who goes takes the functions away again.
    std::function<void(std::uint64_t utterance)> onFinish;
    std::function<void(std::uint64_t utterance)> onCancel;
};

/// Where there is no voice.
class UnavailableSpeechSynthesizer final : public SpeechSynthesizer {
 public:
    Task<std::vector<SpeechSynthesisVoice>> speechVoices() override { co_return {}; }
    void speak(SpeechUtterance utterance) override {
        if (onCancel) onCancel(utterance.number);
    }
    void stopSpeaking() override {}
};

}  // namespace dorix
