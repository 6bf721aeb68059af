#include "card/AnswerCardPresenter.h"

#include "base/text/Text.h"
#include "base/text/Url.h"
#include "localdata/Language.h"

#include <utility>

namespace dorix {

namespace {
constexpr double frameTime = 1.0 / 60;  // seconds; nothing is shown more often
constexpr double acknowledged = 1.5;    // seconds
}  // namespace

AnswerCardPresenter::AnswerCardPresenter(const Parts& parts)
    : spoken(parts.executor), parts_(parts), frame_(parts_.executor), forgetCopied_(parts_.executor) {
    subscriptions_.push_back(parts_.card.subscribe([this](const auto&) { changed(); }));
    const auto tell = [this](const auto&) { offers_.notify(); };
    subscriptions_.push_back(speakingID.subscribe(tell));
    subscriptions_.push_back(copiedID.subscribe(tell));
}

/// The first change after a rest shows at once, what follows it within a frame together.
void AnswerCardPresenter::changed() {
    if (!isShown.get()) return;
    isBehind_ = true;
    if (!frame_.isActive()) render();
}

void AnswerCardPresenter::render() {
    if (!std::exchange(isBehind_, false) || !card()) return;
    const AnswerCard& now = *card();
    CardHead shown{.id = now.id,
                   .appName = text::join(text::words(tr(now.appName)), " "),
                   .kind = label(now.kind),
                   .icon = now.appIcon,
                   .waiting = waitingText(now),
                   .isRunning = now.streaming};
    spoken.follow(now, shown.waiting);
    head.set(std::move(shown));
    const auto first = feed_.show(piecesAbove(now), now.answer, piecesUnder(now));
    pieces_.notify(first);
    offers_.notify();
    frame_.once(frameTime, [this] { render(); });
}

void AnswerCardPresenter::show() {
    frame_.stop();
    isBehind_ = true;
    render();
    isShown.set(true);
}

void AnswerCardPresenter::hide() {
    frame_.stop();
    isShown.set(false);
}

void AnswerCardPresenter::retranslate() {
    if (isShown.get()) show();
}

void AnswerCardPresenter::copy() {
    parts_.pasteboard.clearContents();
    parts_.pasteboard.setString(card()->answer);
    copiedID.set(card()->id);
    forgetCopied_.once(acknowledged, [this] { copiedID.set(std::nullopt); });
}

void AnswerCardPresenter::openSource(std::size_t index) {
    if (!card() || index >= card()->sources.size()) return;
    const auto address = addressOf(card()->sources[index]);
    if (!address.empty()) parts_.urls.open(address);
}

void AnswerCardPresenter::openLink(const std::string& url) {
    if (isWebAddress(url)) parts_.urls.open(url);
}

}  // namespace dorix
