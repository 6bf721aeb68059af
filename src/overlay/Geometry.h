#pragma once

#include <algorithm>

namespace dorix {

// Points, with the origin at the bottom left of the main screen and y upwards. Views flip and scale at their
// edge.

struct Point {
    double x = 0;
    double y = 0;

    bool operator==(const Point&) const = default;
};

struct Size {
    double width = 0;
    double height = 0;

    bool operator==(const Size&) const = default;
};

struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    double minX() const { return x; }
    double midX() const { return x + width / 2; }
    double maxX() const { return x + width; }
    double minY() const { return y; }
    double midY() const { return y + height / 2; }
    double maxY() const { return y + height; }

    Rect insetBy(double margin) const {
        return {x + margin, y + margin, width - 2 * margin, height - 2 * margin};
    }

    /// What both cover; without area when they do not meet.
    Rect intersection(const Rect& other) const {
        const double left = std::max(minX(), other.minX());
        const double bottom = std::max(minY(), other.minY());
        return {left, bottom, std::max(0.0, std::min(maxX(), other.maxX()) - left),
                std::max(0.0, std::min(maxY(), other.maxY()) - bottom)};
    }

    double area() const { return width * height; }
    bool intersects(const Rect& other) const { return intersection(other).area() > 0; }

    bool operator==(const Rect&) const = default;
};

}  // namespace dorix
