#pragma once

#include "overlay/AppWindow.h"
#include "views/card/AnswerCardWindow.h"

#include <functional>
#include <memory>

namespace dorix {

/// The answer card's window, which is made when it is first shown and let go when long unused. Main thread.
class CardOnDemand final : public AppWindow {
 public:
    /// `iconFrame` gives that of the icon's window. All must outlive it.
    CardOnDemand(const ViewContext& context, SettingsStore& settings, AnswerCardPresenter& card,
                 std::function<Rect()> iconFrame);

    /// On the right of the icon is a card that keeps its left edge.
    bool place() override;
    void show() override;
    void hide() override;
    void takeKeyboard() override;
    void clickedOutside() override;

    /// Moves out of the icon's way.
    void iconMoved();
    void screensChanged();
    void reshape();

 private:
    AnswerCardWindow& window();

    const ViewContext context_;
    SettingsStore& settings_;
    AnswerCardPresenter& card_;
    const std::function<Rect()> iconFrame_;
    std::unique_ptr<AnswerCardWindow> window_;
    Timer drop_;
    Subscription closing_;
};

}  // namespace dorix
