#pragma once

#include "base/async/Timer.h"
#include "card/CardPlacement.h"
#include "views/OverlayPanel.h"
#include "views/card/CardScene.h"

#include <QPoint>
#include <QPointF>
#include <string>

namespace dorix {

/// The window of a floating card. It is as high as the screen lets the card become, and the card grows in it:
/// so no window moves or changes its size while a text comes. Around the card it is not there for the
/// pointer. A window manager knows it, as it can have the keyboard, which it takes only when it is clicked or
/// called. Main thread.
class AnswerCardWindow final : public OverlayPanel {
    Q_OBJECT

 public:
    /// Cards with the same `positionKey` share the place where the user left them. All must outlive the
    /// window.
    AnswerCardWindow(const ViewContext& context, SettingsStore& settings, AnswerCardPresenter& card,
                     std::string positionKey = "");

    /// Takes its place: where the user left it, or beside the icon's window at `icon`. One that shows and
    /// that the user has moved stays.
    void place(const Rect& icon, const Screens& screens);
    const CardPlacement& placement() const { return placement_; }
    /// The card itself on the screen, in points from the bottom left.
    Rect cardFrame() const;

    /// Comes up above all others, and leaves the keyboard where it is.
    void open();
    void takeKeyboard();
    /// A click in another application is about to close it.
    void clickedOutside();
    /// Begins to go; the keyboard, if it has it, goes back at once.
    void fade();
    void dismiss();

    /// Draws its outline anew, after the compositor or the scale has changed.
    Q_SLOT void reshape();

 protected:
    bool event(QEvent* event) override;
    void moveEvent(QMoveEvent* event) override;

 private:
    void wireScene();
    void take(const CardPlacement& placement);
    void beginMove();
    void move();
    void endMove();
    QPoint movedTo() const;
    void rememberFront();

    AnswerCardPresenter& card_;
    const std::string positionKey_;
    CardScene scene_;
    CardPlacement placement_;
    std::optional<QPoint> place_;  // that it has asked for, while it opens
    Timer settling_;
    QPointF pressedAt_;  // the pointer on the screen, when a button went down
    QPointF pointer_;    // the same now
    QPoint movedFrom_;   // the window, when the user took the card
    bool moves_ = false;
    bool clickTakesKeyboard_ = false;
    WindowSystem::Window before_ = 0;  // the window that had the keyboard
};

}  // namespace dorix
