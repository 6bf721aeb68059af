#include "views/SoftShape.h"

#include "views/Tokens.h"

#include <QPainter>
#include <QPainterPath>

namespace dorix {

namespace {

constexpr int shadowSteps = 2 * tokens::shadowReach;  // half a point each
constexpr double shadowDrop = 2;                      // the light comes from above

}  // namespace

SoftShape::SoftShape(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
    connect(this, &SoftShape::changed, this, [this] { update(); });
}

/// The item itself is larger than its shape by the shadow's reach on each side.
void SoftShape::paint(QPainter* painter) {
    const double reach = tokens::shadowReach;
    const QRectF shape = boundingRect().adjusted(reach, reach, -reach, -reach);
    painter->setPen(Qt::NoPen);
    if (composited_) {
        paintShadow(*painter, shape);
    } else {
        painter->fillRect(shape, hairline_);
    }
    painter->setBrush(surface_);
    if (!composited_) {
        painter->drawRoundedRect(shape.adjusted(1, 1, -1, -1), radius_ - 1, radius_ - 1);
        return;
    }
    painter->drawRoundedRect(shape, radius_, radius_);
    QPainterPath line;
    line.setFillRule(Qt::OddEvenFill);
    line.addRoundedRect(shape, radius_, radius_);
    line.addRoundedRect(shape.adjusted(1, 1, -1, -1), radius_ - 1, radius_ - 1);
    painter->fillPath(line, hairline_);
}

/// Thin coats laid over each other from the outside in, which together fall off like a blur.
void SoftShape::paintShadow(QPainter& painter, const QRectF& shape) const {
    double laid = 0;
    for (int step = 0; step < shadowSteps; ++step) {
        const double inwards = (step + 1.0) / shadowSteps;
        const double wanted = tokens::shadowStrength * inwards * inwards;
        const double grow = tokens::shadowReach * (1 - inwards);
        painter.setBrush(QColor::fromRgbF(0, 0, 0, static_cast<float>((wanted - laid) / (1 - laid))));
        laid = wanted;
        const QRectF coat = shape.adjusted(-grow, -grow, grow, grow).translated(0, shadowDrop * inwards);
        painter.drawRoundedRect(coat, radius_ + grow, radius_ + grow);
    }
}

}  // namespace dorix
