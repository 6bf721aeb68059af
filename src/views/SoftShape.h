#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QtQmlIntegration>

namespace dorix {

/// A rounded surface with a hairline, and under it the one soft shadow, which reaches beyond the item's
/// rectangle by the token. Where nothing composites it is solid to its corners: the window's mask cuts them,
/// and no half-transparent pixel is left to turn black.
class SoftShape : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor surface MEMBER surface_ NOTIFY changed)
    Q_PROPERTY(QColor hairline MEMBER hairline_ NOTIFY changed)
    Q_PROPERTY(qreal radius MEMBER radius_ NOTIFY changed)
    Q_PROPERTY(bool composited MEMBER composited_ NOTIFY changed)

 public:
    explicit SoftShape(QQuickItem* parent = nullptr);

    void paint(QPainter* painter) override;

 Q_SIGNALS:
    void changed();

 private:
    void paintShadow(QPainter& painter, const QRectF& shape) const;

    QColor surface_;
    QColor hairline_;
    qreal radius_ = 0;
    bool composited_ = true;
};

}  // namespace dorix
