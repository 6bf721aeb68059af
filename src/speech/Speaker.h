#pragma once

#include "base/Observable.h"
#include "base/async/TaskScope.h"
#include "platform/LanguageRecognizer.h"
#include "platform/SpeechSynthesizer.h"

#include <cstdint>
#include <optional>
#include <string>

namespace dorix {

/// Reads one answer aloud at a time, in the language of its text. Where nothing can speak it is silent, and
/// the button is soon as it was. Main executor; nothing blocks and nothing throws.
class Speaker {
 public:
    /// Both of the system's outlive the speaker.
    Speaker(Executor& executor, SpeechSynthesizer& synthesizer, const LanguageRecognizer& languages);
    /// Falls silent.
    ~Speaker();
    Speaker(const Speaker&) = delete;
    Speaker& operator=(const Speaker&) = delete;

    /// What is being read; nothing when it is silent. Who offers to read something compares it with their own
    /// id.
    Observable<std::optional<std::string>> speakingID;

    /// Reads `text` in place of what is being read, or stops when that is the same `id`. `language` is the
    /// dictation language of the settings ("es-ES").
    void toggle(std::string text, std::string id, std::string language);

    /// At once.
    void stop();

 private:
    Task<void> speak(std::string text, std::string language, std::uint64_t number);
    void ended(std::uint64_t number);

    SpeechSynthesizer& synth_;
    const LanguageRecognizer& languages_;
    std::uint64_t newest_ = 0;  // of the utterances; what is told of any other came too late
    TaskScope tasks_;
};

}  // namespace dorix
