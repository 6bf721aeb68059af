#pragma once

#include "overlay/Geometry.h"

#include <optional>

namespace dorix {

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
