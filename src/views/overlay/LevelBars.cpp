#include "views/overlay/LevelBars.h"

#include <QPainter>
#include <array>

namespace dorix {

namespace {

constexpr double barWidth = 2;
constexpr double barDistance = 4;
constexpr double margin = 1;                                 // on the left and on the right
constexpr std::array<double, 4> shares{0.55, 1, 0.8, 0.45};  // of the room above and below

}  // namespace

LevelBars::LevelBars(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
    connect(this, &LevelBars::changed, this, [this] { update(); });
}

/// Not on whole pixels: the bars grow and shrink without jumping.
void LevelBars::paint(QPainter* painter) {
    painter->setPen(Qt::NoPen);
    painter->setBrush(color_);
    double left = margin;
    for (const double share : shares) {
        const double tall = barWidth + (height() - barWidth) * share * level_;
        painter->drawRoundedRect(QRectF(left, (height() - tall) / 2, barWidth, tall), barWidth / 2,
                                 barWidth / 2);
        left += barDistance;
    }
}

}  // namespace dorix
