#pragma once

#include "service/ai/WordSet.h"

#include <cstddef>
#include <span>
#include <string_view>

/// What the writer by rules knows of Spanish and English. Words and phrases are folded.
namespace dorix::service::words {

/// Sounds that are no words.
const WordSet& hesitations();
/// The same of one language, which are words in others.
const WordSet& spanishHesitations();
const WordSet& englishHesitations();
/// Fillers where commas, or an end of the text, set them apart at both sides.
std::span<const std::string_view> spanishAsides();
std::span<const std::string_view> englishAsides();
/// Fillers at the beginning, with a comma or a hesitation behind them.
std::span<const std::string_view> spanishOpeners();
std::span<const std::string_view> englishOpeners();
/// Two of those, which need nothing behind them.
std::span<const std::string_view> openerPairs();
/// Fillers at the end, behind a comma.
std::span<const std::string_view> closers();

/// Small words that a stutter repeats and nobody means twice.
const WordSet& stutters();

/// Words that a noun follows.
const WordSet& determiners();
/// Those, and what leads to the name of a time or a place.
const WordSet& leadWords();

const WordSet& weekdays();
const WordSet& months();
const WordSet& relativeDays();
const WordSet& dayParts();
const WordSet& numbers();
const WordSet& numberLinks();
const WordSet& units();

/// A word or phrase that takes back what was said before.
struct Cue {
    std::string_view phrase;
    bool isClear;  // it is hardly used for anything else
};
std::span<const Cue> cues();
/// What takes back a whole clause, which then is said anew: with so many of its first words at least.
struct Strike {
    std::string_view phrase;
    std::size_t repeatedWords;
};
std::span<const Strike> strikes();
const WordSet& negations();
/// What may follow a correction besides the small words: no verb of another statement.
const WordSet& followers();

/// English words that are always capitalised.
const WordSet& alwaysCapital();
/// Words with a full stop of their own.
const WordSet& abbreviations();

/// Openings of a Spanish question, with their accents; more than one word where one alone is no sign.
std::span<const std::string_view> spanishQuestions();
/// The same of an English one, folded.
std::span<const std::string_view> englishQuestions();

std::span<const std::string_view> greetings();
std::span<const std::string_view> farewells();
/// Those of them that another one may follow.
std::span<const std::string_view> thanks();

/// Rows of markers of a dictated list, each in the order of the list.
std::span<const std::span<const std::string_view>> listOrdinals();
std::span<const std::span<const std::string_view>> listNumbers();
std::span<const std::string_view> listLast();
std::span<const std::string_view> bulletWords();

}  // namespace dorix::service::words
