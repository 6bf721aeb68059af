#include "views/card/CardOnDemand.h"

#include "views/ScreenMap.h"

#include <utility>

namespace dorix {

namespace {
constexpr double keepHidden = 600;  // seconds
}

CardOnDemand::CardOnDemand(const ViewContext& context, SettingsStore& settings, AnswerCardPresenter& card,
                           std::function<Rect()> iconFrame)
    : context_(context),
      settings_(settings),
      card_(card),
      iconFrame_(std::move(iconFrame)),
      drop_(context.executor),
      closing_(card.isShown.subscribe([this](bool isShown) {
          if (!isShown && window_) window_->fade();
      })) {}

AnswerCardWindow& CardOnDemand::window() {
    drop_.stop();
    if (!window_) window_ = std::make_unique<AnswerCardWindow>(context_, settings_, card_);
    return *window_;
}

bool CardOnDemand::place() {
    window().place(iconFrame_(), screenmap::clearOfBars(context_.windowSystem));
    return !window().placement().alignRight;
}

void CardOnDemand::show() { window().open(); }

void CardOnDemand::hide() {
    if (!window_) return;
    window_->dismiss();
    drop_.once(keepHidden, [this] { window_.reset(); });
}

void CardOnDemand::takeKeyboard() {
    if (window_) window_->takeKeyboard();
}

void CardOnDemand::clickedOutside() {
    if (window_) window_->clickedOutside();
}

void CardOnDemand::iconMoved() {
    if (card_.isShown.get()) place();
}

void CardOnDemand::screensChanged() {
    if (window_ && !window_->isVisible()) window_.reset();
    if (!window_) return;
    place();
    window_->rescale();
}

void CardOnDemand::reshape() {
    if (window_) window_->reshape();
}

}  // namespace dorix
