#include "service/ai/Language.h"

#include "base/text/Text.h"

#include <algorithm>
#include <array>
#include <span>
#include <string>

namespace dorix::service {

namespace {

constexpr std::size_t examinedBytes = 4'000;

// Words that the other language does not have, or hardly.
constexpr auto spanishWords = std::to_array<std::string_view>({
    "al",    "ayer",  "bueno", "como",   "con",   "cual",   "cuando", "de",   "del",  "donde", "el",
    "ella",  "en",    "es",    "esta",   "este",  "esto",   "gracias", "hay", "hola", "hoy",   "la",
    "las",   "le",    "lo",    "los",    "manana", "mas",   "mi",     "muy",  "para", "pero",  "pon",
    "por",   "porque", "pues", "que",    "quien", "resume", "se",     "si",   "sin",  "sobre", "su",
    "tambien", "te",  "tiene", "tu",     "un",    "una",    "unos",   "y",    "ya",   "yo",
});
constexpr auto englishWords = std::to_array<std::string_view>({
    "about", "all",  "an",   "and",  "are",  "at",    "be",    "but",   "by",    "can",  "did",  "do",
    "does",  "for",  "from", "have", "hello", "hi",   "how",   "i",     "in",    "is",   "it",   "my",
    "not",   "of",   "on",   "or",   "our",  "please", "she",  "that",  "the",   "their", "this", "to",
    "was",   "we",   "were", "what", "when", "where", "which", "who",   "why",   "will", "with", "you",
    "your",
});

bool isAmong(std::string_view word, std::span<const std::string_view> words) {
    return std::ranges::binary_search(words, word);
}

}  // namespace

std::optional<Language> languageNamed(std::string_view tag) {
    const auto name = tag.substr(0, tag.find_first_of("-_"));
    if (name == "es") return Language::spanish;
    if (name == "en") return Language::english;
    return std::nullopt;
}

std::optional<Language> languageOf(std::string_view text) {
    const auto beginning = text::lowercase(text.substr(0, examinedBytes));
    int spanish = beginning.find("¿") != std::string::npos || beginning.find("¡") != std::string::npos ? 2 : 0;
    if (beginning.find("ñ") != std::string::npos) ++spanish;
    int english = 0;
    const auto folded = text::fold(beginning);
    for (const auto word : text::letterRuns(folded)) {
        spanish += isAmong(word, spanishWords) ? 1 : 0;
        english += isAmong(word, englishWords) ? 1 : 0;
    }
    if (spanish == english) return std::nullopt;
    return spanish > english ? Language::spanish : Language::english;
}

}  // namespace dorix::service
