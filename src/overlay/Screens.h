#pragma once

#include "overlay/Geometry.h"

#include <vector>

namespace dorix {

/// A screen and the part of it that panels leave to windows.
struct Screen {
    Rect frame;
    Rect visibleFrame;

    bool operator==(const Screen&) const = default;
};

/// The main screen first. Views never hand over an empty list.
using Screens = std::vector<Screen>;

/// The screen that shows most of `rect`, or the nearest when none shows any of it.
const Screen& screenOf(const Screens& screens, const Rect& rect);

}  // namespace dorix
