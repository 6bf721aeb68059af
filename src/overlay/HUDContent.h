#pragma once

#include "dictation/AppState.h"

#include <string>

namespace dorix {

/// What stands in the HUD, in the app language.
struct HUDContent {
    enum class Look { hidden, hint, listening, processing, done, info, error, learned };

    Look look = Look::hidden;
    std::string text;
    /// Under the text, smaller.
    std::string caption;
    /// What a screen reader says where there is no text.
    std::string spoken;
    /// The text only holds the place of words to come.
    bool isPlaceholder = false;

    bool operator==(const HUDContent&) const = default;
};

/// `partial` is what has been understood so far.
HUDContent hudContent(const AppState& state, const std::string& partial);

}  // namespace dorix
