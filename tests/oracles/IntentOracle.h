#pragma once

#include "routing/IntentRules.h"

#include <array>
#include <string>
#include <string_view>

namespace dorix {

namespace rules = IntentRules;
inline constexpr std::array intentTests{rules::isTeach,
                                        rules::isSearch,
                                        rules::isAction,
                                        rules::isRecap,
                                        rules::refersToSelection,
                                        rules::isTransform,
                                        rules::isReply,
                                        rules::isSelectionCommand,
                                        rules::refersToScreen,
                                        rules::isScreenQuestion,
                                        rules::matchesMeetingStart,
                                        rules::matchesMeetingStop,
                                        rules::matchesTeachDone};

/// The normalised text and which tests hold that are a search for patterns and no more.
std::string judged(std::string_view transcript);

/// The same in the plainest form: the whole text folded at once, each pattern run by itself, by ICU. Takes
/// time that grows with the square of the text. One thread at a time.
std::string judgedByIcu(std::string_view transcript);

}  // namespace dorix
