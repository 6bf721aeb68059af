#include "speech/SpokenText.h"

#include "base/text/Regex.h"
#include "base/text/Text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <utility>

namespace dorix {

namespace {

constexpr std::size_t sampleLength = 1500;  // characters
constexpr double certainEnough = 0.5;

constexpr std::array<std::pair<std::string_view, std::string_view>, 7> regions{{{"es", "es-ES"},
                                                                                {"en", "en-US"},
                                                                                {"fr", "fr-FR"},
                                                                                {"it", "it-IT"},
                                                                                {"de", "de-DE"},
                                                                                {"pt", "pt-PT"},
                                                                                {"ca", "ca-ES"}}};

constexpr std::array<std::string_view, 8> noveltyVoices{"Eddy", "Flo",   "Grandma", "Grandpa",
                                                        "Reed", "Rocko", "Sandy",   "Shelley"};

/// The second half steps over a gap that no bullet follows: or else each line of a long one would go
/// through all that is left of it.
const Regex& bullet() {
    static const Regex pattern(R"((?m)^(?:\s*[-•]\s+|(\s+)))");
    return pattern;
}

std::string regional(const std::string& code) {
    const auto* const found = std::ranges::find(regions, code, &decltype(regions)::value_type::first);
    return found == regions.end() ? code : std::string(found->second);
}

bool isNovelty(const SpeechSynthesisVoice& voice) {
    return std::ranges::find(noveltyVoices, voice.name) != noveltyVoices.end();
}

}  // namespace

std::string spokenText(std::string_view text) {
    const auto plain = text::replaceAll(text::replaceAll(text, "**", ""), "`", "");
    return bullet().replaceAll(plain, "$1");
}

std::string_view languageSample(std::string_view spoken) { return text::prefix(spoken, sampleLength); }

std::string languageFor(const std::optional<LanguageHypothesis>& detected, const std::string& language,
                        const std::string& appLanguage) {
    const auto own = text::lowercase(language);
    if (detected && detected->confidence > certainEnough) {
        const auto code = text::lowercase(text::prefix(detected->code, 2));
        if (!code.empty()) return own.starts_with(code) ? language : regional(code);
    }
    if (own.starts_with(appLanguage)) return language;
    return appLanguage == "en" ? "en-US" : "es-ES";
}

std::optional<SpeechSynthesisVoice> voiceFor(std::vector<SpeechSynthesisVoice> voices,
                                             const std::string& language) {
    const auto code = text::prefix(language, 2);
    std::erase_if(voices, [&](const auto& voice) { return !voice.language.starts_with(code); });
    const auto isExact = [&](const auto& voice) { return voice.language == language; };
    if (std::ranges::any_of(voices, isExact)) std::erase_if(voices, std::not_fn(isExact));
    std::erase_if(voices, isNovelty);
    const auto best = std::ranges::max_element(voices, {}, &SpeechSynthesisVoice::quality);
    if (best == voices.end()) return std::nullopt;
    return *best;
}

}  // namespace dorix
