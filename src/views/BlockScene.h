#pragma once

#include <QObject>
#include <QQuickItem>
#include <QQuickTextDocument>
#include <QVariantList>

namespace dorix {

/// What the pieces of an answer ask for, in whichever window they stand. Main thread.
class BlockScene : public QObject {
    Q_OBJECT

 public:
    /// The links in a rich text: `url`, the `words` it stands under, and from which character to which.
    Q_INVOKABLE static QVariantList linksIn(QQuickTextDocument* text);
    Q_INVOKABLE virtual void openLink(const QString& url) = 0;
    /// Opens one of the sources, by its number, if it leads anywhere.
    Q_INVOKABLE virtual void openSource(int /*index*/) {}

    /// Tells assistive technology that the user is at an item that shows the keyboard without having it.
    Q_INVOKABLE static void tellFocus(QQuickItem* item);
};

}  // namespace dorix
