#include "views/overlay/TooltipWindow.h"

#include "overlay/Placement.h"
#include "views/ScreenMap.h"
#include "views/Tokens.h"
#include "views/overlay/TextFit.h"

#include <algorithm>

namespace dorix {

namespace {
constexpr int reach = tokens::shadowReach;
constexpr int padding = 2 * tokens::space;
constexpr int radius = 2 * tokens::space;
}  // namespace

TooltipWindow::TooltipWindow(const ViewContext& context, const QString& text)
    : OverlayPanel(context, WindowSystem::Kind::tooltip, Focusable::no) {
    setFlag(Qt::WindowTransparentForInput);
    setText(text);
    load("Tooltip");
}

void TooltipWindow::setText(const QString& text) {
    view().insert("text", text);
    const int width = TextFit(tokens::fontSmall).width(text) + 2 * padding;
    resize(width + 2 * reach, lineSpacing(tokens::fontSmall) + 2 * padding - 4 + 2 * reach);
}

void TooltipWindow::showBeside(const Rect& icon) {
    const auto place = placeHUD(icon, screenmap::current());
    const QRect beside = screenmap::toQt(place.usable).marginsAdded({reach, reach, reach, reach});
    const QRect about = screenmap::toQt(icon);
    const int x = place.opensLeft ? beside.right() + 1 - width() : beside.x();
    const int y = about.y() + (about.height() - height()) / 2;
    setPosition(x, std::max(beside.y(), std::min(y, beside.bottom() + 1 - height())));
    reshape();
    orderFrontRegardless();
}

void TooltipWindow::reshape() {
    cutTo(QRectF(reach, reach, width() - 2 * reach, height() - 2 * reach), radius);
}

}  // namespace dorix
