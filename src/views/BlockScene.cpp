#include "views/BlockScene.h"

#include <QAccessible>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextFragment>

namespace dorix {

QVariantList BlockScene::linksIn(QQuickTextDocument* text) {
    QVariantList links;
    for (auto block = text->textDocument()->begin(); block.isValid(); block = block.next()) {
        for (auto piece = block.begin(); !piece.atEnd(); ++piece) {
            const QTextFragment fragment = piece.fragment();
            const QString url = fragment.charFormat().anchorHref();
            if (url.isEmpty()) continue;
            const int start = fragment.position();
            const int end = start + fragment.length();
            QVariantMap last = links.isEmpty() ? QVariantMap() : links.back().toMap();
            // Bold and plain words of one link are two fragments.
            if (last["url"] == url && last["end"] == start) {
                links.back() = QVariantMap{{"url", url},
                                           {"start", last["start"]},
                                           {"end", end},
                                           {"words", last["words"].toString() + fragment.text()}};
            } else {
                links.append(
                    QVariantMap{{"url", url}, {"start", start}, {"end", end}, {"words", fragment.text()}});
            }
        }
    }
    return links;
}

void BlockScene::tellFocus(QQuickItem* item) {
    if (item == nullptr) return;
    QAccessibleEvent event(item, QAccessible::Focus);
    QAccessible::updateAccessibility(&event);
}

}  // namespace dorix
