#pragma once

#include <string>
#include <string_view>

namespace dorix {

class Memory;
class MessageSearch;

/// Answers for which no model is asked, in the app language. Main executor.

/// To a question of which nothing was found; `messages` is null where no workspace can be searched.
std::string nothingFound(std::string_view question, const Memory& memory, const MessageSearch* messages);

/// To a question after the user's work, of which nothing is known.
std::string nothingDone(const Memory& memory);

}  // namespace dorix
