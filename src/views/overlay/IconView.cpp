#include "views/overlay/IconView.h"

#include "overlay/Icon.h"
#include "views/DesktopWords.h"
#include "views/ScreenMap.h"
#include "views/overlay/MenuWindow.h"

#include <utility>

namespace dorix {

IconView::IconView(const ViewContext& context, AppState& state, SettingsStore& settings, SpeechInput& speech,
                   Verbs verbs)
    : context_(context),
      state_(state),
      settings_(settings),
      tooltip_(std::move(verbs.tooltip)),
      presenter_(context.executor, state, speech.partial),
      level_(context.executor, speech.level),
      icon_(context) {
    wireIcon(std::move(verbs.menu), std::move(verbs.clicked));
    wireHUD();
    watchState();
}

void IconView::wireIcon(MenuBuilder menu, std::function<void()> clicked) {
    icon_.onClick = std::move(clicked);
    icon_.onMoved = [this] {
        if (presenter_.isOrderedIn.get()) placeHUD();
        onMoved();
    };
    icon_.menuProvider = std::move(menu);
    showTooltip();
}

/// The window and its scene take memory that a day without a dictation has no use for.
HUDWindow& IconView::hud() {
    if (!hud_) {
        hud_ = std::make_unique<HUDWindow>(context_);
        hud_->setContent(presenter_.content.get());
    }
    return *hud_;
}

void IconView::wireHUD() {
    presenter_.onPlace = [this] { placeHUD(); };
    subscriptions_.push_back(presenter_.content.subscribe([this](const HUDContent& now) {
        if (hud_) hud_->setContent(now);
    }));
    subscriptions_.push_back(presenter_.isOrderedIn.subscribe([this](bool ordered) {
        icon_.setTooltipEnabled(!ordered);  // both stand in the same place
        ordered ? hud().orderFrontRegardless() : hud().orderOut();
    }));
    subscriptions_.push_back(presenter_.isShown.subscribe([this](bool shown) { hud().setShown(shown); }));
    subscriptions_.push_back(level_.shown.subscribe([this](double now) {
        icon_.setLevel(now);
        if (hud_) hud_->setLevel(now);
    }));
}

void IconView::watchState() {
    subscriptions_.push_back(state_.hud.subscribe([this](const HUDPhase&) { showState(); }));
    subscriptions_.push_back(settings_.paused.subscribe([this](bool) {
        showState();
        showTooltip();
    }));
    subscriptions_.push_back(state_.keys.subscribe([this](const WorkingKeys&) { showTooltip(); }));
    subscriptions_.push_back(settings_.languageObserver().code.subscribe([this](const std::string&) {
        showTooltip();
        presenter_.retranslate();
    }));
    subscriptions_.push_back(state_.accountOpen.subscribe([this](bool) { showTooltip(); }));
    subscriptions_.push_back(state_.onboardingOpen.subscribe([this](bool) { showTooltip(); }));
    showState();
}

void IconView::showState() {
    const auto kind = state_.hud.get().kind;
    icon_.setLook(iconLook(kind, settings_.paused.get()));
    level_.setActive(kind == HUDPhase::Kind::listening);
    // An open menu has the keyboard, and would get what is typed for the user.
    if (kind == HUDPhase::Kind::listening) icon_.closeMenu();
}

void IconView::showTooltip() { icon_.setTooltip(desktopWords(tooltip_())); }

bool IconView::place() {
    icon_.place();
    return false;
}

void IconView::show() {
    isOut_ = true;
    keepOutOfTheWay();
}

void IconView::hide() {
    isOut_ = false;
    icon_.orderOut();
}

void IconView::keepOutOfTheWay() {
    if (!isOut_) return;
    if (!context_.windowSystem.isOverFullScreen(icon_.winId())) return icon_.orderFrontRegardless();
    icon_.closeMenu();
    icon_.orderOut();
}

void IconView::placeHUD() { hud().place(icon_.frame(), screenmap::current()); }

void IconView::screensChanged() {
    icon_.rescale();
    if (hud_ && !presenter_.isOrderedIn.get()) hud_.reset();
    if (hud_) hud_->rescale();
    icon_.place();
    keepOutOfTheWay();
    if (presenter_.isOrderedIn.get()) placeHUD();
}

void IconView::raise() {
    if (icon_.isVisible()) icon_.raise();
    if (hud_ && hud_->isVisible()) hud_->raise();
    if (icon_.menu() != nullptr) icon_.menu()->raise();
}

void IconView::reshape() {
    icon_.reshape();
    if (hud_) hud_->reshape();
}

}  // namespace dorix
