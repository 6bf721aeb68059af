#include "shell/CardHost.h"

#include <utility>

namespace dorix {

namespace {
constexpr double fade = 0.2;  // seconds
}

CardHost::CardHost(Executor& executor, MouseEventMonitors& mouse, AppState& state, const AppWindows& windows,
                   AnswerCardPresenter& card)
    : mouse_(mouse), windows_(windows), card_(card), hide_(executor) {
    card_.actions.close = [this] { hide(); };
    // The panel comes up beside the icon, where the card stands, and has the answer as well.
    panel_ = state.panelOpen.subscribe([this](bool open) {
        if (open) hide();
    });
}

void CardHost::show() {
    hide_.stop();
    card_.show();
    windows_.card->place();
    windows_.card->show();
    if (!cardClickMonitor_) cardClickMonitor_ = mouse_.addGlobalMonitor([this] { clickedOutside(); });
}

void CardHost::hide() {
    if (!isVisible()) return;
    cardClickMonitor_.reset();
    card_.hide();
    hide_.once(fade, [this] { windows_.card->hide(); });
    onClosed();
}

bool CardHost::call() {
    if (isVisible()) windows_.card->takeKeyboard();
    return isVisible();
}

void CardHost::clickedOutside() {
    windows_.card->clickedOutside();
    hide();
}

void CardHost::onInsert(std::function<void(std::string text)> insert) {
    card_.actions.insert = [this, insert = std::move(insert)](std::string text) {
        hide();
        insert(std::move(text));
    };
}

}  // namespace dorix
