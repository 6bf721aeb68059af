#pragma once

#include "card/CardPlacement.h"
#include "views/FloatingWindow.h"
#include "views/card/CardScene.h"

#include <QPoint>
#include <QPointF>
#include <string>

namespace dorix {

/// The window of a floating card. It is as high as the screen lets the card become, and the card grows in it:
/// so no window moves or changes its size while a text comes. Around the card it is not there for the
/// pointer. It takes the keyboard only when it is clicked or called. Main thread.
class AnswerCardWindow final : public FloatingWindow {
    Q_OBJECT

 public:
    /// Cards with the same `positionKey` share the place where the user left them. All must outlive the
    /// window.
    AnswerCardWindow(const ViewContext& context, SettingsStore& settings, AnswerCardPresenter& card,
                     std::string positionKey = "");

    /// Or where the user left it. One that is being moved stays.
    bool place(const Rect& icon, const Screens& screens) override;
    void iconMoved(const Rect& icon, const Screens& screens) override;
    void screensChanged(const Rect& icon, const Screens& screens) override;
    /// The card itself on the screen, in points from the bottom left.
    Rect cardFrame() const;

    /// Leaves the keyboard where it is.
    void open() override;
    void takeKeyboard() override;
    Q_SLOT void reshape() override;

 protected:
    bool event(QEvent* event) override;

 private:
    void wireScene();
    void take(const CardPlacement& placement);
    void beginMove();
    void move();
    void endMove();
    QPoint movedTo() const;

    AnswerCardPresenter& card_;
    const std::string positionKey_;
    CardScene scene_;
    CardPlacement placement_;
    QPointF pressedAt_;  // the pointer on the screen, when a button went down
    QPointF pointer_;    // the same now
    QPoint movedFrom_;   // the window, when the user took the card
    bool moves_ = false;
};

}  // namespace dorix
