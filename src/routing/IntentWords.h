#pragma once

#include <span>
#include <string_view>

/// The words that tell what an utterance wants, as the normaliser leaves them: lower case, no diacritics.
/// Their order matters for `fillerPrefixes` alone. Constants; any thread.
namespace dorix::intentwords {

/// What people say before they come to the point. The product's name stands twice: at the start of an
/// utterance, and after "hey".
std::span<const std::string_view> fillerPrefixes();

/// Said anywhere.
std::span<const std::string_view> recapPhrases();
/// The first word of an utterance.
std::span<const std::string_view> selectionVerbs();
/// The first words of an utterance, whole.
std::span<const std::string_view> transformVerbs();
/// Said anywhere in a short utterance.
std::span<const std::string_view> transformPhrases();
/// Said anywhere, from the start of a word on; longer words that begin like one count.
std::span<const std::string_view> selectionPhrases();
std::span<const std::string_view> screenPhrases();

/// How an utterance begins; longer words that begin like one count.
std::span<const std::string_view> replyOpenings();
std::span<const std::string_view> selectionOpenings();
std::span<const std::string_view> screenQuestionOpenings();

}  // namespace dorix::intentwords
