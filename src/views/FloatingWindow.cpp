#include "views/FloatingWindow.h"

#include "views/Tokens.h"

#include <QMoveEvent>
#include <utility>

namespace dorix {

namespace {
constexpr double settles = 1;  // seconds; later it is the user who moves it
}

FloatingWindow::FloatingWindow(const ViewContext& context)
    : OverlayPanel(context, WindowSystem::Kind::panel, Focusable::yes), settling_(context.executor) {}

void FloatingWindow::takeFrame(const QRect& frame) {
    setGeometry(frame);
    place_ = frame.topLeft();
    settling_.once(settles, [this] { place_.reset(); });
    const int pixels = qRound(tokens::shadowReach * devicePixelRatio());
    context().windowSystem.setFrameExtents(winId(), {pixels, pixels, pixels, pixels});
}

void FloatingWindow::movedByUser() { place_.reset(); }

/// Some window managers leave room for a title bar that they do not draw, unless they are asked again.
void FloatingWindow::moveEvent(QMoveEvent* event) {
    OverlayPanel::moveEvent(event);
    if (!isVisible() || !place_ || event->pos() == *place_) return;
    setPosition(*std::exchange(place_, std::nullopt));
}

/// Not itself, when it opens while it still goes.
void FloatingWindow::rememberFront() {
    clickTakesKeyboard_ = false;
    const auto front = context().windowSystem.frontWindow();
    if (front != winId()) before_ = front;
}

/// We hear of the click before the window manager has given the keyboard to what was clicked.
void FloatingWindow::clickedOutside() { clickTakesKeyboard_ = context().windowSystem.hasWindowManager(); }

void FloatingWindow::fade() {
    const bool taken = std::exchange(clickTakesKeyboard_, false);
    if (!taken && isActive()) context().windowSystem.bringToFront(before_);
}

void FloatingWindow::dismiss() { orderOut(); }

}  // namespace dorix
