#include "views/card/AnswerCardWindow.h"

#include "views/ScreenMap.h"
#include "views/Tokens.h"

#include <QMouseEvent>
#include <QQuickItem>
#include <algorithm>
#include <utility>

namespace dorix {

AnswerCardWindow::AnswerCardWindow(const ViewContext& context, SettingsStore& settings,
                                   AnswerCardPresenter& card, std::string positionKey)
    : FloatingWindow(context),
      card_(card),
      positionKey_(std::move(positionKey)),
      scene_(card, settings, view()) {
    setProperty("_q_showWithoutActivating", true);
    view().insert({{"room", QRectF(0, 0, cardmeasure::width, 1)}, {"top", -1.0}});
    load("AnswerCard", {{"verbs", QVariant::fromValue(&scene_)}});
    wireScene();
    onCancel = [this] { card_.actions.close(); };
}

void AnswerCardWindow::wireScene() {
    connect(&scene_, &CardScene::piecesChanged, this,
            [this] { QMetaObject::invokeMethod(rootObject(), "followEnd"); });
    connect(&scene_, &CardScene::spoken, this, [this] { announce("announcer"); });
    connect(&scene_, &CardScene::moveBegun, this, &AnswerCardWindow::beginMove);
    connect(&scene_, &CardScene::moved, this, &AnswerCardWindow::move);
    connect(&scene_, &CardScene::moveEnded, this, &AnswerCardWindow::endMove);
    connect(rootObject(), SIGNAL(cardMoved()), this, SLOT(reshape()));
}

// Where it stands

bool AnswerCardWindow::place(const Rect& icon, const Screens& screens) {
    if (!moves_) {
        const Rect glyph = icon.insetBy(iconmeasure::margin);
        const auto saved = savedCardPosition(context().defaults, positionKey_);
        take(placeCard(glyph, cardAlignsRight(glyph, screens), screens, saved));
    }
    return !placement_.alignRight;
}

void AnswerCardWindow::iconMoved(const Rect& icon, const Screens& screens) { place(icon, screens); }

void AnswerCardWindow::screensChanged(const Rect& icon, const Screens& screens) {
    place(icon, screens);
    rescale();
}

void AnswerCardWindow::take(const CardPlacement& placement) {
    constexpr int reach = tokens::shadowReach;
    placement_ = placement;
    const QRect visible = screenmap::toQt(placement.visible);
    const QRect room = screenmap::toQt(placement.room);
    const QRect column(room.left() - reach, visible.top(), room.width() + 2 * reach, visible.height());
    view().insert(
        {{"room", QRectF(room.translated(-column.topLeft()))},
         {"top", placement.top ? room.bottom() + 1 - (*placement.top - placement.room.minY()) - column.top()
                               : -1.0}});
    takeFrame(column);
    reshape();
}

Rect AnswerCardWindow::cardFrame() const {
    const QRectF card = rootObject()->property("cardRect").toRectF();
    return screenmap::fromQt(card.translated(position()).toRect());
}

void AnswerCardWindow::reshape() {
    const QRectF card = rootObject()->property("cardRect").toRectF();
    if (card.isEmpty() || size().isEmpty()) return;  // it has no place yet
    cutTo(card, tokens::cardRadius);
    takePointerIn(card, tokens::cardRadius);
}

// The user's own hand moves it: then it is known when they let go.

void AnswerCardWindow::beginMove() {
    moves_ = true;
    movedByUser();
    movedFrom_ = position();
}

/// By the pointer's places on the screen, as the events tell them: those in the window move with it.
QPoint AnswerCardWindow::movedTo() const { return movedFrom_ + (pointer_ - pressedAt_).toPoint(); }

void AnswerCardWindow::move() {
    if (moves_) setPosition(movedTo());
}

void AnswerCardWindow::endMove() {
    if (!std::exchange(moves_, false)) return;
    const QRectF inWindow = rootObject()->property("cardRect").toRectF();
    const Rect card = screenmap::fromQt(inWindow.translated(movedTo()).toRect());
    const Point topLeft{card.minX(), card.maxY()};
    const Screens screens = screenmap::clearOfBars(context().windowSystem);
    const Rect& visible = screenOf(screens, card).visibleFrame;
    // As much of it stays on the screen as when it is shown there the next time.
    const Rect inside = visible.insetBy(cardmeasure::edge);
    const Point kept{std::clamp(topLeft.x, inside.minX(), inside.maxX()),
                     std::clamp(topLeft.y, inside.minY(), inside.maxY())};
    take(placeCard(card, false, screens, kept));
    saveCardPosition(context().defaults, positionKey_, {placement_.room.x, kept.y});
}

// The keyboard

void AnswerCardWindow::open() {
    if (!isActive()) context().windowSystem.setTakesKeyboard(winId(), false);
    rememberFront();
    orderFrontRegardless();
    context().windowSystem.raiseOverFullScreen(winId());
    QMetaObject::invokeMethod(rootObject(), "followEnd");
}

void AnswerCardWindow::takeKeyboard() {
    if (isActive()) return;
    rememberFront();
    context().windowSystem.setTakesKeyboard(winId(), true);
    context().windowSystem.bringToFront(winId());
}

bool AnswerCardWindow::event(QEvent* event) {
    noteKeyboard(*event);
    if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseMove) {
        pointer_ = static_cast<const QMouseEvent*>(event)->globalPosition();
        if (event->type() == QEvent::MouseButtonPress) pressedAt_ = pointer_;
    }
    if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::TouchBegin) takeKeyboard();
    return FloatingWindow::event(event);
}

}  // namespace dorix
