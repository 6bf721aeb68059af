#include "views/ShownText.h"

#include <algorithm>

namespace dorix::testing {

namespace {

void collect(QQuickItem& item, QRectF clip, std::vector<ShownText>& found) {
    if (!item.isVisible() || item.opacity() == 0) return;
    if (item.clip()) clip &= item.mapRectToScene(item.boundingRect());
    const bool isText = item.inherits("QQuickText") || item.inherits("QQuickTextEdit");
    if (isText && !item.property("text").toString().isEmpty()) {
        const QRectF whole = item.mapRectToScene(item.boundingRect());
        if (whole.intersects(clip)) found.push_back({.item = item, .whole = whole, .seen = whole & clip});
    }
    for (QQuickItem* child : item.childItems()) collect(*child, clip, found);
}

}  // namespace

std::vector<ShownText> shownTexts(const QQuickWindow& window, const QRectF& clip) {
    std::vector<ShownText> found;
    collect(*window.contentItem(), clip, found);
    return found;
}

bool shows(const QQuickWindow& window, const QString& text) {
    const auto texts = shownTexts(window, QRectF({}, window.size()));
    return std::ranges::find(texts, text, &ShownText::text) != texts.end();
}

}  // namespace dorix::testing
