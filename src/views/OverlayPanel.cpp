#include "views/OverlayPanel.h"

#include <QAccessible>
#include <QBitmap>
#include <QKeyEvent>
#include <QPainter>
#include <QQmlContext>
#include <QQuickItem>
#include <algorithm>
#include <array>
#include <utility>

namespace dorix {

namespace {

/// Keys with which people go from one thing to another.
bool movesFocus(int key) {
    constexpr auto keys =
        std::to_array<int>({Qt::Key_Tab, Qt::Key_Backtab, Qt::Key_Up, Qt::Key_Down, Qt::Key_Left,
                            Qt::Key_Right, Qt::Key_Home, Qt::Key_End, Qt::Key_PageUp, Qt::Key_PageDown});
    return std::ranges::find(keys, key) != keys.end();
}

}  // namespace

OverlayPanel::OverlayPanel(const ViewContext& context, WindowSystem::Kind kind, Focusable focusable)
    : QQuickView(&context.engine, nullptr), context_(context), focusable_(focusable) {
    auto flags = Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint;
    // No window manager has a say: it might refuse the place, decorate, raise another window or hand over the
    // focus, and some desktops have none.
    if (kind != WindowSystem::Kind::panel) flags |= Qt::BypassWindowManagerHint;
    if (focusable == Focusable::no) flags |= Qt::WindowDoesNotAcceptFocus;
    setFlags(flags);
    setColor(Qt::transparent);
    setTitle("DORIX");
    setResizeMode(QQuickView::SizeRootObjectToView);
    view_.insert("visible", false);
    context_.windowSystem.dress(winId(), kind);
}

void OverlayPanel::load(const char* file, QVariantMap properties) {
    properties.insert("view", QVariant::fromValue(&view_));
    setInitialProperties(properties);
    setSource(QUrl(QStringLiteral("qrc:/Dorix/Views/%1.qml").arg(QLatin1String(file))));
}

void OverlayPanel::orderFrontRegardless() {
    if (!isVisible()) {
        view_.insert("visible", true);
        show();
        drawnScale_ = devicePixelRatio();
    }
    raise();
}

void OverlayPanel::orderOut() {
    view_.insert("visible", false);
    hide();
}

/// The toolkit draws into as many pixels as before as long as the size in points is the same: for one
/// picture, which nobody sees, it is another.
void OverlayPanel::rescale() {
    if (std::exchange(drawnScale_, devicePixelRatio()) == devicePixelRatio()) return;
    const QSize points = size();
    resize(points + QSize(1, 1));
    static_cast<void>(grabWindow());
    resize(points);
}

void OverlayPanel::announce(const char* part) {
    if (!QAccessible::isActive()) return;
    if (auto* item = rootObject()->property(part).value<QQuickItem*>()) {
        QAccessibleEvent event(item, QAccessible::Alert);
        QAccessible::updateAccessibility(&event);
    }
}

void OverlayPanel::cutTo(const QRectF& shape, qreal radius) {
    if (!context_.theme.isComposited()) {
        context_.windowSystem.setShape(winId(), pixels(shape, radius));
    } else if (isCut_) {
        context_.windowSystem.setShape(winId(), std::nullopt);
    }
    isCut_ = !context_.theme.isComposited();
}

void OverlayPanel::takePointerIn(const QRectF& shape, qreal radius) {
    context_.windowSystem.setInputShape(winId(), pixels(shape, radius));
}

WindowSystem::Region OverlayPanel::pixels(const QRectF& shape, qreal radius) const {
    const qreal scale = devicePixelRatio();
    QBitmap inside(size() * scale);
    inside.clear();
    QPainter painter(&inside);
    painter.scale(scale, scale);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::color1);
    painter.drawRoundedRect(shape, radius, radius);
    painter.end();
    WindowSystem::Region region;
    for (const QRect& part : QRegion(inside)) {
        region.push_back({part.x(), part.y(), part.width(), part.height()});
    }
    return region;
}

void OverlayPanel::noteKeyboard(const QEvent& event) {
    if (event.type() == QEvent::KeyPress && movesFocus(static_cast<const QKeyEvent&>(event).key())) {
        view_.insert("byKeyboard", true);
    } else if (event.type() == QEvent::MouseButtonPress) {
        view_.insert("byKeyboard", false);
    }
}

void OverlayPanel::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && onCancel) {
        onCancel();
        return;
    }
    event->ignore();  // whichever item takes it accepts it
    QQuickView::keyPressEvent(event);
}

}  // namespace dorix
