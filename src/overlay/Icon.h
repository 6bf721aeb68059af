#pragma once

#include "dictation/AppState.h"
#include "overlay/Geometry.h"

#include <optional>
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
/// good for as things stand.
std::string iconTooltip(const OpenWindows& open, const WorkingKeys& keys, bool paused);

/// Tells a click on the icon from a drag: a hand that slips a little while clicking still clicks.
class IconMouse {
 public:
    enum class Release { none, click, drag };

    /// The button went down at `pointer`, with the window at `origin`.
    void down(Point pointer, Point origin);

    /// The pointer moved with the button down; where the window goes, when it does.
    std::optional<Point> dragged(Point pointer);

    /// The button came up; none when it had not gone down here.
    Release up();

 private:
    std::optional<Point> downLocation_;
    Point startOrigin_;
    bool dragged_ = false;
};

}  // namespace dorix
