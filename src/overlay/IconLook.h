#pragma once

#include "dictation/AppState.h"

#include <string>

namespace dorix {

/// What the icon shows of the program's state.
enum class IconLook { idle, listening, processing, paused, error };

IconLook iconLook(HUDPhase::Kind hud, bool paused);

/// Which of the program's windows stand open.
struct OpenWindows {
    bool settings = false;
    bool onboarding = false;
    bool account = false;
    bool learned = false;
};

/// The icon's tooltip in the app language: the title of the window that stands open, or else what the icon is
/// good for.
std::string iconTooltip(const OpenWindows& open);

}  // namespace dorix
