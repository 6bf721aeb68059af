#pragma once

#include "service/ai/WordSet.h"

#include <span>
#include <string_view>

/// What the answers by extraction know of Spanish and English. Words are folded.
namespace dorix::service::words {

/// Words that say nothing of what a question is about.
const WordSet& stopWords();

/// Endings of words, the longest first.
std::span<const std::string_view> endings();

/// First words of a request to write something or to think about it.
const WordSet& composingVerbs();
/// Words of a request for the gist, and phrases of one.
const WordSet& summaryVerbs();
std::span<const std::string_view> summaryPhrases();

/// What a time is told in, besides digits.
const WordSet& timeWords();
const WordSet& amountWords();

}  // namespace dorix::service::words
