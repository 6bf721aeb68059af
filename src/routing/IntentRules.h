#pragma once

#include "routing/Utterance.h"

#include <string>
#include <string_view>

/// What a finished transcript wants, told by fixed words and patterns in Spanish and English, without a
/// language model. Pure functions; any thread; time linear in the transcript.
namespace dorix::IntentRules {

/// The text that all tests look at.
std::string normalise(std::string_view transcript);

/// Asks to be watched, or to teach a filing habit.
bool isTeach(const Utterance& utterance);
/// Looks for something in the user's documents, messages or Slack.
bool isSearch(const Utterance& utterance);
/// Orders something to be done. A search is never an action.
bool isAction(const Utterance& utterance);
/// Asks where the user left off or what they did.
bool isRecap(const Utterance& utterance);
/// Points at selected text.
bool refersToSelection(const Utterance& utterance);
/// Orders a rewrite of a given text.
bool isTransform(const Utterance& utterance);
/// Dictates an answer to somebody: the words are to be written, not answered.
bool isReply(const Utterance& utterance);
/// Asks something of the selected text, or simply asks. A reply never does.
bool isSelectionCommand(const Utterance& utterance);
/// Points at what is on the screen; generous, as "estoy" counts.
bool refersToScreen(const Utterance& utterance);
/// Points at the screen and is clearly a question rather than a request to write.
bool isScreenQuestion(const Utterance& utterance);

/// Commands to meeting mode and to teach mode.
bool matchesMeetingStart(const Utterance& utterance);
bool matchesMeetingStop(const Utterance& utterance);
bool matchesTeachDone(const Utterance& utterance);

/// Whether a file name or path names a file that is not to be read; takes any case and diacritics.
bool isSecretName(std::string_view name);
/// Whether a text holds a credential.
bool holdsSecret(std::string_view content);

}  // namespace dorix::IntentRules
