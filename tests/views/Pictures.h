#pragma once

#include "views/Exhibit.h"

#include <QImage>
#include <QPoint>
#include <string>

namespace dorix::testing {

/// The square of 32 points in which two pictures differ most.
struct Difference {
    int pixels = 0;  // that differ there by more than the eye would miss
    QPoint at;       // its corner, in pixels

    /// The smallest glyph has 27 pixels of ink. What a font library of another build draws differs in none.
    bool isSeen() const { return pixels >= 8; }
};
Difference difference(const QImage& one, const QImage& other);

/// How letters look depends on the fonts, the library that draws them and the toolkit. Where they look other
/// than they did where the pictures were kept: what was there and what is here. Otherwise "".
std::string whyNotComparable();

/// Fails the test when the picture is not like the one that is kept under that name and style. With
/// DORIX_DRAW_PICTURES set to a folder, puts it there instead.
void comparePicture(const QImage& image, const std::string& name, const Style& style);

}  // namespace dorix::testing
