#pragma once

#include "assistant/AnswerCard.h"
#include "panel/BlockFeed.h"

#include <string>
#include <vector>

namespace dorix {

/// What stands in for the answer while it is empty, in the app language; "" when there is one, or it failed.
std::string waitingText(const AnswerCard& card);

/// What stands above an answer: what was asked, and about which text.
std::vector<DetailBlock> piecesAbove(const AnswerCard& card);

/// What stands under it: why there is no more of it, and what it rests on.
std::vector<DetailBlock> piecesUnder(const AnswerCard& card);

/// The address that a click on the source opens: a page's or a file's; "" where it opens nothing.
std::string addressOf(const AnswerSource& source);

}  // namespace dorix
