#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QtQmlIntegration>

namespace dorix {

/// The voice's level as four bars about a middle line.
class LevelBars : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor color MEMBER color_ NOTIFY changed)
    /// 0 to 1.
    Q_PROPERTY(qreal level MEMBER level_ NOTIFY changed)

 public:
    explicit LevelBars(QQuickItem* parent = nullptr);

    void paint(QPainter* painter) override;

 Q_SIGNALS:
    void changed();

 private:
    QColor color_;
    qreal level_ = 0;
};

}  // namespace dorix
