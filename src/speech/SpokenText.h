#pragma once

#include "platform/LanguageRecognizer.h"
#include "platform/SpeechSynthesizer.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What of an answer is read aloud, and in which voice. Pure functions, any thread.
namespace dorix {

/// The text without its mark-up, which is not to be read: stars, code marks, the bullets of lists.
std::string spokenText(std::string_view text);

/// The beginning of a text without mark-up, by which its language is told.
std::string_view languageSample(std::string_view spoken);

/// The language to read in (BCP 47). `language` is the dictation language of the settings, which counts where
/// it is a variant of what was detected, and where that is not certain enough. `appLanguage` is "es" or "en".
std::string languageFor(const std::optional<LanguageHypothesis>& detected, const std::string& language,
                        const std::string& appLanguage);

/// The best of the voices for a language, no joke voice; none where there is none.
std::optional<SpeechSynthesisVoice> voiceFor(std::vector<SpeechSynthesisVoice> voices,
                                             const std::string& language);

}  // namespace dorix
