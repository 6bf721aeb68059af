#include "views/overlay/FloatingIconWindow.h"

#include "overlay/Placement.h"
#include "views/ScreenMap.h"
#include "views/overlay/MenuWindow.h"
#include "views/overlay/TooltipWindow.h"

#include <QMouseEvent>
#include <QQuickItem>

namespace dorix {

namespace {

constexpr double restBeforeTooltip = 0.7;  // seconds

const char* lookName(IconLook look) {
    switch (look) {
        case IconLook::idle:
            return "idle";
        case IconLook::listening:
            return "listening";
        case IconLook::processing:
            return "processing";
        case IconLook::paused:
            return "paused";
        case IconLook::error:
            break;
    }
    return "error";
}

}  // namespace

FloatingIconWindow::FloatingIconWindow(const ViewContext& context)
    : OverlayPanel(context, WindowSystem::Kind::utility, Focusable::no), rest_(context.executor) {
    resize(static_cast<int>(iconmeasure::window), static_cast<int>(iconmeasure::window));
    view().insert({{"glyph", iconmeasure::glyph}, {"look", "idle"}, {"level", 0.0}, {"tooltip", ""}});
    load("Icon");
    connect(rootObject(), SIGNAL(pressed()), this, SLOT(pressed()));  // by a screen reader
}

FloatingIconWindow::~FloatingIconWindow() = default;

void FloatingIconWindow::place() {
    moveTo(iconOrigin(savedIconOrigin(context().defaults), screenmap::clearOfBars(context().windowSystem)));
}

void FloatingIconWindow::moveTo(Point origin) {
    frame_ = iconFrame(origin);
    setGeometry(screenmap::toQt(frame_));
    reshape();
}

void FloatingIconWindow::reshape() {
    const QRectF disc(iconmeasure::margin, iconmeasure::margin, iconmeasure::glyph, iconmeasure::glyph);
    cutTo(disc, iconmeasure::glyph / 2);
    takePointerIn(disc, iconmeasure::glyph / 2);
}

void FloatingIconWindow::setLook(IconLook look) { view().insert("look", lookName(look)); }

void FloatingIconWindow::setTooltip(const std::string& tooltip) {
    view().insert("tooltip", QString::fromStdString(tooltip));
    if (tooltip_) tooltip_->setText(view().value("tooltip").toString());
}

void FloatingIconWindow::setTooltipEnabled(bool enabled) {
    tooltipEnabled_ = enabled;
    if (!enabled) hideTooltip();
}

void FloatingIconWindow::mousePressEvent(QMouseEvent* event) {
    hideTooltip();
    if (event->button() == Qt::RightButton) {
        popUpMenu(event->globalPosition().toPoint());
    } else if (event->button() == Qt::LeftButton) {
        mouse_.down(screenmap::fromQt(event->globalPosition()), {frame_.x, frame_.y});
    }
}

void FloatingIconWindow::mouseMoveEvent(QMouseEvent* event) {
    if (const auto origin = mouse_.dragged(screenmap::fromQt(event->globalPosition()))) {
        frame_ = iconFrame(*origin);
        setGeometry(screenmap::toQt(frame_));
    }
}

void FloatingIconWindow::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) release();
}

void FloatingIconWindow::release() {
    switch (mouse_.up()) {
        case IconMouse::Release::none:
            return;
        case IconMouse::Release::click:
            onClick();
            return;
        case IconMouse::Release::drag:
            moveTo(clampedIconOrigin({frame_.x, frame_.y}, screenmap::clearOfBars(context().windowSystem)));
            saveIconOrigin(context().defaults, {frame_.x, frame_.y});
            onMoved();
    }
}

bool FloatingIconWindow::event(QEvent* event) {
    if (event->type() == QEvent::Enter) {
        rest_.once(restBeforeTooltip, [this] { showTooltip(); });
    } else if (event->type() == QEvent::Leave) {
        hideTooltip();
    }
    return OverlayPanel::event(event);
}

void FloatingIconWindow::popUpMenu(QPoint where) {
    if (!menuProvider) return;
    menu_ = std::make_unique<MenuWindow>(context(), menuProvider());
    menu_->onClosed = [this] { menu_.release()->deleteLater(); };
    menu_->popUp(where);
}

void FloatingIconWindow::closeMenu() {
    if (menu_) menu_->close();
}

void FloatingIconWindow::showTooltip() {
    if (menu_ || !tooltipEnabled_) return;
    tooltip_ = std::make_unique<TooltipWindow>(context(), view().value("tooltip").toString());
    tooltip_->showBeside(frame_);
}

void FloatingIconWindow::hideTooltip() {
    rest_.stop();
    tooltip_.reset();
}

}  // namespace dorix
