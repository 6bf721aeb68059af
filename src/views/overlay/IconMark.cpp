#include "views/overlay/IconMark.h"

#include <QPainter>
#include <QPainterPath>

namespace dorix {

namespace {

// Points about the item's centre.
constexpr double letterLeft = -8;
constexpr double letterHalfHeight = 10.5;
constexpr double letterCorner = 3;
constexpr double outline = 2.25;
constexpr double haloAtRest = 13;
constexpr double haloOpen = 23;
constexpr double arcRadius = 19;
constexpr double arcWidth = 2.5;
constexpr double arcSpan = 100;  // degrees

QColor faded(QColor color, double opacity) {
    color.setAlphaF(static_cast<float>(color.alphaF() * opacity));
    return color;
}

/// An arc on the faint circle that it turns along.
void strokeArc(QPainter& painter, const QColor& color, double radius, double width, double angle) {
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(faded(color, 0.18), width));
    painter.drawEllipse(QPointF(0, 0), radius, radius);
    painter.setPen(QPen(color, width, Qt::SolidLine, Qt::RoundCap));
    // Sixteenths of a degree, counted anticlockwise from three o'clock.
    const int start = static_cast<int>((90 - angle) * 16);
    painter.drawArc(QRectF(-radius, -radius, 2 * radius, 2 * radius), start, static_cast<int>(-arcSpan * 16));
}

/// A D, `inset` points within its outline.
QPainterPath letter(double inset) {
    const double top = letterHalfHeight - inset;
    const double left = letterLeft + inset;
    const double corner = std::max(0.0, letterCorner - inset);
    QPainterPath path;
    path.moveTo(left + corner, -top);
    path.lineTo(0, -top);
    path.arcTo(QRectF(-top, -top, 2 * top, 2 * top), 90, -180);
    path.lineTo(left + corner, top);
    path.arcTo(QRectF(left, top - 2 * corner, 2 * corner, 2 * corner), 270, -90);
    path.lineTo(left, -top + corner);
    path.arcTo(QRectF(left, -top, 2 * corner, 2 * corner), 180, -90);
    path.closeSubpath();
    return path;
}

}  // namespace

IconMark::IconMark(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
    connect(this, &IconMark::changed, this, [this] { update(); });
}

void IconMark::paint(QPainter* painter) {
    painter->translate(boundingRect().center());
    painter->setPen(Qt::NoPen);
    if (halo_ > 0) paintHalo(*painter);
    if (alarm_ < 1) paintLetter(*painter);
    if (alarm_ > 0) paintAlert(*painter);
    if (arc_ > 0) paintArc(*painter);
}

void IconMark::paintHalo(QPainter& painter) const {
    const double radius = haloAtRest + (haloOpen - haloAtRest) * breath_;
    painter.setBrush(faded(color_, 0.16 * halo_));
    painter.drawEllipse(QPointF(0, 0), radius, radius);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(faded(color_, 0.7 * halo_), 1.5));
    painter.drawEllipse(QPointF(0, 0), radius, radius);
    painter.setPen(Qt::NoPen);
}

void IconMark::paintLetter(QPainter& painter) const {
    painter.save();
    painter.translate(-1, 0);  // a D looks centred a little to the left of where it is
    const double busy = std::max(halo_, arc_);
    painter.scale(1 - 0.3 * busy, 1 - 0.3 * busy);
    painter.fillPath(letter(0), faded(color_, body_ * (1 - alarm_)));
    if (body_ < 1) {
        const auto ring = letter(0).subtracted(letter(outline));
        painter.fillPath(ring, faded(color_, (1 - body_) * (1 - alarm_)));
    }
    painter.restore();
}

void IconMark::paintArc(QPainter& painter) const {
    strokeArc(painter, faded(color_, arc_), arcRadius, arcWidth, angle_);
}

void IconMark::paintAlert(QPainter& painter) const {
    painter.setPen(Qt::NoPen);
    painter.setBrush(faded(alert_, alarm_));
    painter.drawRoundedRect(QRectF(-2, -10, 4, 13), 2, 2);
    painter.drawEllipse(QPointF(0, 8), 2.5, 2.5);
}

TurningArc::TurningArc(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
    connect(this, &TurningArc::changed, this, [this] { update(); });
}

void TurningArc::paint(QPainter* painter) {
    constexpr double width = 2;
    painter->translate(boundingRect().center());
    strokeArc(*painter, color_, (boundingRect().width() - width) / 2, width, angle_);
}

}  // namespace dorix
