#include "views/overlay/HUDWindow.h"

#include "localdata/Language.h"
#include "views/DesktopWords.h"
#include "views/ScreenMap.h"
#include "views/Tokens.h"
#include "views/overlay/TextFit.h"

#include <QQuickItem>
#include <algorithm>

namespace dorix {

namespace {

using Look = HUDContent::Look;

constexpr int listeningLines = 2;
constexpr int mostLines = 5;
constexpr int verticalPadding = 2 * 3 * tokens::space - 2;
// What stands beside the text in the bubble: padding on both sides, a glyph and its distance.
constexpr int besideText = 2 * 3 * tokens::space + tokens::glyph + 2 * tokens::space;

const char* lookName(Look look) {
    switch (look) {
        case Look::hidden:
            return "hidden";
        case Look::hint:
            return "hint";
        case Look::listening:
            return "listening";
        case Look::processing:
            return "processing";
        case Look::done:
            return "done";
        case Look::info:
            return "info";
        case Look::error:
            return "error";
        case Look::learned:
            break;
    }
    return "learned";
}

}  // namespace

HUDWindow::HUDWindow(const ViewContext& context)
    : OverlayPanel(context, WindowSystem::Kind::notification, Focusable::no) {
    setFlag(Qt::WindowTransparentForInput);
    resize(static_cast<int>(hudmeasure::width) + 2 * tokens::shadowReach,
           static_cast<int>(hudmeasure::height) + 2 * tokens::shadowReach);
    usable_ = QRect(QPoint(0, 0), size())
                  .marginsRemoved(
                      {tokens::shadowReach, tokens::shadowReach, tokens::shadowReach, tokens::shadowReach});
    view().insert({{"look", "hidden"},
                   {"text", ""},
                   {"caption", ""},
                   {"placeholder", false},
                   {"spoken", ""},
                   {"shown", false},
                   {"level", 0.0},
                   {"opensLeft", false},
                   {"textWidth", 0},
                   {"lines", listeningLines},
                   {"usable", QRectF(usable_)}});
    load("HUD");
    if (auto* bubble = rootObject()->property("bubble").value<QQuickItem*>()) {
        for (const auto signal : {&QQuickItem::xChanged, &QQuickItem::yChanged, &QQuickItem::widthChanged,
                                  &QQuickItem::heightChanged}) {
            connect(bubble, signal, this, [this] { reshape(); });
        }
    }
}

void HUDWindow::place(const Rect& icon, const Screens& screens) {
    const auto placement = placeHUD(icon, screens);
    const int reach = tokens::shadowReach;
    const QRect frame = screenmap::toQt(placement.frame).marginsAdded({reach, reach, reach, reach});
    setGeometry(frame);
    usable_ = screenmap::toQt(placement.usable).translated(-frame.topLeft());
    layout.opensLeft.set(placement.opensLeft);
    view().insert({{"opensLeft", placement.opensLeft}, {"usable", QRectF(usable_)}});
    fitText();
    reshape();
}

void HUDWindow::setContent(const HUDContent& content) {
    const bool listensOn = content.look == Look::listening && content_.look == Look::listening;
    const bool staysWide = listensOn && !content.isPlaceholder;
    content_ = content;
    // The user's own words stay as they are.
    const bool areTheirs = content.look == Look::listening && !content.isPlaceholder;
    const QString text = areTheirs ? QString::fromStdString(content.text) : shown(content.text);
    const QString caption = shown(content.caption);
    if (!staysWide) view().insert("textWidth", 0);
    view().insert({{"look", lookName(content.look)},
                   {"text", text},
                   {"caption", caption},
                   {"placeholder", content.isPlaceholder},
                   {"spoken", content.spoken.empty() ? text : shown(content.spoken)}});
    fitText();
    // It would not look at a window without focus.
    if (!listensOn) announce("bubble");
}

void HUDWindow::fitText() {
    const bool listens = content_.look == Look::listening;
    const int limit = usable_.width() - besideText;
    const TextFit body(tokens::fontBody);
    const QString text = view().value("text").toString();
    const QString caption = view().value("caption").toString();
    int width = listens ? std::min(limit, body.width(text)) : body.balancedWidth(text, limit);
    if (!caption.isEmpty()) width = std::max(width, TextFit(tokens::fontSmall).width(caption));
    // While words come the bubble only grows: one that breathes with every correction is restless.
    if (listens) width = std::max(width, view().value("textWidth").toInt());
    const int room = (usable_.height() - verticalPadding) / lineSpacing(tokens::fontBody);
    view().insert({{"textWidth", std::min(width, limit)},
                   {"lines", listens ? listeningLines : std::clamp(room, 1, mostLines)}});
}

void HUDWindow::reshape() {
    if (const auto* bubble = rootObject()->property("bubble").value<QQuickItem*>()) {
        cutTo(QRectF(bubble->x(), bubble->y(), bubble->width(), bubble->height()), tokens::bubbleRadius);
    }
}

}  // namespace dorix
