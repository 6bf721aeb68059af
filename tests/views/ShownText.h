#pragma once

#include <QFont>
#include <QQuickItem>
#include <QQuickWindow>
#include <QString>
#include <vector>

namespace dorix::testing {

/// A text of a window that can be seen, and where, in points of the window.
struct ShownText {
    QQuickItem& item;
    QRectF whole;
    QRectF seen;

    QString text() const { return item.property("text").toString(); }
    QFont font() const { return item.property("font").value<QFont>(); }
};

/// All of them that can be seen within `clip`.
std::vector<ShownText> shownTexts(const QQuickWindow& window, const QRectF& clip);

/// Whether the window shows just this text somewhere.
bool shows(const QQuickWindow& window, const QString& text);

}  // namespace dorix::testing
