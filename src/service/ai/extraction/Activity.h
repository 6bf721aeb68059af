#pragma once

#include "service/ai/Language.h"

#include <string>
#include <string_view>

namespace dorix::service {

/// The first lines of what the user did, as the program tells it to a model, in Spanish: here for the user to
/// read, in their language and without the places of files, which the card has beside it. Lines of another
/// shape stay as they are. Linear; pure, any thread.
std::string activityOf(std::string_view recap, Language language);

}  // namespace dorix::service
