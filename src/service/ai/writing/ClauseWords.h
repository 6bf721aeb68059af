#pragma once

#include "service/ai/WordSet.h"

#include <span>
#include <string_view>

/// What tells where a clause begins and ends in Spanish and English. Folded, unless it says otherwise.
namespace dorix::service::words {

/// Pronouns that are a subject and nothing else, with what is contracted with them.
const WordSet& subjects();

/// Finite verbs in every text: of the first and second person, which no noun is the subject of, and of the
/// third. As they are spelled, with their accents.
const WordSet& spanishOwnVerbs();
const WordSet& spanishThirdVerbs();
/// Those of subordinate clauses.
const WordSet& spanishDependentVerbs();
/// The first four letters of verbs that a question may be the object of.
const WordSet& spanishAskingVerbs();
/// Pronouns that stand before a finite verb and nothing else.
const WordSet& spanishClitics();
/// The same that are also articles.
const WordSet& spanishArticleClitics();
/// Words that join a further clause.
const WordSet& spanishLinks();

const WordSet& englishLinks();
/// Words behind which a clause goes on without a link: "I think we should", "everything we need".
const WordSet& englishClauseHeads();
/// Behind a noun, or before a subject in a question.
const WordSet& englishAuxiliaries();
/// Verbs in the past that are spelled like nothing else.
const WordSet& englishPasts();

/// Openings that are a sentence by themselves: "gracias por su mensaje".
std::span<const std::string_view> spanishFormulas();
std::span<const std::string_view> englishFormulas();
/// Openings with a comma behind them.
std::span<const std::string_view> spanishIntroductions();
std::span<const std::string_view> englishIntroductions();
/// The same where they come later: a sentence ends before them.
std::span<const std::string_view> turns();
/// Beginnings of a sentence without a subject: "please", "see you".
std::span<const std::string_view> englishStarts();
/// Questions after a greeting: "qué tal".
std::span<const std::string_view> smallTalk();

}  // namespace dorix::service::words
