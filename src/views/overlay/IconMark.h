#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QtQmlIntegration>

namespace dorix {

/// The program's mark, and what its states lay around it. Each property is a measure between two states, so
/// that the icon can move from any to any other.
class IconMark : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor color MEMBER color_ NOTIFY changed)
    Q_PROPERTY(QColor alert MEMBER alert_ NOTIFY changed)
    /// 0 an outline, 1 filled.
    Q_PROPERTY(qreal body MEMBER body_ NOTIFY changed)
    /// 0 the mark, 1 the sign of an error in its place.
    Q_PROPERTY(qreal alarm MEMBER alarm_ NOTIFY changed)
    /// How far the halo has come up, 0 to 1.
    Q_PROPERTY(qreal halo MEMBER halo_ NOTIFY changed)
    /// How wide the halo has opened, 0 to 1.
    Q_PROPERTY(qreal breath MEMBER breath_ NOTIFY changed)
    /// How far the arc has come up, 0 to 1, and where it stands, in degrees clockwise.
    Q_PROPERTY(qreal arc MEMBER arc_ NOTIFY changed)
    Q_PROPERTY(qreal angle MEMBER angle_ NOTIFY changed)

 public:
    explicit IconMark(QQuickItem* parent = nullptr);

    void paint(QPainter* painter) override;

 Q_SIGNALS:
    void changed();

 private:
    void paintHalo(QPainter& painter) const;
    void paintLetter(QPainter& painter) const;
    void paintArc(QPainter& painter) const;
    void paintAlert(QPainter& painter) const;

    QColor color_;
    QColor alert_;
    qreal body_ = 1;
    qreal alarm_ = 0;
    qreal halo_ = 0;
    qreal breath_ = 0;
    qreal arc_ = 0;
    qreal angle_ = 0;
};

/// The part of a circle that turns while something goes on.
class TurningArc : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor color MEMBER color_ NOTIFY changed)
    Q_PROPERTY(qreal angle MEMBER angle_ NOTIFY changed)

 public:
    explicit TurningArc(QQuickItem* parent = nullptr);

    void paint(QPainter* painter) override;

 Q_SIGNALS:
    void changed();

 private:
    QColor color_;
    qreal angle_ = 0;
};

}  // namespace dorix
