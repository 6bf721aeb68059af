#include "views/FormWindow.h"

#include "views/ScreenMap.h"
#include "views/Tokens.h"

#include <QQuickItem>

namespace dorix {

namespace {
constexpr int reach = tokens::shadowReach;
constexpr QMargins shadow{reach, reach, reach, reach};
}  // namespace

FormWindow::FormWindow(const ViewContext& context, QSize card)
    : OverlayPanel(context, WindowSystem::Kind::panel, Focusable::yes) {
    view().insert("shown", false);
    resize(card.grownBy(shadow));
    onCancel = [this] { onClosed(); };
}

void FormWindow::loadForm(const char* file) { load(file, {{"verbs", QVariant::fromValue(this)}}); }

void FormWindow::open() {
    aboutToOpen();
    fit();
    const int pixels = qRound(reach * devicePixelRatio());
    context().windowSystem.setFrameExtents(winId(), {pixels, pixels, pixels, pixels});
    view().insert("shown", true);
    orderFrontRegardless();
    context().windowSystem.bringToFront(winId());
    QMetaObject::invokeMethod(rootObject(), "focusFirst");
}

void FormWindow::dismiss() {
    aboutToClose();
    orderOut();
}

int FormWindow::contentHeight() {
    QMetaObject::invokeMethod(rootObject(), "layOut");
    return qRound(rootObject()->property("wantedHeight").toReal());
}

void FormWindow::fit() {
    const QRect screen = screenmap::toQt(screenmap::clearOfBars(context().windowSystem).front().visibleFrame);
    const QSize card = cardSize().boundedTo(screen.size());
    if (!card.isEmpty()) resize(card.grownBy(shadow));
    if (!isVisible()) setPosition(screen.center() - QPoint(width(), height()) / 2);
    const QRectF shape = QRectF(QPointF(0, 0), size()).marginsRemoved(shadow);
    cutTo(shape, tokens::cardRadius);
    takePointerIn(shape, tokens::cardRadius);
}

}  // namespace dorix
