#include "service/ai/Language.h"

#include "base/text/Text.h"
#include "service/ai/WordSet.h"

#include <string>

namespace dorix::service {

namespace {

constexpr std::size_t examinedBytes = 4'000;

// Words that the other language does not have, or hardly.
const WordSet& spanishWords() {
    static const WordSet set({
        "al",      "ayer",   "bueno",  "como",      "con",    "cual",  "cuando", "de",    "del",     "digo",
        "donde",   "el",     "ella",   "en",        "es",     "esta",  "este",   "esto",  "gracias", "hay",
        "hola",    "hoy",    "jueves", "la",        "las",    "le",    "lo",     "los",   "lunes",   "manana",
        "martes",  "mas",    "mi",     "miercoles", "muy",    "para",  "perdon", "pero",  "pon",     "por",
        "porque",  "pues",   "que",    "quien",     "resume", "se",    "si",     "sin",   "sobre",   "su",
        "tambien", "te",     "tiene",  "tu",        "un",     "una",   "unos",   "vale",  "viernes", "y",
        "ya",      "yo",     "cuesta", "nos",       "os",     "les",   "han",    "hemos", "estoy",   "soy",
        "tengo",   "quiero", "puedo",  "voy",       "dos",    "tres",  "cuatro", "cinco", "seis",    "siete",
        "ocho",    "nueve",  "diez",   "doce",      "euros",  "calle", "ese",    "esa",   "todo",    "cada",
        "dile",    "luego",  "ahora",  "siempre",   "nada",   "oye",   "vamos",
    });
    return set;
}

const WordSet& englishWords() {
    static const WordSet set({
        "about",   "all",   "and",      "are",       "at",     "be",    "but",   "by",    "can",      "did",
        "do",      "does",  "for",      "from",      "have",   "hello", "hi",    "how",   "i",        "in",
        "is",      "it",    "monday",   "my",        "friday", "not",   "of",    "on",    "or",       "our",
        "please",  "she",   "sorry",    "thanks",    "that",   "the",   "their", "this",  "thursday", "to",
        "tuesday", "was",   "we",       "wednesday", "well",   "were",  "what",  "when",  "where",    "which",
        "who",     "why",   "will",     "with",      "you",    "your",  "they",  "there", "his",      "been",
        "would",   "could", "should",   "some",      "any",    "let",   "if",    "two",   "three",    "five",
        "tell",    "today", "tomorrow", "work",      "send",   "here",
    });
    return set;
}

// Of the other languages that people dictate in.
const WordSet& otherWords() {
    static const WordSet set({
        "der",  "die",  "das",  "und", "ich", "ist",  "nicht", "wir",  "mit",  "auf",   "ein", "eine",
        "den",  "dem",  "fur",  "les", "des", "et",   "est",   "je",   "nous", "vous",  "pas", "dans",
        "pour", "avec", "une",  "il",  "che", "di",   "non",   "sono", "per",  "della", "gli", "anche",
        "nao",  "uma",  "voce", "com", "os",  "isso", "het",   "een",  "van",  "niet",  "ik",  "els",
        "amb",  "aixo", "seva", "ou",  "au",  "ce",   "qui",   "uhr",
    });
    return set;
}

struct Counts {
    int spanish = 0;
    int english = 0;
    int other = 0;
};

Counts countsOf(std::string_view text) {
    const auto beginning = text::lowercase(text.substr(0, examinedBytes));
    Counts counts;
    const bool hasMarks =
        beginning.find("¿") != std::string::npos || beginning.find("¡") != std::string::npos;
    counts.spanish = (hasMarks ? 2 : 0) + (beginning.find("ñ") != std::string::npos ? 1 : 0);
    const auto folded = text::fold(beginning);
    for (const auto word : text::letterRuns(folded)) {
        counts.spanish += spanishWords().contains(word) ? 1 : 0;
        counts.english += englishWords().contains(word) ? 1 : 0;
        counts.other += otherWords().contains(word) ? 1 : 0;
    }
    return counts;
}

}  // namespace

std::optional<Language> languageNamed(std::string_view tag) {
    const auto name = tag.substr(0, tag.find_first_of("-_"));
    if (name == "es") return Language::spanish;
    if (name == "en") return Language::english;
    return std::nullopt;
}

std::optional<Language> languageOf(std::string_view text) {
    const auto counts = countsOf(text);
    if (counts.spanish == counts.english) return std::nullopt;
    return counts.spanish > counts.english ? Language::spanish : Language::english;
}

bool isForeign(std::string_view text) {
    const auto counts = countsOf(text);
    return counts.other > counts.spanish && counts.other > counts.english;
}

}  // namespace dorix::service
